#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string_view>

#include "Device/Files.h"
#include "companion/Inbox.h"
#include "simulator/cli/CheckCommand.h"
#include "simulator/cli/CommandLine.h"
#include "simulator/cli/OutputFolder.h"
#include "simulator/cli/PhoneCommand.h"
#include "simulator/flow/FlowRunner.h"
#include "simulator/live/FlowMovie.h"
#include "simulator/phone/Phone.h"
#include "simulator/remote/Interruption.h"
#include "simulator/suite/FlowSuite.h"

namespace {

namespace fs = std::filesystem;
using namespace simulator;

// Below it lies the photo library, whose SQLite takes paths of 511 bytes.
constexpr std::size_t kLongestOut = 440;

const Interrupt* interruptOfSignals = nullptr;

/// The next signal of the kind ends the process at once.
void interruptOnSignals(const Interrupt& interrupt) {
  interruptOfSignals = &interrupt;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    action.sa_handler = [](int) { interruptOfSignals->raise(); };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

std::unique_ptr<OutputFolder> prepareOut(const CommandLine& line) {
  const fs::path name = line.flow == "-" ? fs::path("flow") : line.flow.stem();
  std::error_code error;
  const fs::path path =
      fs::absolute(line.choices.out.empty() ? "out" / name : line.choices.out, error).lexically_normal();
  std::string problem;
  std::unique_ptr<OutputFolder> out;
  if (path.string().size() > kLongestOut) {
    problem = "its path has more than " + std::to_string(kLongestOut) + " bytes";
  } else if ((out = OutputFolder::take(path, problem))) {
    problem = out->clear();
    for (const char* each : {"device", "console.log", "errors.log", "inbox", "DCIM"}) {
      if (problem.empty()) problem = out->claim(each);
    }
  }
  if (problem.empty()) return out;
  complain("could not prepare " + path.string() + ": " + problem);
  return nullptr;
}

/// Copies what a person wants to look at out of the device: the companion's inbox, the
/// photo library's movies.
std::string copyResults(const fs::path& out) {
  const ios::Device& device = ios::Device::current();
  const std::pair<fs::path, const char*> folders[] = {
      {companion::Inbox(device.homeOf(kCompanionIdentifier)).folder(), "inbox"},
      {device.moviesFolder(), "DCIM"},
  };
  for (const auto& [folder, name] : folders) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) continue;
    if (const auto problem = ios::copyTree(folder, out / name)) return problem->description();
  }
  return {};
}

std::string titleOf(const Flow& flow, const ios::DeviceSettings& settings) {
  std::string title = flow.name + " (" + settings.profile + ", " + settings.languages.front();
  if (settings.textSize != ios::TextSize::L)
    title += ", text size " + std::string(ios::textSizeName(settings.textSize));
  return title + ")";
}

