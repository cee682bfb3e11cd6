#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>

#include "Base/Output.h"
#include "simulator/live/Json.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Verb.h"

/// What a hand does with the phone, and what an eye sees on it.
namespace simulator {
namespace {

using ios::NSArray;
using ios::NSDictionary;

double durationIn(const std::string& text, const char* option) {
  const auto duration = millisecondsOf(text);
  if (!duration || *duration > 3'600'000)
    throw Refusal(Exit::usage, std::string(option) + " \"" + text +
                                   "\" is no duration; expected one such as 0.5 or 200ms");
  return *duration;
}

void expectPlace(const char* name, const std::optional<double>& value) {
  if (value && !(*value >= 0 && *value <= 10'000))
    throw Refusal(Exit::usage, std::string(name) + " is no place on a screen; expected 0 to 10000 points");
}

struct Tap : Verb {
  std::optional<double> x, y;
  std::string text, duration, timeout;
  int count = 1, fingers = 1;

  void declare(CLI::App& app) override {
    app.add_option("X", x, "from the left, in points");
    app.add_option("Y", y, "from the top, in points");
    app.add_option("--text", text, "what is written there, or an expression that matches it; waits for it")
        ->type_name("TEXT");
    app.add_option("--count", count, "how many taps in a row")->type_name("N")->check(CLI::Range(1, 1000));
    app.add_option("--fingers", fingers, "with how many fingers")->type_name("N")->check(CLI::Range(1, 5));
    app.add_option("--duration", duration, "how long a finger stays: 0.5, 200ms")->type_name("S");
    app.add_option("--timeout", timeout, "how long to wait for the text, 7 s without it")->type_name("S");
  }
  Exit perform() override {
    if (x.has_value() != y.has_value() || x.has_value() == !text.empty())
      throw Refusal(Exit::usage, "ui tap: expected X and Y, or --text TEXT\nSee: tellvane-sim help ui");
    expectPlace("X", x);
    expectPlace("Y", y);
    NSDictionary members{{"count", count}, {"fingers", fingers}};
    if (x) members.insert({{"x", *x}, {"y", *y}});
    if (!text.empty()) members["text"] = text;
    if (!duration.empty()) members["hold"] = durationIn(duration, "--duration");
    if (!timeout.empty()) members["patience"] = durationIn(timeout, "--timeout");
    bootedPhone(device).ask("tap", members);
    return Exit::done;
  }
};

struct Swipe : Verb {
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  std::string duration;

  void declare(CLI::App& app) override {
    for (const auto& [name, value] : {std::pair{"X1", &x1}, {"Y1", &y1}, {"X2", &x2}, {"Y2", &y2}})
      app.add_option(name, *value,
                     std::string(name[0] == 'X' ? "from the left" : "from the top") + ", in points")
          ->required()
          ->check(CLI::Range(0.0, 10'000.0));
    app.add_option("--duration", duration, "how long it takes: 0.4 without it")->type_name("S");
  }
  Exit perform() override {
    NSDictionary members{{"x1", x1}, {"y1", y1}, {"x2", x2}, {"y2", y2}};
    if (!duration.empty()) members["duration"] = durationIn(duration, "--duration");
    bootedPhone(device).ask("swipe", members);
    return Exit::done;
  }
};

struct Button : Verb {
  std::string name;

  void declare(CLI::App& app) override {
    app.add_option("BUTTON", name, "the button")
        ->required()
        ->type_name("HOME|LOCK|SIDE_BUTTON|SIRI|APPLE_PAY");
  }
  Exit perform() override {
    std::string upper = name;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (const char* missing : {"LOCK", "SIDE_BUTTON", "SIRI", "APPLE_PAY"}) {
      if (upper == missing)
        throw Refusal(Exit::unavailable, "This phone has no button " + upper + "; it has HOME.");
    }
    if (upper != "HOME")
      throw Refusal(Exit::usage, "ui button: \"" + name + "\" is no button; expected HOME");
    bootedPhone(device).ask("home");
    return Exit::done;
  }
};

struct Shake : Verb {
  Exit perform() override {
    bootedPhone(device).ask("shake");
    return Exit::done;
  }
};

struct Rotate : Verb {
  std::string orientation;

  void declare(CLI::App& app) override {
    const auto all = {"portrait", "landscapeLeft", "landscapeRight", "upsideDown"};
    app.add_option("ORIENTATION", orientation, "how it is held")
        ->required()
        ->type_name("portrait|landscapeLeft|landscapeRight|upsideDown")
        ->check(CLI::IsMember(std::vector<std::string>(all.begin(), all.end())));
  }
  Exit perform() override {
    bootedPhone(device).ask("rotate", {{"orientation", orientation}});
    return Exit::done;
  }
};

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", std::round(value * 100) / 100);
  return text;
}

std::vector<double> frameOf(const ios::PropertyList& element) {
  std::vector<double> frame;
  const auto* numbers = element.member("frame");
  if (!numbers || !numbers->array()) return frame;
  for (const auto& each : *numbers->array()) frame.push_back(numberIn(&each).value_or(0));
  return frame;
}

/// "button  Send                  (16, 200, 343, 44)"
void describe(const ios::PropertyList& element) {
  const auto frame = frameOf(element);
  const std::string* role = element.text("role");
  const std::string* text = element.text("text");
  if (!role || !text || frame.size() != 4) return;
  const auto* enabled = element.member("enabled");
  const bool off = enabled && enabled->boolean() && !*enabled->boolean();
  ios::writeOutput(*role + "\t" + *text + "\t" + number(frame[0]) + "," + number(frame[1]) + " " +
                   number(frame[2]) + "x" + number(frame[3]) + (off ? "\tdisabled" : "") + "\n");
}

NSArray elementsOn(const std::string& device) {
  const auto answer = bootedPhone(device).ask("elements");
  const auto found = answer.members.find("elements");
  if (found == answer.members.end() || !found->second.array())
    throw Refusal(Exit::protocol, "The phone did not say what is on its screen.");
  return *found->second.array();
}

struct DescribeAll : Verb {
  bool json = false;

  void declare(CLI::App& app) override { app.add_flag("--json", json, "as JSON, for programs"); }
  Exit perform() override {
    const NSArray elements = elementsOn(device);
    if (json) {
      ios::writeOutput(jsonText(elements) + "\n");
    } else {
      for (const auto& element : elements) describe(element);
    }
    return Exit::done;
  }
};

struct DescribePoint : Verb {
  double x = 0, y = 0;
  bool json = false;

  void declare(CLI::App& app) override {
    app.add_option("X", x, "from the left, in points")->required()->check(CLI::Range(0.0, 10'000.0));
    app.add_option("Y", y, "from the top, in points")->required()->check(CLI::Range(0.0, 10'000.0));
    app.add_flag("--json", json, "as JSON, for programs");
  }
  Exit perform() override {
    const NSArray elements = elementsOn(device);
    // They come from back to front.
    const auto found =
        std::find_if(elements.rbegin(), elements.rend(), [&](const ios::PropertyList& element) {
          const auto frame = frameOf(element);
          return frame.size() == 4 && x >= frame[0] && y >= frame[1] && x < frame[0] + frame[2] &&
                 y < frame[1] + frame[3];
        });
    if (found == elements.rend())
      throw Refusal(Exit::refused,
                    "There is nothing to be read or tapped at " + number(x) + "," + number(y) + ".");
    if (json) {
      ios::writeOutput(jsonText(*found) + "\n");
    } else {
      describe(*found);
    }
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> touchVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"ui tap",
       "Taps at a place, or on a text.",
       {"ui booted tap 187 333 --count 3", "ui booted tap --text \"Capture Screen\"",
        "ui booted tap 187 333 --fingers 3"},
       &makeVerb<Tap>},
      {"ui swipe",
       "Moves a finger over the screen.",
       {"ui booted swipe 187 500 187 100 --duration 0.3"},
       &makeVerb<Swipe>},
      {"ui button", "Presses a button.", {"ui booted button HOME"}, &makeVerb<Button>},
      {"ui shake", "Shakes the phone.", {"ui booted shake"}, &makeVerb<Shake>},
      {"ui rotate", "Turns the phone.", {"ui booted rotate landscapeLeft"}, &makeVerb<Rotate>},
      {"ui describe-all",
       "Prints what can be read and tapped: what it is, its text, its place and size in points.",
       {"ui booted describe-all", "ui booted describe-all --json"},
       &makeVerb<DescribeAll>},
      {"ui describe-point",
       "Prints what is in front at a place.",
       {"ui booted describe-point 187 333"},
       &makeVerb<DescribePoint>},
  };
  return all;
}

}  // namespace simulator
