#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/verbs/Verb.h"

namespace simulator {

/// What a verb takes, as it declares it: what help, manual page and completions are made from.
struct VerbDescription {
  struct Option {
    std::vector<std::string> names;  // "--count"; none: an operand
    std::string value;               // "N", "DEVICE", "png|jpeg"; empty for a flag
    std::string help;
    bool required = false, repeated = false;
  };
  std::vector<Option> operands, options;
  /// "ui DEVICE tap [X] [Y] [--count N]"
  std::string usage;
};
VerbDescription describe(const VerbKind& kind);

/// The words that a value stands for, "png|jpeg"; empty when it stands for any.
std::vector<std::string> wordsOf(const std::string& value);

/// The rows of the table with this name or, for a family, all of it.
std::vector<const VerbKind*> kindsNamed(const std::string& name);

/// What `help` prints: all verbs, or those named so.
std::string helpText();
std::string helpText(const std::vector<const VerbKind*>& kinds);
std::string manualPage();
/// For bash, zsh or fish.
std::optional<std::string> completion(const std::string& shell);

}  // namespace simulator
