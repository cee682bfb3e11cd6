#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "simulator/remote/Refusal.h"

namespace CLI {
class App;
}

namespace simulator {

/// Something that tellvane-sim does, with the operands and options that it was given.
class Verb {
 public:
  virtual ~Verb() = default;
  /// Declares its operands and options, whose values go into this object. Operands are named in capitals, after what
  /// completions offer for them: DEVICE, BUNDLE, FILE, FOLDER.
  virtual void declare(CLI::App&) {}
  /// Throws a Refusal, or Interrupted.
  virtual Exit perform() = 0;

  std::string device = "booted";    // of a verb that names one
  std::vector<std::string> words;   // the command line behind the verb's own name, as it was given
  std::vector<std::string> passed;  // of them, those for an application that it starts
};

/// A row of the table from which the command line is read, and help, manual page and completions are made.
struct VerbKind {
  /// "boot"; "ui tap", of a family whose device comes between the words: `ui DEVICE tap`.
  const char* name;
  const char* summary;
  std::vector<const char*> examples;  // behind "tellvane-sim "
  std::unique_ptr<Verb> (*make)();

  std::string family() const;  // "ui"; empty for a word that stands alone
  std::string word() const;    // "tap"
};

template <class Kind>
std::unique_ptr<Verb> makeVerb() {
  return std::make_unique<Kind>();
}

// All verbs, a family in each source file.
std::span<const VerbKind> deviceVerbs();
std::span<const VerbKind> phoneVerbs();
std::span<const VerbKind> applicationVerbs();
std::span<const VerbKind> contentVerbs();
std::span<const VerbKind> pictureVerbs();
std::span<const VerbKind> touchVerbs();
std::span<const VerbKind> timeVerbs();
std::span<const VerbKind> flowVerbs();
std::span<const VerbKind> helpVerbs();
std::span<const VerbKind> missingVerbs();

/// A heading, and the verbs below it.
struct VerbChapter {
  const char* title;
  std::span<const VerbKind> verbs;
};
const std::vector<VerbChapter>& verbTable();
/// What is said of a family as a whole.
std::string familySummary(const std::string& family);
/// Whether the device stands between the family's name and the verb's.
bool familyHasDevice(const std::string& family);

}  // namespace simulator
