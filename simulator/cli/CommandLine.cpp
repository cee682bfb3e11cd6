#include "simulator/cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/flow/Words.h"

namespace simulator {

namespace fs = std::filesystem;

fs::path exampleFlows(const fs::path& executable) {
  const fs::path here = "examples/flows";
  std::error_code error;
  if (fs::exists(here, error)) return here;
  for (fs::path folder = executable.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    for (const fs::path& name : {here, fs::path(TELLVANE_FLOWS)}) {
      if (fs::exists(folder / name, error)) return folder / name;
    }
  }
  return here;
}

void complain(const std::string& what) {
  ios::writeErrors(printable(what) + "\n");
}

std::optional<CommandLine> readCommandLine(int argc, char** argv, const fs::path& executable, Exit& status) {
  CommandLine line;
  FlowChoices& choices = line.choices;
  CLI::App app("Plays a flow, or a folder of flows, on simulated phones.");
  declare(app, choices);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? Exit::done : Exit::usage;
    return std::nullopt;
  }
  line.variables = assignments(choices.variables);
  line.flow = choices.flow.empty() ? exampleFlows(executable) / "tour.yaml" : fs::path(choices.flow);
  line.settings.profile = choices.settings.profile;
  line.settings.languages = {choices.settings.language};
  line.settings.textSize = *ios::textSizeNamed(choices.settings.textSize);
  line.patience =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(choices.timeLimit));
  return line;
}

std::vector<std::string> optionsForOne(const FlowChoices& choices) {
  std::vector<std::string> options = {
      "--profile",   choices.settings.profile,  "--language",   choices.settings.language,
      "--text-size", choices.settings.textSize, "--time-limit", std::to_string(choices.timeLimit)};
  for (const std::string& variable : choices.variables) options.insert(options.end(), {"-e", variable});
  if (choices.realTime) options.emplace_back("--real-time");
  for (const fs::path& folder : choices.applications)
    options.insert(options.end(), {"--applications", folder.string()});
  if (choices.seed != 0) options.insert(options.end(), {"--seed", std::to_string(choices.seed)});
  return options;
}

}  // namespace simulator
