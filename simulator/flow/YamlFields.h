#pragma once

#include <yaml-cpp/yaml.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace simulator {

class Script;

/// What is wrong with a flow, in the form "file:line:column: what". Thrown by the reader, and by a value that turns
/// out to be wrong when it is played; caught in either place.
class FlowError : public std::runtime_error {
 public:
  FlowError(const std::string& file, int line, const std::string& what)
      : FlowError(file, line, 0, "", what) {}
  FlowError(const std::string& file, int line, int column, const std::string& command,
            const std::string& what);
  /// Only what is wrong, without the place and the command.
  const std::string& bare() const { return bare_; }

 private:
  std::string bare_;
};

using Variables = std::map<std::string, std::string>;

/// What the values of a flow have in common.
struct FlowContext {
  std::string file;
  std::string appId;
  Variables constants;          // texts that are known when the flow is read
  std::set<std::string> later;  // names of texts that are known only when it is played
};

/// A value in a flow file, which knows where it stands. Its operations throw a FlowError at that place.
///
/// Its text may have expressions: ${NAME} with a name that is known is replaced at once. Others have a value only
/// when the flow is played; until then the value is open: expressions are checked for slips, and each operation
/// gives some result that is allowed.
class YamlValue {
 public:
  YamlValue(std::shared_ptr<const FlowContext> context, std::string command, YAML::Node node, int line,
            int column)
      : context_(std::move(context)),
        command_(std::move(command)),
        node_(node),
        line_(line),
        column_(column) {}
  /// The same value while the flow is played: nothing is open.
  YamlValue playedWith(Script& script) const;
  /// The same with other variables.
  YamlValue within(std::shared_ptr<const FlowContext> context) const;
  /// The value of a command: a map of it may say `label` and `optional` besides, which `members` leaves out.
  YamlValue asArgument() const;

  const std::shared_ptr<const FlowContext>& context() const { return context_; }
  const std::string& file() const { return context_->file; }
  const std::string& appId() const { return context_->appId; }
  const std::string& command() const { return command_; }
  int line() const { return line_; }
  int column() const { return column_; }
  const YAML::Node& node() const { return node_; }
  [[noreturn]] void fail(const std::string& what) const;

  bool isNull() const { return !node_.IsDefined() || node_.IsNull(); }
  bool isMap() const { return node_.IsMap(); }
  bool isOpen() const;
  /// Whether it, or anything in it but lists of commands, is open.
  bool hasOpen() const;
  /// A scalar, its expressions replaced; of an open value as it is written.
  std::string text() const;
  double number(double least, double most) const;
  int integer(int least, int most) const;
  bool boolean() const;
  std::vector<YamlValue> list() const;
  /// The members of a map in the file's order; a key that comes twice is an error.
  std::vector<std::pair<std::string, YamlValue>> members() const;
  /// Members of a map that may have these keys only.
  std::map<std::string, YamlValue> members(const std::vector<std::string>& known) const;
  /// A member of a map, if it has it.
  std::optional<YamlValue> member(const std::string& key) const;

 private:
  YamlValue child(const YAML::Node& node) const;
  std::string valueOf(const std::string& expression, bool& open) const;

  std::shared_ptr<const FlowContext> context_;
  std::string command_;
  YAML::Node node_;
  int line_, column_;
  bool isArgument_ = false;
  Script* script_ = nullptr;  // while the flow is played
};

std::string lowerCase(std::string text);

}  // namespace simulator
