#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "Base/Output.h"
#include "Device/ScreenProfile.h"
#include "simulator/live/Json.h"
#include "simulator/remote/RunFolder.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Options.h"
#include "simulator/verbs/Verb.h"

/// Phones that exist, whether they are switched on or not.
namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::NSArray;
using ios::NSDictionary;

void say(const std::string& line) {
  ios::writeOutput(line + "\n");
}

/// Those of the user's, and the phones in a browser, which are of no set.
struct Known {
  DeviceRecord record;
  bool booted = false;
};

std::vector<Known> known() {
  const auto booted = RunFolder::ofUser().booted();
  std::vector<Known> all;
  for (auto& record : DeviceSet::ofUser().all()) {
    const bool on = std::find(booted.begin(), booted.end(), record.udid) != booted.end();
    all.push_back({std::move(record), on});
  }
  for (const std::string& udid : booted) {
    if (std::any_of(all.begin(), all.end(), [&](const Known& each) { return each.record.udid == udid; }))
      continue;
    try {
      const PhoneLink phone = PhoneLink::open(udid);
      const auto& greeting = phone.greeting();
      all.push_back({{.udid = udid,
                      .name = greeting.name,
                      .profile = greeting.profile,
                      .folder = fs::path(greeting.folder).parent_path()},
                     true});
    } catch (const Refusal&) {
      continue;  // it has just ended
    }
  }
  return all;
}

std::string titleOf(const fs::path& bundle, std::string& identifier) {
  const auto info = ios::PropertyList::parse(bundle / "Info.plist");
  const std::string* found = info ? info->text("CFBundleIdentifier") : nullptr;
  if (!found) return {};
  identifier = *found;
  for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
    if (const std::string* name = info->text(key)) return *name;
  }
  return identifier;
}

struct List : Verb {
  std::string what = "devices", of = "booted";
  bool json = false;

  void declare(CLI::App& app) override {
    app.add_flag("-j,--json", json, "as JSON, for programs");
    app.add_option("WHAT", what, "devices (without it), devicetypes, or the apps of a device")
        ->type_name("devices|devicetypes|apps")
        ->check(CLI::IsMember({"devices", "devicetypes", "apps"}));
    app.add_option("DEVICE", of, "whose apps")->type_name("DEVICE");
  }
  Exit perform() override {
    if (what == "apps") return apps();
    if (what == "devicetypes") return types();
    NSArray devices;
    for (const Known& each : known()) {
      const char* state = each.booted ? "Booted" : "Shutdown";
      if (!json) say(each.record.name + " (" + each.record.udid + ") (" + state + ") " + each.record.profile);
      devices.push_back(NSDictionary{{"name", each.record.name},
                                     {"udid", each.record.udid},
                                     {"state", state},
                                     {"deviceType", each.record.profile},
                                     {"dataPath", each.record.device().string()}});
    }
    if (json) say(jsonText(NSDictionary{{"devices", std::move(devices)}}));
    return Exit::done;
  }
  Exit apps() const {
    NSArray found;
    std::error_code error;
    std::vector<fs::path> bundles;
    for (const auto& entry : fs::directory_iterator(filesOf(of) / "Applications", error))
      bundles.push_back(entry.path());
    std::sort(bundles.begin(), bundles.end());
    for (const fs::path& bundle : bundles) {
      std::string identifier;
      const std::string title = titleOf(bundle, identifier);
      if (identifier.empty()) continue;
      if (!json) say(identifier + " (" + title + ")");
      found.push_back(
          NSDictionary{{"bundleIdentifier", identifier}, {"name", title}, {"path", bundle.string()}});
    }
    if (json) say(jsonText(NSDictionary{{"apps", std::move(found)}}));
    return Exit::done;
  }
  Exit types() const {
    NSArray found;
    for (const auto& profile : ios::ScreenProfile::all()) {
      if (!json) say(profile.name);
      found.push_back(NSDictionary{{"name", profile.name}, {"family", profile.model}});
    }
    if (json) say(jsonText(NSDictionary{{"devicetypes", std::move(found)}}));
    return Exit::done;
  }
};

/// Not one of the words that stand for devices.
void checkName(const std::string& name) {
  if (name.empty() || name == "booted" || name == "all")
    throw Refusal(Exit::usage, "A device cannot be called \"" + name + "\".");
}

struct Create : Verb {
  std::string name;
  SettingChoices settings;

  void declare(CLI::App& app) override {
    app.add_option("NAME", name, "what to call it")->required();
    simulator::declare(app, settings);
    // As an operand, too.
    app.remove_option(app.get_option("--profile"));
    app.add_option("PROFILE", settings.profile, "the kind of phone: \"iPhone 6\"")
        ->type_name("PROFILE")
        ->transform(CLI::Validator(
            [](std::string& given) -> std::string {
              const auto* profile = ios::ScreenProfile::named(given);
              if (profile) given = profile->name;
              return profile ? ""
                             : "no profile is called \"" + given + "\"; see: tellvane-sim list devicetypes";
            },
            ""));
  }
  Exit perform() override {
    checkName(name);
    DeviceRecord wanted;
    wanted.name = name;
    wanted.profile = settings.profile;
    wanted.language = settings.language;
    wanted.textSize = settings.textSize;
    const auto made = DeviceSet::ofUser().create(wanted);
    say(made.udid);
    return Exit::done;
  }
};

struct Rename : Verb {
  std::string name;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", device, "the device")->required();
    app.add_option("NAME", name, "what to call it")->required();
  }
  Exit perform() override {
    checkName(name);
    const auto set = DeviceSet::ofUser();
    set.rename(set.find(device), name);
    return Exit::done;
  }
};

/// What is done to one device, or to all that there are.
struct OfDevices : Verb {
  std::vector<std::string> devices;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", devices, "devices, or \"all\"")->required()->type_name("DEVICE");
  }
  Exit perform() override {
    const auto set = DeviceSet::ofUser();
    for (const std::string& each : devices) {
      if (each == "all") {
        for (const auto& record : set.all()) act(set, record);
      } else {
        act(set, set.find(each == "booted" ? udidOf(each) : each));
      }
    }
    return Exit::done;
  }
  virtual void act(const DeviceSet& set, const DeviceRecord& record) = 0;
};

struct Erase : OfDevices {
  void act(const DeviceSet& set, const DeviceRecord& record) override { set.erase(record); }
};

struct Delete : OfDevices {
  void act(const DeviceSet& set, const DeviceRecord& record) override { set.remove(record); }
};

}  // namespace

std::span<const VerbKind> deviceVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"list",
       "Lists devices, kinds of device, or the applications on one.",
       {"list devices", "list -j devices", "list apps booted"},
       &makeVerb<List>},
      {"create",
       "Makes a device, and prints its identifier.",
       {"create Work \"iPhone 6\"", "create Tablet \"iPad Air 2\" --language de-AT"},
       &makeVerb<Create>},
      {"rename", "Calls a device something else.", {"rename Work Play"}, &makeVerb<Rename>},
      {"erase", "Makes a device as new; it must be switched off.", {"erase Work"}, &makeVerb<Erase>},
      {"delete",
       "Removes a device; it must be switched off.",
       {"delete Work", "delete all"},
       &makeVerb<Delete>},
  };
  return all;
}

}  // namespace simulator