Exit playOne(const CommandLine& line, const fs::path& executable) {
  std::string problem;
  const auto flow = readFlow(line.flow, problem, line.variables);
  if (!flow) {
    complain(problem);
    std::error_code error;
    return line.flow == "-" || fs::exists(line.flow, error) ? Exit::refused : Exit::noInput;
  }
  const auto out = prepareOut(line);
  if (!out) return Exit::cannotCreate;

  Phone::Options options;
  options.folder = out->path() / "device";
  options.settings = line.settings;
  options.realTime = line.choices.realTime;
  options.catalog = line.choices.applications;
  options.patience = line.patience;
  options.sharesDisplay = true;  // for movies
  options.catalog.push_back(executable.parent_path().parent_path() / "Applications");
  interruptOnSignals(*options.interrupt);
  Transcript transcript;
  Console console(out->path(), [&](Console::Stream stream, const std::string& text) {
    transcript.consoleLine(stream, text);
  });
  PacedPhone phone(options, console, [&] { transcript.flushConsole(); });
  if (problem = phone.installAll(); !problem.empty()) {
    complain(problem);
    return Exit::refused;
  }

  transcript.heading(titleOf(*flow, line.settings));
  const auto keepFile = [&](const std::string& name, const ios::Bytes& bytes) {
    return out->write(name, bytes);
  };
  FlowMovie movie(phone, keepFile);
  Stage stage(phone, console, keepFile, static_cast<std::uint32_t>(line.choices.seed));
  stage.setRecorder(&movie);
  if (flow->recordedAt) {
    stage.setExact(true);
    phone.runFor(std::max(ios::Clock::Duration::zero(),
                          *flow->recordedAt - ios::Clock::shared().now().time_since_epoch()));
  }
  const bool played = FlowRunner(stage, transcript).play(*flow, problem);
  if (movie.isRecording()) movie.end();  // what there is
  const std::string ending = phone.stop();
  transcript.flushConsole();
  const std::string lost = copyResults(out->path());
  if ((!played || !ending.empty()) && line.choices.seed != 0)
    complain("the orderings were those of --seed " + std::to_string(line.choices.seed));
  if (!played) complain(problem);
  if (played && !ending.empty()) complain(line.flow.string() + ": " + ending);
  if (!lost.empty()) complain("not everything is in " + out->path().string() + ": " + lost);
  if (phone.wasInterrupted()) return Exit::interrupted;
  if (!played || !ending.empty() || !lost.empty()) return Exit::failed;
  std::error_code error;
  transcript.heading("Everything happened as expected; see " + fs::proximate(out->path(), error).string());
  return Exit::done;
}

Exit playMany(const CommandLine& line, const fs::path& executable) {
  const FlowChoices& choices = line.choices;
  FlowSuite suite{.program = executable,
                  .options = optionsForOne(choices),
                  .out = choices.out.empty() ? "out" / line.flow.stem() : choices.out,
                  .jobs = choices.jobs,
                  .junit = choices.junit,
                  .durations = choices.durations,
                  .seed = choices.seed};
  return suite.play(partOf(flowsAt(line.flow), choices.shard, choices.durations));
}

Exit run(const CommandLine& line, const fs::path& executable, char** argv) {
  const FlowChoices& choices = line.choices;
  if (!choices.device.empty()) {
    // The program that speaks with phones plays it.
    const fs::path program = executable.parent_path() / "tellvane-sim";
    std::vector<char*> words = {const_cast<char*>(program.c_str()), const_cast<char*>("flow")};
    for (char** word = argv + 1; *word; ++word) words.push_back(*word);
    words.push_back(nullptr);
    ::execv(program.c_str(), words.data());
    throw Refusal(Exit::system, "could not start " + program.string());
  }
  if (choices.seed != 0) ::setenv("IOS_SEED", std::to_string(choices.seed).c_str(), 1);
  std::error_code error;
  const bool many =
      fs::is_directory(line.flow, error) || !choices.junit.empty() || !choices.durations.empty();
  if (!many && !choices.shard.empty()) throw Refusal(Exit::usage, "--shard: expected a folder of flows");
  return many ? playMany(line, executable) : playOne(line, executable);
}

}  // namespace

int main(int argc, char** argv) {
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (argc > 1 && std::string_view(argv[1]) == "phone")
    return runPhoneCommand(argc - 1, argv + 1, executable);
  if (argc > 1 && std::string_view(argv[1]) == "check") return runCheckCommand(argc - 1, argv + 1);
  Exit status = Exit::done;
  const auto line = readCommandLine(argc, argv, executable, status);
  try {
    if (line) status = run(*line, executable, argv);
  } catch (const Refusal& refusal) {
    complain(refusal.what());
    status = refusal.status();
  } catch (const Interrupted&) {
    status = Exit::interrupted;
  } catch (const std::exception& unexpected) {
    complain(std::string("the simulator failed: ") + unexpected.what());
    status = Exit::software;
  }
  return static_cast<int>(status);
}
