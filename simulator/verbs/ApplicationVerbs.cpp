#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/remote/Interruption.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Verb.h"

/// What is done with applications as a whole.
namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::NSArray;
using ios::NSDictionary;

void declareApplication(CLI::App& app, std::string& device, std::string& bundle) {
  app.add_option("DEVICE", device, "the device")->required();
  app.add_option("BUNDLE", bundle, "the application's bundle identifier")->required();
}

struct Install : Verb {
  std::string path;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", device, "the device")->required();
    app.add_option("FOLDER", path, "the application's bundle")->required();
  }
  Exit perform() override {
    std::error_code error;
    const fs::path bundle = fs::absolute(path, error).lexically_normal();
    if (!fs::is_regular_file(bundle / "Info.plist", error))
      throw Refusal(Exit::noInput, path + " is not a bundle: it has no Info.plist.");
    bootedPhone(device).ask("install", {{"application", bundle.string()}});
    return Exit::done;
  }
};

struct OfApplication : Verb {
  std::string bundle;
  void declare(CLI::App& app) override { declareApplication(app, device, bundle); }
};

struct Uninstall : OfApplication {
  Exit perform() override {
    bootedPhone(device).ask("uninstall", {{"identifier", bundle}});
    return Exit::done;
  }
};

struct Terminate : OfApplication {
  Exit perform() override {
    bootedPhone(device).ask("stop", {{"identifier", bundle}});
    return Exit::done;
  }
};

/// "-debug YES" and "--debug=YES" as settings by name.
NSDictionary argumentsIn(const std::vector<std::string>& words) {
  NSDictionary arguments;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::size_t start = words[i].find_first_not_of('-');
    if (start == 0 || start == std::string::npos)
      throw Refusal(Exit::usage, "launch: \"" + words[i] +
                                     "\" is no argument of an application; they are settings: "
                                     "-NAME VALUE or --NAME=VALUE");
    const std::string name = words[i].substr(start);
    if (const std::size_t equal = name.find('='); equal != std::string::npos) {
      arguments[name.substr(0, equal)] = name.substr(equal + 1);
    } else if (i + 1 < words.size()) {
      arguments[name] = words[++i];
    } else {
      throw Refusal(Exit::usage, "launch: the argument " + words[i] + " has no value");
    }
  }
  return arguments;
}

struct Launch : OfApplication {
  bool console = false, restarts = false;

  void declare(CLI::App& app) override {
    app.add_flag("--console", console, "print what it prints, until it ends; an interrupt ends it");
    app.add_flag("--terminate-running-process", restarts, "start it anew if it is running");
    OfApplication::declare(app);
    app.prefix_command();
  }
  Exit perform() override {
    const bool given = !passed.empty();
    PhoneLink phone = bootedPhone(device);
    if (console) phone.ask("watch", {{"topics", NSArray{"console", "phone"}}});
    NSDictionary members{{"identifier", bundle}, {"keep", !restarts && !given}};
    if (given) members["arguments"] = argumentsIn(passed);
    phone.ask("launch", members);
    if (!console) {
      ios::writeOutput(bundle + "\n");
      return Exit::done;
    }
    try {
      return follow(phone);
    } catch (const Interrupted&) {
      Interruption::ofProcess().clear();
      phone.ask("end", {{"identifier", bundle}});
      throw;
    }
  }
  /// Until it runs no more; what the phone says of its end decides.
  Exit follow(PhoneLink& phone) const {
    bool ran = false;
    Exit result = Exit::done;
    for (;;) {
      const ios::PropertyList news(phone.next());
      const std::string type = news.text("type") ? *news.text("type") : "";
      if (type == "phone") {
        const auto* running = news.member("running");
        const std::string* identifier = running ? running->text("identifier") : nullptr;
        const bool runs = identifier && *identifier == bundle;
        if (ran && !runs) return result;
        ran = ran || runs;
      } else if (const auto* lines = news.member("lines"); lines && lines->array()) {
        for (const auto& line : *lines->array()) {
          const std::string* from = line.text("from");
          const std::string* text = line.text("text");
          if (!from || !text) continue;
          if (*from == "phone") result = Exit::failed;
          (*from == "out" ? ios::writeOutput : ios::writeErrors)(*text + "\n");
        }
      }
    }
  }
};

struct OpenURL : Verb {
  std::string url;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", device, "the device")->required();
    app.add_option("URL", url, "what to open")->required();
  }
  Exit perform() override {
    bootedPhone(device).ask("openLink", {{"link", url}});
    return Exit::done;
  }
};

struct AppContainer : OfApplication {
  std::string kind = "app";

  void declare(CLI::App& app) override {
    OfApplication::declare(app);
    app.add_option("KIND", kind, "the bundle (without it), or the application's data")
        ->type_name("app|data")
        ->check(CLI::IsMember({"app", "data"}));
  }
  Exit perform() override {
    if (bundle.empty() || bundle == "." || bundle == ".." || bundle.find('/') != std::string::npos)
      throw Refusal(Exit::usage, bundle + " is no bundle identifier.");
    const fs::path files = filesOf(device), folder = files / "Applications" / bundle;
    std::error_code error;
    if (!fs::is_directory(folder, error))
      throw Refusal(Exit::refused, bundle + " is not installed. See: tellvane-sim list apps " + device);
    ios::writeOutput((kind == "app" ? folder : files / "Containers" / bundle).string() + "\n");
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> applicationVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"install",
       "Installs an application.",
       {"install booted build/Applications/com.example.host"},
       &makeVerb<Install>},
      {"uninstall",
       "Removes an application; its data stays.",
       {"uninstall booted com.example.notes"},
       &makeVerb<Uninstall>},
      {"launch",
       "Starts an application, with settings behind its name, or brings it to the front.",
       {"launch booted com.example.notes -debug YES",
        "launch --console --terminate-running-process booted com.example.notes"},
       &makeVerb<Launch>},
      {"terminate", "Ends an application.", {"terminate booted com.example.notes"}, &makeVerb<Terminate>},
      {"openurl", "Opens a URL.", {"openurl booted notes://lock"}, &makeVerb<OpenURL>},
      {"get_app_container",
       "Prints the folder of an application or of its data.",
       {"get_app_container booted com.example.notes data"},
       &makeVerb<AppContainer>},
  };
  return all;
}

}  // namespace simulator
