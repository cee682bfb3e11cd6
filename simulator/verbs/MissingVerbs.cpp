#include <CLI/CLI.hpp>

#include "simulator/verbs/Verb.h"

/// Verbs that are known from other simulators and have nothing beneath them on this phone.
namespace simulator {
namespace {

struct Missing : Verb {
  void declare(CLI::App& app) override { app.prefix_command(); }
  Exit perform() override {
    throw Refusal(Exit::unavailable,
                  "This phone has nothing of the kind: see \"tellvane-sim help\" for what it has.");
  }
};

}  // namespace

std::span<const VerbKind> missingVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"clone", "No copies of devices.", {}, &makeVerb<Missing>},
      {"diagnose", "No diagnoses.", {}, &makeVerb<Missing>},
      {"icloud_sync", "No synchronisation.", {}, &makeVerb<Missing>},
      {"keychain", "No keychain.", {}, &makeVerb<Missing>},
      {"location", "No location.", {}, &makeVerb<Missing>},
      {"pair", "No watches to pair with.", {}, &makeVerb<Missing>},
      {"push", "No notifications from servers.", {}, &makeVerb<Missing>},
      {"runtime", "There is only the built-in system.", {}, &makeVerb<Missing>},
      {"spawn", "No programs but applications.", {}, &makeVerb<Missing>},
      {"upgrade", "There is only the built-in system.", {}, &makeVerb<Missing>},
      {"ui appearance", "There is only the light appearance.", {}, &makeVerb<Missing>},
      {"ui increase_contrast", "There is only one contrast.", {}, &makeVerb<Missing>},
  };
  return all;
}

}  // namespace simulator
