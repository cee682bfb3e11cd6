#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Device/Settings.h"
#include "simulator/remote/Refusal.h"
#include "simulator/verbs/Options.h"

namespace simulator {

struct CommandLine {
  FlowChoices choices;
  std::filesystem::path flow;
  ios::DeviceSettings settings;
  std::map<std::string, std::string> variables;  // that the flow's expressions can name
  std::chrono::milliseconds patience{};          // with an application that does not answer
};

/// Reads the simulator's arguments, and says what is wrong with them. Empty: end with `status`.
/// `executable`: the simulator's own path; the tour is one of the flows that come with it.
std::optional<CommandLine> readCommandLine(int argc, char** argv, const std::filesystem::path& executable,
                                           Exit& status);
/// The options that a process gets which plays one flow of many.
std::vector<std::string> optionsForOne(const FlowChoices& choices);

/// The flows that come with the phone: of this folder, of the source tree that the executable was built in, or of the
/// prefix that it was installed to.
std::filesystem::path exampleFlows(const std::filesystem::path& executable);

/// A line on standard error, without what would steer the terminal.
void complain(const std::string& what);

}  // namespace simulator
