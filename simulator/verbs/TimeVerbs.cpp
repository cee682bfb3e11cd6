#include <CLI/CLI.hpp>
#include <cmath>

#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Verb.h"

/// The phone's own time.
namespace simulator {
namespace {

struct Pause : Verb {
  Exit perform() override {
    bootedPhone(device).ask("pause");
    return Exit::done;
  }
};

struct Resume : Verb {
  Exit perform() override {
    bootedPhone(device).ask("resume");
    return Exit::done;
  }
};

struct StepOn : Verb {
  std::string duration;

  void declare(CLI::App& app) override {
    app.add_option("DURATION", duration, "how far: 1, 1.5s, 200ms, 2m")->required();
  }
  Exit perform() override {
    const auto wanted = millisecondsOf(duration);
    if (!wanted || *wanted < 1 || *wanted > 3'600'000)
      throw Refusal(Exit::usage, "time step: \"" + duration + "\" is no duration of 1ms to 60m");
    constexpr double kMost = 10'000;  // of one command; Ctrl-C comes between two
    PhoneLink phone = bootedPhone(device);
    for (double left = *wanted; left >= 1;) {
      const double now = std::min(left, kMost);
      phone.ask("advance", {{"milliseconds", now}});
      left -= now;
    }
    return Exit::done;
  }
};

struct Speed : Verb {
  double factor = 1;

  void declare(CLI::App& app) override {
    app.add_option("FACTOR", factor, "of the wall's time")
        ->required()
        ->type_name("1|0.5|0.25")
        ->check(CLI::IsMember({1.0, 0.5, 0.25}));
  }
  Exit perform() override {
    bootedPhone(device).ask("speed", {{"factor", factor}});
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> timeVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"time pause",
       "Stops time: the phone moves on by steps, and by what verbs take.",
       {"time booted pause"},
       &makeVerb<Pause>},
      {"time resume", "Lets time pass again.", {"time booted resume"}, &makeVerb<Resume>},
      {"time step",
       "Moves a paused phone on.",
       {"time booted step 200ms", "time booted step 30"},
       &makeVerb<StepOn>},
      {"time speed", "Slows time down.", {"time booted speed 0.25"}, &makeVerb<Speed>},
  };
  return all;
}

}  // namespace simulator
