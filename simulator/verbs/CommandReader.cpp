#include "simulator/verbs/CommandReader.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "Base/Output.h"
#include "simulator/verbs/Description.h"

namespace simulator {
namespace {

bool asksForHelp(const std::string& word) {
  return word == "--help" || word == "-h";
}

[[noreturn]] void refuse(const std::string& verb, const std::string& what) {
  throw Refusal(Exit::usage, verb + ": " + what + "\nSee: tellvane-sim help " + verb);
}

std::string listed(const std::vector<const VerbKind*>& kinds) {
  std::string text;
  for (const VerbKind* kind : kinds) text += (text.empty() ? "" : ", ") + kind->word();
  return text;
}

/// The first word of the table that begins like the one that nobody knows, or all that there are.
[[noreturn]] void refuseVerb(const std::string& word) {
  std::string like;
  for (const VerbChapter& chapter : verbTable()) {
    for (const VerbKind& kind : chapter.verbs) {
      const std::string first = kind.family().empty() ? kind.word() : kind.family();
      if (like.empty() && first.substr(0, 3) == word.substr(0, 3)) like = first;
    }
  }
  throw Refusal(Exit::usage, "There is no verb \"" + word + "\"." +
                                 (like.empty() ? "" : " Was \"" + like + "\" meant?") +
                                 "\nSee: tellvane-sim help");
}

/// Without CLI11's advice where to look, which would be about another program.
std::string reason(const CLI::ParseError& error) {
  std::string text = error.what();
  return text.substr(0, text.find('\n'));
}

void parse(CLI::App& app, const std::string& name, const std::vector<std::string>& words) {
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    refuse(name, reason(error));
  }
}

std::unique_ptr<Verb> readVerb(const VerbKind& kind, const std::vector<std::string>& words) {
  auto verb = kind.make();
  CLI::App app;
  app.set_help_flag();
  verb->declare(app);
  parse(app, kind.name, words);
  verb->words = words;
  verb->passed = app.remaining();
  return verb;
}

}  // namespace

std::unique_ptr<Verb> readCommand(const std::vector<std::string>& words) {
  if (words.empty() || asksForHelp(words.front())) {
    ios::writeOutput(helpText());
    if (words.empty()) throw Refusal(Exit::usage, "Name a verb.");
    return nullptr;
  }
  const std::string& first = words.front();
  const auto kinds = kindsNamed(first);
  if (kinds.empty()) refuseVerb(first);
  std::vector<std::string> rest(words.begin() + 1, words.end());
  const VerbKind* chosen = kinds.front()->name == first ? kinds.front() : nullptr;
  std::string device;
  // A family's device stands before the verb's own word.
  const bool hasDevice = !kinds.front()->family().empty() && familyHasDevice(first);
  if (hasDevice && !rest.empty() && !asksForHelp(rest.front())) {
    device = rest.front();
    rest.erase(rest.begin());
  }
  if (!rest.empty()) {
    for (const VerbKind* kind : kinds) {
      if (kind->family() != first || kind->word() != rest.front()) continue;
      chosen = kind;
      rest.erase(rest.begin());
      break;
    }
  }
  const std::string name = chosen ? chosen->name : first;
  // What an application is started with is its own.
  const bool passes = name == "launch";
  if (passes ? !rest.empty() && asksForHelp(rest.front())
             : std::find_if(rest.begin(), rest.end(), asksForHelp) != rest.end()) {
    ios::writeOutput(helpText(chosen && chosen->name != first ? std::vector{chosen} : kinds));
    return nullptr;
  }
  if (!chosen) {
    refuse(first,
           rest.empty()
               ? (device.empty() ? "expected a device, then one of: " : "expected one of: ") + listed(kinds)
               : "there is no \"" + rest.front() + "\" behind the device; expected one of: " + listed(kinds));
  }
  auto verb = readVerb(*chosen, rest);
  if (!device.empty()) verb->device = device;
  return verb;
}

}  // namespace simulator
