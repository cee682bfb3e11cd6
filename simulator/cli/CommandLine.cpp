#include "simulator/cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "Device/ScreenProfile.h"
#include "simulator/flow/Words.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

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

/// What is wrong with the folders of bundles; otherwise a folder that is not a bundle would be
/// noticed only much later.
std::string problemWith(const std::vector<fs::path>& applications) {
  for (const fs::path& folder : applications) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) return "--applications: there is no folder " + folder.string();
    if (fs::exists(folder / "Info.plist", error))
      return "--applications: " + folder.string() + " is a bundle itself; name the folder that it is in";
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (entry.is_directory(error) && !fs::is_regular_file(entry.path() / "Info.plist", error))
        return "--applications: " + entry.path().string() + " is not a bundle: it has no Info.plist";
    }
    if (error) return "--applications: could not read " + folder.string() + ": " + error.message();
  }
  return {};
}

/// The words of the command line for what the phone is set to.
struct Words {
  std::string profile = "iPhone 6";
  std::string language = "en-US";
  std::string textSize = "L";
};

std::string readSettings(const Words& words, ios::DeviceSettings& settings) {
  if (!ios::ScreenProfile::named(words.profile)) {
    std::vector<std::string> names;
    for (const auto& profile : ios::ScreenProfile::all()) names.push_back(profile.name);
    return "no profile is called \"" + words.profile + "\"; known: " + joined(names);
  }
  if (!ios::isLanguageTag(words.language))
    return "\"" + words.language + "\" is not a language tag; expected one such as \"de-AT\"";
  const auto textSize = ios::textSizeNamed(words.textSize);
  if (!textSize) {
    std::vector<std::string> names;
    for (int i = 0; i < ios::kTextSizes; ++i)
      names.emplace_back(ios::textSizeName(static_cast<ios::TextSize>(i)));
    return "no text size is called \"" + words.textSize + "\"; known: " + joined(names);
  }
  settings.profile = words.profile;
  settings.languages = {words.language};
  settings.textSize = *textSize;
  return {};
}

}  // namespace

void complain(const std::string& what) {
  ios::writeErrors(printable(what) + "\n");
}

std::optional<CommandLine> readCommandLine(int argc, char** argv, const fs::path& executable, int& status) {
  CommandLine line;
  Words words;
  double timeLimit = 120;
  CLI::App app("Plays a flow on a simulated phone.");
  app.add_option("flow", line.flow, "the flow's file, \"-\" for standard input; the tour without one");
  app.add_option("--out", line.out, "folder for what the run leaves; out/<flow> without it");
  app.add_option("--profile", words.profile, "the phone: \"iPhone 6\"");
  app.add_option("--language", words.language, "the user's language: \"de-AT\"");
  app.add_option("--text-size", words.textSize, "how large the user wants texts: \"AccessibilityM\"");
  app.add_flag("--real-time", line.realTime, "let time pass as on the wall");
  app.add_option(
         "--applications", line.applications,
         "a folder of bundles to install from, beside those that the phone comes with; may be repeated")
      ->allow_extra_args(false);
  app.add_option("--time-limit", timeLimit, "seconds that an application may take to answer")
      ->check(CLI::Range(0.1, 86'400.0))
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? kDone : kBadInput;
    return std::nullopt;
  }
  line.patience =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(timeLimit));
  if (line.flow.empty()) line.flow = tour(executable);
  std::string problem = readSettings(words, line.settings);
  if (problem.empty()) problem = problemWith(line.applications);
  if (problem.empty()) return line;
  complain(problem);
  status = kBadInput;
  return std::nullopt;
}

}  // namespace simulator
