#pragma once

#include <functional>
#include <optional>
#include <string>

#include "UIKit/VisibleElements.h"
#include "simulator/flow/Command.h"
#include "simulator/flow/ScreenRecorder.h"
#include "simulator/flow/Selector.h"
#include "simulator/phone/Console.h"
#include "simulator/phone/Phone.h"
#include "simulator/script/Script.h"

namespace simulator {

/// What the commands of a flow act on.
class Stage {
 public:
  /// Keeps a file of the flow's, a picture or a movie, under a name.
  using FileSink = std::function<Problem(const std::string& name, const ios::Bytes& contents)>;
  /// `seed` is that of the scripts' chance.
  Stage(Phone& phone, Console& console, FileSink keepFile, std::uint32_t seed = 0)
      : phone_(phone), console_(console), keepFile_(std::move(keepFile)), script_(seed) {}

  Phone& phone() { return phone_; }
  Console& console() { return console_; }
  /// What records the screen; none: nothing can. It must outlive this.
  ScreenRecorder* recorder() const { return recorder_; }
  void setRecorder(ScreenRecorder* recorder) { recorder_ = recorder; }
  Script& script() { return script_; }
  Problem keepFile(const std::string& name, const ios::Bytes& contents) { return keepFile_(name, contents); }

  /// The element that is meant; empty if there is none on the screen.
  std::optional<ios::VisibleElement> find(const Selector& selector);
  /// Waits until it is there, and then until it rests. Empty if it does not come, or goes again; `problem` says so:
  /// `purpose` is what it is wanted for, "to tap on".
  std::optional<ios::VisibleElement> awaitElement(const Selector& selector, const std::string& purpose,
                                                  Problem& problem,
                                                  ios::Clock::Duration rest = std::chrono::seconds(3));
  /// Waits, frame by frame, for `condition`; false when it is not met after `patience` of the phone's time,
  /// or somebody interrupts.
  bool await(ios::Clock::Duration patience, const std::function<bool()>& condition);
  /// Lets the screen come to rest, for so long at most; in exact time, not at all.
  void settle(ios::Clock::Duration limit) {
    if (!exact_) phone_.settle(limit);
  }
  /// Whether steps take exactly the time that they say, as those of a recorded flow do.
  void setExact(bool exact) { exact_ = exact; }
  /// How long a text, a line or the like may take to come or to go.
  static constexpr ios::Clock::Duration kPatience = std::chrono::seconds(7);

 private:
  Phone& phone_;
  Console& console_;
  FileSink keepFile_;
  Script script_;
  ScreenRecorder* recorder_ = nullptr;
  bool exact_ = false;
};

}  // namespace simulator
