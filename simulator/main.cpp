#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "simulator/Console.h"
#include "simulator/Flow.h"
#include "simulator/FlowRunner.h"
#include "simulator/Phone.h"
#include "simulator/Transcript.h"

namespace {

namespace fs = std::filesystem;
using namespace simulator;

constexpr int kDone = 0, kStepFailed = 1, kBadInput = 2;

struct CommandLine {
  fs::path flow;
  fs::path out;
  std::string profile = "iPhone 6";
  std::string language = "en-US";
  std::string textSize = "L";
  bool realTime = false;
  std::vector<fs::path> applications;
};

int complain(const std::string& what, int status) {
  std::fprintf(stderr, "%s\n", what.c_str());
  return status;
}

/// Names of the pictures that the commands take.
void pictures(const std::vector<Command>& commands, std::vector<std::string>& names) {
  for (const Command& command : commands) {
    if (const auto* picture = std::get_if<TakeScreenshot>(&command.action))
      names.push_back(picture->name + ".png");
    if (const auto* repeat = std::get_if<Repeat>(&command.action)) pictures(repeat->commands, names);
    if (const auto* run = std::get_if<RunFlow>(&command.action)) pictures(run->commands, names);
  }
}

/// Makes the output folder and removes what an earlier run of this flow left there, and nothing else. Where
/// no run can have been, whatever goes under our names stays; then the result says so.
std::string prepare(const fs::path& out, const Flow& flow) {
  std::vector<std::string> names = {"device", "inbox", "DCIM", "console.log"};
  pictures(flow.commands, names);
  std::error_code error;
  fs::create_directories(out, error);
  if (error) return error.message();
  // Every run leaves both.
  const bool ours =
      fs::is_directory(out / "device", error) && fs::is_regular_file(out / "console.log", error);
  for (const std::string& name : names) {
    if (!ours && fs::exists(fs::symlink_status(out / name, error))) {
      return "its \"" + name + "\" comes from elsewhere and would be replaced";
    }
    fs::remove_all(out / name, error);
    if (error) return error.message();
  }
  return "";
}

/// Copies what a person wants to look at out of the device: the companion's inbox, the photo library's
/// movies.
std::string copyResults(const fs::path& device, const fs::path& out) {
  const std::pair<fs::path, const char*> folders[] = {
      {device / "Containers" / kCompanionIdentifier / "Documents" / "inbox", "inbox"},
      {device / "Media" / "DCIM", "DCIM"},
  };
  for (const auto& [folder, name] : folders) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) continue;
    fs::copy(folder, out / name, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error) return "could not copy " + std::string(name) + ": " + error.message();
  }
  return {};
}

/// The tour, of this folder or of the source tree that the executable was built in.
fs::path tour(const fs::path& executable) {
  const fs::path name = "examples/flows/tour.yaml";
  std::error_code error;
  for (fs::path folder = executable.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (!fs::exists(name, error) && fs::exists(folder / name, error)) return folder / name;
  }
  return name;
}

int run(const CommandLine& line, const fs::path& executable) {
  std::string problem;
  const auto flow = readFlow(line.flow, problem);
  if (!flow) return complain(problem, kBadInput);
  if (!ios::ScreenProfile::named(line.profile)) {
    std::string names;
    for (const auto& profile : ios::ScreenProfile::all()) names += (names.empty() ? "" : ", ") + profile.name;
    return complain("no profile is called \"" + line.profile + "\"; known: " + names, kBadInput);
  }
  const auto textSize = ios::textSizeNamed(line.textSize);
  if (!textSize) {
    std::string names;
    for (int i = 0; i < ios::kTextSizes; ++i)
      names += (i ? ", " : "") + std::string(ios::textSizeName(static_cast<ios::TextSize>(i)));
    return complain("no text size is called \"" + line.textSize + "\"; known: " + names, kBadInput);
  }
  const fs::path out =
      fs::absolute(line.out.empty() ? fs::path("out") / line.flow.stem() : line.out).lexically_normal();
  if (problem = prepare(out, *flow); !problem.empty()) {
    return complain("could not prepare " + out.string() + ": " + problem, kBadInput);
  }

  Phone::Options options{
      .folder = out / "device", .settings = {}, .realTime = line.realTime, .catalog = line.applications};
  options.settings.profile = line.profile;
  options.settings.languages = {line.language};
  options.settings.textSize = *textSize;
  options.catalog.push_back(executable.parent_path().parent_path() / "Applications");
  Transcript transcript;
  Console console(out / "console.log", [&](const std::string& text) { transcript.consoleLine(text); });
  Phone phone(options, console, [&] { transcript.flushConsole(); });
  if (problem = phone.installAll(); !problem.empty()) return complain(problem, kBadInput);

  transcript.heading(flow->name + " (" + line.profile + ", " + line.language +
                     (line.textSize == "L" ? "" : ", text size " + line.textSize) + ")");
  const bool played = FlowRunner(phone, console, transcript, out).play(flow->commands, problem);
  const std::string ending = phone.stop();
  transcript.flushConsole();
  if (const std::string lost = copyResults(options.folder, out); !lost.empty())
    return complain(lost, kStepFailed);
  if (!played) return complain(problem, kStepFailed);
  if (!ending.empty()) return complain(line.flow.string() + ": " + ending, kStepFailed);
  std::error_code error;
  transcript.heading("Everything happened as expected; see " + fs::proximate(out, error).string());
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  CommandLine line;
  CLI::App app("Plays a flow on a simulated phone.");
  app.add_option("flow", line.flow, "the flow's file; the tour without one");
  app.add_option("--out", line.out,
                 "folder for pictures, console, inbox, movies and device; out/<flow> without it");
  app.add_option("--profile", line.profile, "the phone: \"iPhone 6\"");
  app.add_option("--language", line.language, "the user's language: \"de-AT\"");
  app.add_option("--text-size", line.textSize, "how large the user wants texts: \"AccessibilityM\"");
  app.add_flag("--real-time", line.realTime, "let time pass as on the wall");
  app.add_option("--applications", line.applications, "a folder of bundles to install from");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kBadInput;
  }
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (line.flow.empty()) line.flow = tour(executable);
  try {
    return run(line, executable);
  } catch (const std::exception& unexpected) {
    return complain(std::string("the simulator failed: ") + unexpected.what(), kStepFailed);
  }
}
