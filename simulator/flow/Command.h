#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simulator {

class FlowReader;
class FlowRunner;
class Group;
class Stage;
class YamlValue;
struct Step;
struct StepSource;

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
  /// Itself, if it is made of others.
  virtual const Group* group() const { return nullptr; }
};

/// A command that is made of others. It is not performed, but plays them.
class Group : public Command {
 public:
  Problem perform(Stage&) const final { return {}; }
  const Group* group() const final { return this; }
  /// False when a step was not seen to happen; `problem` then says which, and why.
  virtual bool play(FlowRunner& runner, Problem& problem) const = 0;
  /// All lists of steps in it.
  virtual std::vector<const std::vector<Step>*> parts() const = 0;
};

struct Step {
  std::string name;  // the command's, as in the file
  std::string file;
  int line = 0;
  std::unique_ptr<const Command> command;
  std::shared_ptr<const StepSource> source;
};

/// A command as flows write it. Its reader throws a FlowError at the first slip. A command whose values are open when
/// the flow is read is read again when it is played; that of a group is read once, and keeps its values.
struct CommandKind {
  enum class Origin { portable, own };  // own: no other tool for flows takes it
  const char* name;
  std::unique_ptr<const Command> (*read)(const YamlValue& value, FlowReader& reader);
  Origin origin = Origin::portable;
};

// All commands, a family in each source file.
std::span<const CommandKind> applicationCommands();
std::span<const CommandKind> deviceCommands();
std::span<const CommandKind> keyCommands();
std::span<const CommandKind> touchCommands();
std::span<const CommandKind> scrollCommands();
std::span<const CommandKind> screenCommands();
std::span<const CommandKind> recordCommands();
std::span<const CommandKind> textCommands();
std::span<const CommandKind> scriptCommands();
std::span<const CommandKind> groupCommands();

}  // namespace simulator
