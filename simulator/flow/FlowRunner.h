#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/flow/Flow.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Transcript.h"

namespace simulator {

/// Plays flows. Main thread; one at a time.
class FlowRunner {
 public:
  FlowRunner(Stage& stage, Transcript& transcript);
  ~FlowRunner();
  FlowRunner(const FlowRunner&) = delete;

  /// Plays a flow with what comes before and after it; what comes after it is played in any case.
  /// True when every step was seen to happen. Otherwise `problem` says where it ended, what was expected and
  /// what was there instead: "tour.yaml:12: tapOn: expected …; on the screen: …".
  bool play(const Flow& flow, Problem& problem);
  /// Plays steps in order, until one fails.
  bool play(const std::vector<Step>& steps, Problem& problem);
  /// As above, with texts that expressions can name meanwhile.
  bool playWithin(const FlowEnvironment& environment, Problem& problem, const std::function<bool()>& play);
  /// A line about something that is not as it should be, and does not end the flow.
  void warn(const std::string& text) { transcript_.warning(text); }
  void remark(const std::string& text) { transcript_.remark(text); }

  Stage& stage() { return stage_; }
  /// Called with each step, and what it does, before it is performed; not with groups.
  using Watcher = std::function<void(const Step& step, const std::string& description)>;
  void setWatcher(Watcher watcher) { watcher_ = std::move(watcher); }

 private:
  bool playStep(const Step& step, Problem& problem);
  bool playGroup(const Step& step, const Group& group, Problem& problem);
  Problem perform(const Step& step, std::string& description);
  Problem seen(Problem found);

  Stage& stage_;
  Transcript& transcript_;
  Watcher watcher_;
};

}  // namespace simulator
