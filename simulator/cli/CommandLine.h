#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <vector>

#include "Device/Settings.h"

namespace simulator {

// What the process ends with. An interrupt gives what shells give: 128 and the signal.
constexpr int kDone = 0, kStepFailed = 1, kBadInput = 2, kInterrupted = 130;

struct CommandLine {
  std::filesystem::path flow;
  std::filesystem::path out;
  ios::DeviceSettings settings;
  bool realTime = false;
  std::vector<std::filesystem::path> applications;  // folders of bundles
  std::chrono::milliseconds patience{};             // with an application that does not answer
};

/// Reads what the simulator was started with, and says what is wrong with it. Empty: `status` is what to end
/// with. `executable`: the simulator's own path; the tour is looked for in the folders around it.
std::optional<CommandLine> readCommandLine(int argc, char** argv, const std::filesystem::path& executable,
                                           int& status);

/// A line on standard error, without what would steer the terminal.
void complain(const std::string& what);

}  // namespace simulator
