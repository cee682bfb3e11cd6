#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/flow/Flow.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Transcript.h"

namespace simulator {

/// Plays the steps of a flow, in order, until one fails.
class FlowRunner {
 public:
  FlowRunner(Stage& stage, Transcript& transcript) : stage_(stage), transcript_(transcript) {}

  /// True when every step was seen to happen. Otherwise `problem` says where it ended, what was expected and
  /// what was there instead: "tour.yaml:12: tapOn: expected …; on the screen: …".
  bool play(const std::vector<Step>& steps, Problem& problem);
  /// Called with each step before it is performed; not with groups.
  void setWatcher(std::function<void(const Step&)> watcher) { watcher_ = std::move(watcher); }

 private:
  bool playGroup(const Command& group, Problem& problem);
  Problem playStep(const Step& step);

  Stage& stage_;
  Transcript& transcript_;
  std::function<void(const Step&)> watcher_;
};

}  // namespace simulator
