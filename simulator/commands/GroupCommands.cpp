#include <array>

#include "simulator/flow/Condition.h"
#include "simulator/flow/FlowReader.h"
#include "simulator/flow/FlowRunner.h"
#include "simulator/flow/StepSource.h"

/// Commands that are made of others.
namespace simulator {
namespace {

/// The steps of a group: its own, or those of another flow.
struct Inner {
  std::string file;  // of the other flow
  std::optional<Flow> flow;
  std::vector<Step> steps;
  std::shared_ptr<const FlowEnvironment> environment;

  bool play(FlowRunner& runner, Problem& problem) const {
    return runner.playWithin(*environment, problem, [&] {
      return flow ? runner.play(*flow, problem) : runner.play(steps, problem);
    });
  }
  std::vector<const std::vector<Step>*> parts() const {
    if (flow) return {&flow->onStart, &flow->steps, &flow->onComplete};
    return {&steps};
  }

  static Inner read(const YamlValue& value, FlowReader& reader) {
    const auto file = value.member("file"), commands = value.member("commands"), env = value.member("env");
    if (file.has_value() == commands.has_value()) value.fail("needs either \"file\" or \"commands\"");
    Inner inner;
    const YamlValue* const texts = env ? &*env : nullptr;
    inner.environment = reader.environment(texts);
    if (file) {
      inner.file = text(*file);
      inner.flow = reader.readInner(*file, texts);
    } else {
      inner.steps = reader.stepsWithin(*commands, texts);
    }
    return inner;
  }
};

struct Repeat : Group {
  static constexpr int kMost = 100'000, kMostUnlessTold = 1'000;
  std::optional<YamlValue> count;
  std::optional<Condition> condition;
  std::vector<Step> inner;

  std::string description() const override {
    std::string words = "repeat";
    if (count)
      words += count->isOpen() ? " " + count->text() + " times" : " " + times(count->integer(0, kMost));
    return words + (condition ? " while " + condition->description() : "");
  }
  bool play(FlowRunner& runner, Problem& problem) const override {
    Stage& stage = runner.stage();
    const int most = count ? count->playedWith(stage.script()).integer(0, kMost) : kMostUnlessTold;
    for (int round = 0; round < most; ++round) {
      if (condition && !condition->holds(stage)) return true;
      if (!runner.play(inner, problem)) return false;
    }
    if (count || !condition->holds(stage)) return true;
    problem = condition->description() + " still holds after " + std::to_string(most) + " rounds";
    return false;
  }
  std::vector<const std::vector<Step>*> parts() const override { return {&inner}; }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader& reader) {
    auto result = std::make_unique<Repeat>();
    auto fields = value.members({"times", "while", "commands"});
    const bool bounded = fields.contains("times") || fields.contains("while");
    if (!bounded || !fields.contains("commands"))
      value.fail("needs \"times\" or \"while\", and \"commands\"");
    if (fields.contains("times")) {
      result->count = fields.at("times");
      result->count->integer(0, kMost);
    }
    if (fields.contains("while")) result->condition.emplace(fields.at("while"));
    result->inner = reader.steps(fields.at("commands"));
    return result;
  }
};

struct Retry : Group {
  static constexpr int kMost = 100;
  std::optional<YamlValue> most;
  Inner inner;

  std::string description() const override { return "try, and again if need be"; }
  bool play(FlowRunner& runner, Problem& problem) const override {
    const int retries = most ? most->playedWith(runner.stage().script()).integer(0, kMost) : 1;
    for (int round = 0;; ++round) {
      problem.clear();
      if (inner.play(runner, problem)) return true;
      if (round >= retries || runner.stage().phone().wasInterrupted()) return false;
      runner.warn(problem);
    }
  }
  std::vector<const std::vector<Step>*> parts() const override { return inner.parts(); }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader& reader) {
    auto result = std::make_unique<Retry>();
    const auto fields = value.members({"maxRetries", "file", "commands", "env"});
    if (fields.contains("maxRetries")) {
      result->most = fields.at("maxRetries");
      result->most->integer(0, kMost);
    }
    result->inner = Inner::read(value, reader);
    return result;
  }
};

struct RunFlow : Group {
  std::optional<Condition> condition;
  Inner inner;

  std::string description() const override {
    return (inner.flow ? "play " + inner.file : "play") +
           (condition ? " when " + condition->description() : "");
  }
  bool play(FlowRunner& runner, Problem& problem) const override {
    if (!condition || condition->holds(runner.stage())) return inner.play(runner, problem);
    runner.remark("left out");
    return true;
  }
  std::vector<const std::vector<Step>*> parts() const override { return inner.parts(); }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader& reader) {
    auto result = std::make_unique<RunFlow>();
    if (!value.isMap()) {
      result->inner.environment = reader.environment(nullptr);
      result->inner.file = text(value);
      result->inner.flow = reader.readInner(value, nullptr);
      return result;
    }
    const auto fields = value.members({"file", "commands", "env", "when"});
    if (fields.contains("when")) result->condition.emplace(fields.at("when"));
    result->inner = Inner::read(value, reader);
    return result;
  }
};

}  // namespace

std::span<const CommandKind> groupCommands() {
  static constexpr std::array kAll = {
      CommandKind{"repeat", &Repeat::read},
      CommandKind{"retry", &Retry::read},
      CommandKind{"runFlow", &RunFlow::read},
  };
  return kAll;
}

}  // namespace simulator
