#include "simulator/flow/FlowRunner.h"

#include <system_error>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/StepSource.h"
#include "simulator/flow/Words.h"

namespace simulator {
namespace {

/// Gives a script back the variables that it had.
class VariablesKept {
 public:
  explicit VariablesKept(Script& script) : script_(script), variables_(script.variables()) {}
  ~VariablesKept() { script_.setVariables(variables_); }
  VariablesKept(const VariablesKept&) = delete;

 private:
  Script& script_;
  Script::Variables variables_;
};

std::string placeOf(const Step& step) {
  return step.file + ":" + std::to_string(step.line) + ": " + step.name + ": ";
}

}  // namespace

FlowRunner::FlowRunner(Stage& stage, Transcript& transcript) : stage_(stage), transcript_(transcript) {
  stage_.script().setLog([this](const std::string& line) { transcript_.remark(line); });
}

FlowRunner::~FlowRunner() {
  stage_.script().setLog({});
}

bool FlowRunner::play(const Flow& flow, Problem& problem) {
  return playWithin(*flow.environment, problem, [&] {
    bool done = play(flow.onStart, problem) && play(flow.steps, problem);
    if (flow.onComplete.empty() || stage_.phone().wasInterrupted()) return done;
    Problem last;
    if (play(flow.onComplete, last)) return done;
    if (!done) {
      warn(last);
    } else {
      problem = last;
    }
    return false;
  });
}

bool FlowRunner::playWithin(const FlowEnvironment& environment, Problem& problem,
                            const std::function<bool()>& play) {
  Script& script = stage_.script();
  const VariablesKept kept(script);
  try {
    auto variables = script.variables();
    if (environment.context) {
      for (const auto& [name, value] : environment.context->constants) variables[name] = value;
    }
    script.setVariables(variables);
    // One may fall back on another text when nobody has given it: "${NAME || 'Ada'}".
    for (const auto& [name, value] : environment.values) script.declare(name);
    for (const auto& [name, value] : environment.values) {
      variables[name] = value.playedWith(script).text();
      script.setVariables(variables);
    }
  } catch (const FlowError& error) {
    problem = error.what();
    return false;
  }
  return play();
}

bool FlowRunner::play(const std::vector<Step>& steps, Problem& problem) {
  for (const Step& step : steps) {
    if (playStep(step, problem)) continue;
    const auto& optional = step.source->optional;
    try {
      if (!optional || stage_.phone().wasInterrupted() || !optional->playedWith(stage_.script()).boolean())
        return false;
    } catch (const FlowError& error) {
      problem = error.what();
      return false;
    }
    warn(problem);
    problem.clear();
  }
  return true;
}

bool FlowRunner::playStep(const Step& step, Problem& problem) {
  if (const Group* group = step.command->group()) return playGroup(step, *group, problem);
  std::string description;
  const Problem found = seen(perform(step, description));
  transcript_.step(found.empty(), description);
  if (found.empty()) return true;
  problem = placeOf(step) + found;
  return false;
}

bool FlowRunner::playGroup(const Step& step, const Group& group, Problem& problem) {
  try {
    const auto& label = step.source->label;
    transcript_.beginGroup(label ? label->playedWith(stage_.script()).text() : group.description());
    const bool done = group.play(*this, problem);
    transcript_.endGroup();
    return done;
  } catch (const FlowError& error) {
    transcript_.endGroup();
    problem = placeOf(step) + error.bare();
    return false;
  }
}

Problem FlowRunner::perform(const Step& step, std::string& description) {
  description = step.name;
  try {
    std::unique_ptr<const Command> again;
    if (step.source->isOpen) {
      FlowReader reader;
      again = step.source->kind->read(step.source->value.playedWith(stage_.script()).asArgument(), reader);
    }
    const Command& command = again ? *again : *step.command;
    const auto& label = step.source->label;
    description = label ? label->playedWith(stage_.script()).text() : command.description();
    if (watcher_) watcher_(step, description);
    return command.perform(stage_);
  } catch (const FlowError& error) {
    return error.bare();
  }
}

/// What is to be said of a step's problem, after a look at the phone.
Problem FlowRunner::seen(Problem found) {
  Phone& phone = stage_.phone();
  // An application that ended is the reason behind whatever else was missed.
  const auto failure = phone.takeFailure();
  if (phone.wasInterrupted()) return "interrupted";
  if (failure) return "expected the application to run on, but " + *failure;
  if (!found.empty()) {
    std::vector<std::string> texts;
    for (const auto& element : phone.elements()) {
      if (!element.text.empty()) texts.push_back(element.text);
    }
    return found + "; on the screen: " + listed(texts);
  }
  if (const int code = stage_.console().problem())
    return "the console could not be written down: " + std::generic_category().message(code);
  return {};
}

}  // namespace simulator
