#include "simulator/verbs/Options.h"

#include <CLI/CLI.hpp>

#include "Device/ScreenProfile.h"
#include "Device/Settings.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

std::string knownProfile(std::string& name) {
  if (const auto* profile = ios::ScreenProfile::named(name)) {
    name = profile->name;
    return {};
  }
  std::string names;
  for (const auto& profile : ios::ScreenProfile::all()) names += (names.empty() ? "" : ", ") + profile.name;
  return "no profile is called \"" + name + "\"; known: " + names;
}

std::string knownTextSize(const std::string& name) {
  if (ios::textSizeNamed(name)) return {};
  std::string names;
  for (int i = 0; i < ios::kTextSizes; ++i)
    names += (i == 0 ? "" : ", ") + std::string(ios::textSizeName(static_cast<ios::TextSize>(i)));
  return "no text size is called \"" + name + "\"; known: " + names;
}

std::string languageTag(const std::string& tag) {
  return ios::isLanguageTag(tag) ? ""
                                 : "\"" + tag + "\" is not a language tag; expected one such as \"de-AT\"";
}

std::string assignment(const std::string& given) {
  const std::size_t equals = given.find('=');
  return equals == std::string::npos || equals == 0 ? "expected NAME=VALUE, not \"" + given + "\"" : "";
}

/// A folder that is not one of bundles would be noticed only much later.
std::string folderOfBundles(const std::string& name) {
  const fs::path folder = name;
  std::error_code error;
  if (!fs::is_directory(folder, error)) return "there is no folder " + name;
  if (fs::exists(folder / "Info.plist", error))
    return name + " is a bundle itself; name the folder that it is in";
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_directory(error) && !fs::is_regular_file(entry.path() / "Info.plist", error))
      return entry.path().string() + " is not a bundle: it has no Info.plist";
  }
  return error ? "could not read " + name + ": " + error.message() : "";
}

void declareVariables(CLI::App& app, std::vector<std::string>& variables) {
  app.add_option("-e,--env", variables, "a text that expressions of the flow can name; may be repeated")
      ->allow_extra_args(false)
      ->type_name("NAME=VALUE")
      ->check(CLI::Validator([](std::string& given) { return assignment(given); }, ""));
}

void declareApplications(CLI::App& app, std::vector<fs::path>& applications) {
  app.add_option(
         "--applications", applications,
         "a folder of bundles to install from, beside those that the phone comes with; may be repeated")
      ->allow_extra_args(false)
      ->type_name("FOLDER")
      ->check(CLI::Validator(folderOfBundles, ""));
}

}  // namespace

void declare(CLI::App& app, SettingChoices& choices) {
  app.add_option("--profile", choices.profile, "the phone: \"iPhone 6\"")
      ->type_name("PROFILE")
      ->transform(CLI::Validator(knownProfile, ""));
  app.add_option("--language", choices.language, "the user's language: \"de-AT\"")
      ->type_name("TAG")
      ->check(CLI::Validator([](std::string& tag) { return languageTag(tag); }, ""));
  app.add_option("--text-size", choices.textSize, "how large the user wants texts: \"AccessibilityM\"")
      ->type_name("SIZE")
      ->check(CLI::Validator([](std::string& name) { return knownTextSize(name); }, ""));
}

void declare(CLI::App& app, RunChoices& choices) {
  app.add_option("--port", choices.port, "the page's port; any that is free without it")->type_name("N");
  app.add_option("--listen", choices.listen,
                 "the address that the page is at, in numbers; this machine alone without it")
      ->type_name("ADDRESS");
  app.add_flag("--real-time", choices.realTime, "the machine's own clock, microphone and loudspeaker");
  declareApplications(app, choices.applications);
  app.add_option("--flows", choices.flows, "a folder of flows that the page offers")->type_name("FOLDER");
}

void declare(CLI::App& app, PhoneChoices& choices) {
  declare(app, choices.settings);
  declare(app, choices.run);
  app.add_option("--out", choices.out, "a new folder for the device, which stays; without it nothing is left")
      ->type_name("FOLDER");
  app.add_flag("--open", choices.open, "open a browser (if there is one; so it is without this)");
  app.add_flag("--no-open", choices.noOpen, "open no browser")->excludes("--open");
  app.add_option("--device", choices.device)->group("");
  app.add_option("--ready", choices.ready)->group("");
}

void declare(CLI::App& app, FlowChoices& choices) {
  app.add_option("FLOW", choices.flow,
                 "a flow's file, \"-\" for standard input, or a folder of flows; the tour without one")
      ->type_name("FILE");
  app.add_option("--out", choices.out, "folder for what the run leaves; out/<flow> without it")
      ->type_name("FOLDER");
  auto* device =
      app.add_option("--device", choices.device, "play it on a phone that is booted")->type_name("DEVICE");
  app.add_flag("--virtual", choices.isVirtual,
               "play it on a new phone in virtual time (so it is without --device)")
      ->excludes(device);
  declare(app, choices.settings);
  declareVariables(app, choices.variables);
  app.add_flag("--real-time", choices.realTime, "let time pass as on the wall");
  declareApplications(app, choices.applications);
  app.add_option("--time-limit", choices.timeLimit, "seconds that an application may take to answer")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.1, 86'400.0))
      ->capture_default_str();
  app.add_option("--seed", choices.seed,
                 "shuffle what virtual time leaves open; the same number gives the same order again")
      ->type_name("N")
      ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{UINT32_MAX}));
  app.add_option("--jobs", choices.jobs, "of a folder: how many flows play at once")
      ->type_name("N")
      ->check(CLI::Range(1, 256));
  app.add_option("--shard", choices.shard, "of a folder: the K-th of N parts of about equal duration")
      ->type_name("K/N");
  app.add_option("--durations", choices.durations,
                 "how long the flows took last time: read for --shard, written after the run")
      ->type_name("FILE");
  app.add_option("--junit", choices.junit, "a report for continuous integration")->type_name("FILE");
  // A phone that is booted is as it is, and plays one flow.
  for (const char* option : {"--profile", "--language", "--text-size", "--real-time", "--applications",
                             "--time-limit", "--seed", "--jobs", "--shard", "--durations", "--junit"})
    device->excludes(option);
}

void declare(CLI::App& app, CheckChoices& choices) {
  app.add_option("FILE", choices.flows, "flows' files, and folders of flows")->required()->type_name("FILE");
  declareVariables(app, choices.variables);
  app.add_flag("--portable", choices.portable, "name what other tools for flows would not take");
}

std::map<std::string, std::string> assignments(const std::vector<std::string>& variables) {
  std::map<std::string, std::string> result;
  for (const std::string& each : variables) {
    const std::size_t equals = each.find('=');
    result[each.substr(0, equals)] = each.substr(equals + 1);
  }
  return result;
}

}  // namespace simulator
