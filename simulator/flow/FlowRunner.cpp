#include "simulator/flow/FlowRunner.h"

#include <system_error>

#include "simulator/flow/Words.h"

namespace simulator {

bool FlowRunner::play(const std::vector<Step>& steps, Problem& problem) {
  for (const Step& step : steps) {
    if (step.command->steps()) {
      if (!playGroup(*step.command, problem)) return false;
      continue;
    }
    if (watcher_) watcher_(step);
    const Problem found = playStep(step);
    transcript_.step(found.empty(), step.command->description());
    if (found.empty()) continue;
    problem = step.file + ":" + std::to_string(step.line) + ": " + step.name + ": " + found;
    return false;
  }
  return true;
}

bool FlowRunner::playGroup(const Command& group, Problem& problem) {
  transcript_.beginGroup(group.description());
  bool done = true;
  for (int round = 0; round < group.times() && done; ++round) done = play(*group.steps(), problem);
  transcript_.endGroup();
  return done;
}

Problem FlowRunner::playStep(const Step& step) {
  Phone& phone = stage_.phone();
  const Problem found = step.command->perform(stage_);
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
