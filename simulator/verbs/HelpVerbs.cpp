#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/verbs/Description.h"

namespace simulator {
namespace {

struct Help : Verb {
  std::vector<std::string> words;
  std::string shell;
  bool manual = false;

  void declare(CLI::App& app) override {
    app.add_option("VERB", words, "all about a verb, of one word or more; the list of all without it");
    app.add_flag("--man", manual, "the manual page, for man -l");
    app.add_option("--completion", shell, "what a shell needs to complete verbs, options and their values")
        ->type_name("bash|zsh|fish")
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  }
  Exit perform() override {
    if (manual) {
      ios::writeOutput(manualPage());
    } else if (!shell.empty()) {
      ios::writeOutput(*completion(shell));
    } else if (words.empty()) {
      ios::writeOutput(helpText());
    } else {
      std::string name;
      for (const std::string& word : words) name += (name.empty() ? "" : " ") + word;
      const auto kinds = kindsNamed(name);
      if (kinds.empty())
        throw Refusal(Exit::usage, "There is no verb \"" + name + "\".\nSee: tellvane-sim help");
      ios::writeOutput(helpText(kinds));
    }
    return Exit::done;
  }
};

struct Version : Verb {
  Exit perform() override {
    ios::writeOutput("tellvane-sim " TELLVANE_VERSION "\n");
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> helpVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"help",
       "Tells what verbs there are, and how they are used.",
       {"help ui", "help --completion bash > ~/.local/share/bash-completion/completions/tellvane-sim"},
       &makeVerb<Help>},
      {"version", "Prints the version.", {"version"}, &makeVerb<Version>},
  };
  return all;
}

}  // namespace simulator
