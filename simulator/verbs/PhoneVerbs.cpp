#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/remote/RunFolder.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Options.h"
#include "simulator/verbs/PhoneProgram.h"
#include "simulator/verbs/Verb.h"

/// Switching phones on and off.
namespace simulator {
namespace {

struct Boot : Verb {
  RunChoices run;
  bool foreground = false;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", device, "the device")->required();
    app.add_flag("--foreground", foreground, "run until interrupted, instead of until it is shut down");
    simulator::declare(app, run);
  }
  Exit perform() override {
    const auto record = DeviceSet::ofUser().find(device);
    // Whether it is booted is found out by taking it, which the phone itself does again.
    DeviceSet::take(record).close();
    std::vector<std::string> phone = {"phone", "--no-open", "--device", record.udid};
    const auto add = [&](const std::string& option, const std::string& value) {
      phone.insert(phone.end(), {option, value});
    };
    if (run.port != 0) add("--port", std::to_string(run.port));
    add("--listen", run.listen);
    if (run.realTime) phone.push_back("--real-time");
    std::error_code error;
    for (const auto& folder : run.applications)
      add("--applications", std::filesystem::absolute(folder, error));
    if (!run.flows.empty()) add("--flows", std::filesystem::absolute(run.flows, error));
    if (foreground) becomePhoneProgram(phone);
    startPhoneProgram(phone, record.log());
    return Exit::done;
  }
};

struct Shutdown : Verb {
  std::vector<std::string> devices;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", devices, "devices, or \"all\"")->required()->type_name("DEVICE");
  }
  Exit perform() override {
    for (const std::string& each : devices) {
      if (each == "all") {
        for (const std::string& udid : RunFolder::ofUser().booted()) switchOff(PhoneLink::open(udid));
      } else {
        switchOff(bootedPhone(each));
      }
    }
    return Exit::done;
  }
  static void switchOff(PhoneLink phone) {
    phone.ask("switchOff");
    phone.waitForEnd();
  }
};

struct Page : Verb {
  void declare(CLI::App& app) override {
    app.add_option("DEVICE", device, "the device; the one that is booted without it");
  }
  Exit perform() override {
    ios::writeOutput(bootedPhone(device).greeting().page + "\n");
    return Exit::done;
  }
};

struct InBrowser : Verb {
  PhoneChoices choices;

  void declare(CLI::App& app) override { simulator::declare(app, choices); }
  Exit perform() override {
    std::vector<std::string> phone = {"phone"};
    phone.insert(phone.end(), words.begin(), words.end());
    becomePhoneProgram(phone);
  }
};

}  // namespace

std::span<const VerbKind> phoneVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"boot",
       "Switches a device on; it runs until it is shut down.",
       {"boot Work", "boot Work --foreground"},
       &makeVerb<Boot>},
      {"shutdown", "Switches devices off.", {"shutdown booted", "shutdown all"}, &makeVerb<Shutdown>},
      {"page",
       "Prints the address at which a phone can be seen and touched in a browser.",
       {"page booted"},
       &makeVerb<Page>},
      {"phone",
       "Shows a new phone in a browser, until interrupted.",
       {"phone", "phone --profile \"iPhone SE\" --no-open"},
       &makeVerb<InBrowser>},
  };
  return all;
}

}  // namespace simulator
