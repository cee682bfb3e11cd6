#pragma once

#include <functional>
#include <optional>
#include <string>

#include "UIKit/VisibleElements.h"
#include "simulator/flow/Command.h"
#include "simulator/phone/Console.h"
#include "simulator/phone/Phone.h"
#include "simulator/phone/TextPattern.h"

namespace simulator {

/// What the commands of a flow act on.
class Stage {
 public:
  /// Keeps a picture under a name.
  using PictureSink = std::function<Problem(const std::string& name, const ios::Bytes& png)>;
  Stage(Phone& phone, Console& console, PictureSink keepPicture)
      : phone_(phone), console_(console), keepPicture_(std::move(keepPicture)) {}

  Phone& phone() { return phone_; }
  Console& console() { return console_; }
  Problem keepPicture(const std::string& name, const ios::Bytes& png) { return keepPicture_(name, png); }

  /// The element that a tap on this text means: the text itself before a pattern, what can be tapped before
  /// what is only to be read, what is in front before what is behind. Empty if there is none on the screen.
  std::optional<ios::VisibleElement> find(const TextPattern& text);
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
  PictureSink keepPicture_;
  bool exact_ = false;
};

}  // namespace simulator
