#include "simulator/cli/CheckCommand.h"

#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/cli/CommandLine.h"
#include "simulator/flow/Portability.h"
#include "simulator/suite/FlowSuite.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

Exit check(const CheckChoices& choices) {
  Exit worst = Exit::done;
  std::size_t count = 0;
  for (const fs::path& place : choices.flows) {
    for (const fs::path& file : flowsAt(place)) {
      ++count;
      std::string problem;
      const auto flow = readFlow(file, problem, assignments(choices.variables));
      if (!flow) {
        complain(problem);
        std::error_code error;
        worst = fs::exists(file, error) ? Exit::refused : Exit::noInput;
        continue;
      }
      if (!choices.portable) continue;
      const auto problems = portabilityProblems(*flow);
      for (const std::string& each : problems) complain(each);
      if (!problems.empty() && worst == Exit::done) worst = Exit::failed;
    }
  }
  if (worst == Exit::done)
    ios::writeOutput(std::to_string(count) + (count == 1 ? " flow" : " flows") + ", nothing wrong\n");
  return worst;
}

}  // namespace

int runCheckCommand(int count, char** arguments) {
  CheckChoices choices;
  CLI::App app("Reads flows, and plays nothing.");
  declare(app, choices);
  try {
    app.parse(count, arguments);
    return static_cast<int>(check(choices));
  } catch (const CLI::ParseError& error) {
    return static_cast<int>(app.exit(error) == 0 ? Exit::done : Exit::usage);
  } catch (const Refusal& refusal) {
    complain(refusal.what());
    return static_cast<int>(refusal.status());
  }
}

}  // namespace simulator
