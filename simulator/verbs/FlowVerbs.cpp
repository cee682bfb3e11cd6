#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/remote/Interruption.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Options.h"
#include "simulator/verbs/PhoneProgram.h"
#include "simulator/verbs/Verb.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::NSArray;

struct PlayFlow : Verb {
  FlowChoices choices;

  void declare(CLI::App& app) override { simulator::declare(app, choices); }
  Exit perform() override {
    if (choices.device.empty()) becomePhoneProgram(words);
    std::error_code error;
    const fs::path file = fs::absolute(choices.flow, error).lexically_normal();
    if (choices.flow.empty() || !fs::is_regular_file(file, error))
      throw Refusal(Exit::noInput, "flow: a phone that is booted plays one flow's file; there is no file \"" +
                                       choices.flow + "\".");
    PhoneLink phone = bootedPhone(choices.device);
    phone.ask("watch", {{"topics", NSArray{"flow"}}});
    // The phone stops the flow when this process goes.
    const fs::path out = choices.out.empty() ? "out" / file.stem() : choices.out;
    ios::NSDictionary variables;
    for (const std::string& variable : choices.variables) {
      const std::size_t equals = variable.find('=');
      variables[variable.substr(0, equals)] = variable.substr(equals + 1);
    }
    const auto answer = phone.ask("playFlow", {{"file", file.string()},
                                               {"out", fs::absolute(out, error).lexically_normal().string()},
                                               {"variables", std::move(variables)}});
    const auto number = answer.members.find("number");
    if (number == answer.members.end() || !number->second.integer())
      throw Refusal(Exit::protocol, "The phone did not say which flow it plays.");
    return follow(phone, *number->second.integer());
  }
  static Exit follow(PhoneLink& phone, std::int64_t number) {
    std::int64_t shown = 0;
    for (;;) {
      const ios::PropertyList news(phone.next());
      if (const auto* playing = news.member("playing")) {
        const auto* done = playing->member("done");
        const std::string* step = playing->text("step");
        if (done && done->integer() && step && *done->integer() > shown) {
          shown = *done->integer();
          ios::writeOutput("  " + *step + "\n");
        }
      }
      const auto* last = news.member("last");
      const auto* which = last ? last->member("number") : nullptr;
      if (!which || !which->integer() || *which->integer() != number) continue;
      const std::string* problem = last->text("problem");
      if (problem && problem->empty()) return Exit::done;
      ios::writeErrors((problem ? *problem : "The phone did not say how the flow ended") + "\n");
      return Exit::failed;
    }
  }
};

struct CheckFlow : Verb {
  CheckChoices choices;

  void declare(CLI::App& app) override { simulator::declare(app, choices); }
  Exit perform() override {
    words.insert(words.begin(), "check");
    becomePhoneProgram(words);
  }
};

struct RecordFlow : Verb {
  std::string file;

  void declare(CLI::App& app) override {
    app.add_option("FILE", file, "the flow's file; \"-\" for standard output")->required();
    app.add_option("--device", device, "the phone; the one that is booted without it")->type_name("DEVICE");
  }
  Exit perform() override {
    expectWritable(file);
    PhoneLink phone = bootedPhone(device);
    phone.ask("recordFlow", {{"on", true}});
    ios::writeErrors("Recording what is done on the phone; an interrupt (Ctrl-C) ends it.\n");
    try {
      for (;;) phone.next();
    } catch (const Interrupted&) {
      Interruption::ofProcess().clear();
    }
    writeOut(file, phone.ask("recordFlow", {{"on", false}}).text("text"));
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> flowVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"flow",
       "Plays a flow, or a folder of flows.",
       {"flow examples/flows/record.yaml --out out/record", "flow checkout.yaml --device booted",
        "flow flows --jobs 4 --shard 1/3 --durations durations.json --junit report.xml",
        "flow flows/storm.yaml --seed 7"},
       &makeVerb<PlayFlow>},
      {"flow check",
       "Reads flows, and plays nothing.",
       {"flow check --portable flows checkout.yaml"},
       &makeVerb<CheckFlow>},
      {"flow record",
       "Writes down as a flow what is done on the phone, until interrupted.",
       {"flow record checkout.yaml"},
       &makeVerb<RecordFlow>},
  };
  return all;
}

}  // namespace simulator
