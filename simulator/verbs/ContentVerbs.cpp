#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstring>

#include "Base/Output.h"
#include "Device/Settings.h"
#include "simulator/remote/Interruption.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Verb.h"

/// What is on the phone, and how it is set.
namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::NSArray;
using ios::NSDictionary;

constexpr std::size_t kLongestText = 512 << 10;

std::string standardInput() {
  std::string text;
  std::array<char, 4096> piece;
  for (;;) {
    const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) throw Interrupted{};
    if (count < 0) throw Refusal(Exit::inputOutput, std::string("Standard input: ") + std::strerror(errno));
    if (count == 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(count));
    if (text.size() > kLongestText)
      throw Refusal(Exit::refused, "A text of more than 512 KB is too long for the pasteboard.");
  }
}

struct OfDevice : Verb {
  void declare(CLI::App& app) override { app.add_option("DEVICE", device, "the device")->required(); }
};

struct Copy : OfDevice {
  Exit perform() override {
    const std::string text = standardInput();
    bootedPhone(device).ask("copyText", {{"text", text}});
    return Exit::done;
  }
};

struct Paste : OfDevice {
  Exit perform() override {
    writeOut("-", bootedPhone(device).ask("pasteText").bytes);
    return Exit::done;
  }
};

/// Services that the platform has, and those of them that this phone asks about.
const char* const kServices[] = {"microphone", "photos", "screen"};
const char* const kForeign[] = {"calendar",   "camera",          "contacts",      "contacts-limited",
                                "location",   "location-always", "media-library", "motion",
                                "photos-add", "reminders",       "siri"};

struct Privacy : Verb {
  std::string service, bundle;
  const char* value;

  explicit Privacy(const char* given) : value(given) {}
  void declare(CLI::App& app) override {
    app.add_option("SERVICE", service, "what it is about")
        ->required()
        ->type_name("all|microphone|photos|screen");
    auto* option = app.add_option("BUNDLE", bundle, "the application's bundle identifier");
    if (std::string(value) != "ask") option->required();
  }
  Exit perform() override {
    std::vector<std::string> services;
    for (const char* each : kServices) {
      if (service == "all" || service == each) services.emplace_back(each);
    }
    for (const char* each : kForeign) {
      if (service == each)
        throw Refusal(Exit::unavailable, "This phone has no " + service + " that it would ask about.");
    }
    if (services.empty())
      throw Refusal(Exit::usage, "privacy: there is no service \"" + service +
                                     "\"; expected all, microphone, photos or screen");
    PhoneLink phone = bootedPhone(device);
    for (const std::string& identifier : bundles(phone.greeting().folder)) {
      for (const std::string& each : services)
        phone.ask("permission", {{"identifier", identifier}, {"service", each}, {"value", value}});
    }
    return Exit::done;
  }
  std::vector<std::string> bundles(const fs::path& files) const {
    if (!bundle.empty()) return {bundle};
    std::vector<std::string> all;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(files / "Applications", error))
      all.push_back(entry.path().filename());
    return all;
  }
};
struct Grant : Privacy {
  Grant() : Privacy("granted") {}
};
struct Revoke : Privacy {
  Revoke() : Privacy("refused") {}
};
struct Reset : Privacy {
  Reset() : Privacy("ask") {}
};

struct StatusBarOverride : Verb {
  std::string time;

  void declare(CLI::App& app) override {
    app.add_option("--time", time, "the text: \"9:41\"")->required()->type_name("TEXT");
  }
  Exit perform() override {
    bootedPhone(device).ask("statusBar", {{"time", time}});
    return Exit::done;
  }
};

struct StatusBarClear : Verb {
  Exit perform() override {
    bootedPhone(device).ask("statusBar", {{"time", ""}});
    return Exit::done;
  }
};

struct AddMedia : Verb {
  std::vector<std::string> files;

  void declare(CLI::App& app) override {
    app.add_option("DEVICE", device, "the device")->required();
    app.add_option("FILE", files, "movies")->required();
  }
  Exit perform() override {
    PhoneLink phone = bootedPhone(device);
    for (const std::string& file : files) {
      std::error_code error;
      if (!fs::is_regular_file(file, error)) throw Refusal(Exit::noInput, "There is no file " + file + ".");
      phone.ask("addMovie", {{"file", fs::absolute(file, error).lexically_normal().string()}});
    }
    return Exit::done;
  }
};

struct ContentSize : Verb {
  std::string size;

  void declare(CLI::App& app) override {
    std::string names;
    for (int i = 0; i < ios::kTextSizes; ++i)
      names += (i == 0 ? "" : "|") + std::string(ios::textSizeName(static_cast<ios::TextSize>(i)));
    app.add_option("SIZE", size, "the size; without it the present one is printed")->type_name(names);
  }
  Exit perform() override {
    if (!size.empty() && !ios::textSizeNamed(size))
      throw Refusal(Exit::usage, "ui: there is no text size \"" + size + "\"; see: tellvane-sim help ui");
    PhoneLink phone = bootedPhone(device);
    if (size.empty()) {
      ios::writeOutput(phone.ask("contentSize").text("size") + "\n");
    } else {
      phone.ask("contentSize", {{"size", size}});
    }
    return Exit::done;
  }
};

struct LogStream : Verb {
  std::string from;

  void declare(CLI::App& app) override {
    app.add_option("--from", from, "only standard output, standard error, or the phone itself")
        ->type_name("out|err|phone")
        ->check(CLI::IsMember({"out", "err", "phone"}));
  }
  Exit perform() override {
    PhoneLink phone = bootedPhone(device);
    phone.ask("watch", {{"topics", NSArray{"console"}}});
    while (outputHasReader()) {
      const ios::PropertyList news(phone.next());
      const auto* lines = news.member("lines");
      if (!lines || !lines->array()) continue;
      for (const auto& line : *lines->array()) {
        const std::string* who = line.text("from");
        const std::string* text = line.text("text");
        if (who && text && (from.empty() || from == *who)) ios::writeOutput(*text + "\n");
      }
    }
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> contentVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"pbcopy",
       "Puts standard input on the pasteboard, as a text.",
       {"pbcopy booted < note.txt"},
       &makeVerb<Copy>},
      {"pbpaste", "Prints the text on the pasteboard.", {"pbpaste booted"}, &makeVerb<Paste>},
      {"addmedia", "Adds movies to the photo library.", {"addmedia booted talk.mov"}, &makeVerb<AddMedia>},
      {"privacy grant",
       "Lets an application use something.",
       {"privacy booted grant photos com.example.notes"},
       &makeVerb<Grant>},
      {"privacy revoke",
       "Refuses an application something.",
       {"privacy booted revoke microphone com.example.notes"},
       &makeVerb<Revoke>},
      {"privacy reset",
       "Forgets what was answered, so that the phone asks again.",
       {"privacy booted reset all", "privacy booted reset photos com.example.notes"},
       &makeVerb<Reset>},
      {"status_bar override",
       "Shows a text instead of the time of day in the status bar.",
       {"status_bar booted override --time 9:41"},
       &makeVerb<StatusBarOverride>},
      {"status_bar clear",
       "Shows the time of day in the status bar again.",
       {"status_bar booted clear"},
       &makeVerb<StatusBarClear>},
      {"ui content_size",
       "Sets the size of texts, or prints it; an application sees it once it is started.",
       {"ui booted content_size AccessibilityM"},
       &makeVerb<ContentSize>},
      {"log stream",
       "Prints what applications print from now on, until interrupted.",
       {"log booted stream", "log booted stream --from err"},
       &makeVerb<LogStream>},
  };
  return all;
}

}  // namespace simulator
