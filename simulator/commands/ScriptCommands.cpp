#include <array>

#include "Device/Files.h"
#include "simulator/flow/Condition.h"
#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"

/// Commands that run scripts.
namespace simulator {
namespace {

constexpr std::size_t kLongestScript = 1 << 20;

std::string placeIn(const std::string& file, const ScriptProblem& problem) {
  return file + (problem.line > 0 ? ":" + std::to_string(problem.line) : "") + ": " + problem.what;
}

struct RunScript : Command {
  std::string file, script;
  Variables env;
  std::optional<Condition> condition;

  std::string description() const override {
    return "run the script " + file + (condition ? " when " + condition->description() : "");
  }
  Problem perform(Stage& stage) const override {
    if (condition && !condition->holds(stage)) return {};
    Script& engine = stage.script();
    const auto kept = engine.variables();
    auto variables = kept;
    for (const auto& [name, value] : env) variables[name] = value;
    engine.setVariables(variables);
    const ScriptProblem problem = engine.run(script);
    engine.setVariables(kept);
    return problem ? placeIn(file, problem) : "";
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<RunScript>();
    const auto name = value.isMap() ? value.member("file") : value;
    if (value.isMap()) {
      const auto fields = value.members({"file", "env", "when"});
      if (fields.contains("env")) {
        for (const auto& [each, text] : fields.at("env").members()) result->env[each] = text.text();
      }
      if (fields.contains("when")) result->condition.emplace(fields.at("when"));
    }
    if (!name) value.fail("needs \"file\"");
    const auto path = simulator::file(*name);
    result->file = name->text();
    if (name->isOpen()) return result;
    const auto bytes = ios::readFile(path, nullptr, kLongestScript);
    if (!bytes) name->fail("could not read " + path.string());
    result->script.assign(bytes->begin(), bytes->end());
    if (const ScriptProblem problem = Script::scriptSyntaxProblem(result->script))
      throw FlowError(path.string(), problem.line, problem.what);
    return result;
  }
};

struct EvalScript : Command {
  std::string written, plain;  // `plain`: what stands there without ${…}

  std::string description() const override { return "evaluate " + written; }
  Problem perform(Stage& stage) const override { return plain.empty() ? "" : stage.script().run(plain).what; }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    const YamlValue script = single(value, "script");
    auto result = std::make_unique<EvalScript>();
    const std::string text = simulator::text(script);  // which evaluates what is in ${…}
    result->written = script.node().Scalar();
    if (result->written.find("${") != std::string::npos) return result;
    result->plain = text;
    if (const ScriptProblem problem = Script::scriptSyntaxProblem(text)) script.fail(problem.what);
    return result;
  }
};

}  // namespace

std::span<const CommandKind> scriptCommands() {
  static constexpr std::array kAll = {
      CommandKind{"runScript", &RunScript::read},
      CommandKind{"evalScript", &EvalScript::read},
  };
  return kAll;
}

}  // namespace simulator
