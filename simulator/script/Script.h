#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace simulator {

/// What is wrong with an expression or a script, and on which of its lines; empty if nothing is.
struct ScriptProblem {
  std::string what;
  int line = 0;
  explicit operator bool() const { return !what.empty(); }
};

/// The expressions and scripts of one run: JavaScript (ECMAScript 5.1) without files, sockets and timers, whose time is
/// the phone's and whose chance is the run's seed. What it may use of memory and how many instructions it may take is
/// bounded. Main thread.
///
/// Scripts share the object `output` with one another and with expressions, and nothing else that they define; they
/// read `maestro.platform` and `maestro.copiedText`.
class Script {
 public:
  using Variables = std::map<std::string, std::string>;
  /// `log` takes what scripts say by `console.log`, line by line.
  explicit Script(std::uint32_t seed = 0, std::function<void(const std::string&)> log = {});
  void setLog(std::function<void(const std::string&)> log);
  ~Script();
  Script(const Script&) = delete;

  /// What keeps this from being an expression or a script; nothing is run.
  static ScriptProblem syntaxProblem(const std::string& expression);
  static ScriptProblem scriptSyntaxProblem(const std::string& script);
  /// Whether a name alone means something in every expression: "output", "Math".
  static bool knows(const std::string& name);

  /// Texts that expressions and scripts can name.
  const Variables& variables() const { return variables_; }
  void setVariables(Variables variables);
  /// Lets a name be undefined, instead of unknown, unless it is a variable.
  void declare(const std::string& name);
  void setCopiedText(const std::string& text);
  const std::string& copiedText() const { return copiedText_; }

  /// The value of an expression, as text.
  std::string evaluate(const std::string& expression, ScriptProblem& problem);
  ScriptProblem run(const std::string& script);

  struct Engine;

 private:
  static Engine& reader();
  std::unique_ptr<Engine> engine_;
  Variables variables_;
  std::string copiedText_;
};

}  // namespace simulator
