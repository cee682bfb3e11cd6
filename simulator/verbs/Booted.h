#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "simulator/remote/DeviceSet.h"
#include "simulator/remote/PhoneLink.h"

namespace simulator {

/// The phone that a command line means by DEVICE: "booted" for the one that is switched on, a name or an identifier.
PhoneLink bootedPhone(const std::string& device);
/// The identifier of what DEVICE means; also of a device that is switched off.
std::string udidOf(const std::string& device);
/// Where the files of what DEVICE means are, whether it is switched on or off.
std::filesystem::path filesOf(const std::string& device);

/// "1.5" seconds, "200ms", "2s", "1m" as milliseconds; empty for anything else.
std::optional<double> millisecondsOf(const std::string& text);

/// Refuses a file that cannot be made, before there is something to write to it; "-" always can.
void expectWritable(const std::string& file);
/// Whether somebody still reads standard output: a pipe's other end may have gone.
bool outputHasReader();
/// Writes the whole file or none; "-" is standard output.
void writeOut(const std::string& file, const std::string& bytes);

}  // namespace simulator
