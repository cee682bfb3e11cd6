#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace simulator {

class FlowReader;
class Stage;
class YamlValue;
struct Step;

/// What is wrong, for a person; empty if nothing is.
using Problem = std::string;

/// What one step of a flow does, with the values it was given.
class Command {
 public:
  virtual ~Command() = default;
  /// In plain words: "tap three times at 50%,50%".
  virtual std::string description() const = 0;
  /// Makes it happen, or sees that it has. A problem says what was expected and what was there instead.
  virtual Problem perform(Stage& stage) const = 0;
  /// The steps of a command that is made of others, and how often they are played; it is
  /// not performed itself.
  virtual const std::vector<Step>* steps() const { return nullptr; }
  virtual int times() const { return 1; }
};

struct Step {
  std::string name;  // the command's, as in the file
  std::string file;
  int line = 0;
  std::unique_ptr<const Command> command;
};

/// A command as flows write it. Its reader throws a FlowError at the first slip.
struct CommandKind {
  const char* name;
  std::unique_ptr<const Command> (*read)(const YamlValue& value, FlowReader& reader);
};

// All commands, a family in each source file.
std::span<const CommandKind> applicationCommands();
std::span<const CommandKind> touchCommands();
std::span<const CommandKind> screenCommands();
std::span<const CommandKind> recordCommands();
std::span<const CommandKind> groupCommands();

}  // namespace simulator
