#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/live/CommandInbox.h"
#include "simulator/live/PixelRect.h"

namespace simulator {

/// Those who watch the phone, as the phone sees them. Texts are JSON objects. Called on the main thread; no call
/// waits for anybody who watches.
class Audience {
 public:
  virtual ~Audience() = default;

  /// The present value of a topic; who comes later gets the newest. Topics are told in the order in which each was
  /// told first.
  virtual void topic(const std::string& name, std::string text) = 0;
  /// The present value of a topic for those only who asked for it.
  virtual void topicOnDemand(const std::string& name, std::string text) = 0;
  /// Lines of the console; who comes later gets the last 2000.
  virtual void consoleLines(std::vector<std::string> lines) = 0;
  /// To those who watch now, once.
  virtual void remark(std::string text) = 0;

  /// The phone has dealt with a viewer's touches up to `number`; `visible`: the display's next change shows it.
  virtual void touchesApplied(ViewerId viewer, std::uint32_t number, bool visible) = 0;
  /// Part of the display is another picture now, at this time of the phone.
  virtual void displayChanged(const PixelRect& rect, std::chrono::nanoseconds time) = 0;

  /// Keeps bytes for whoever watches to fetch; the URL's path.
  virtual std::string keepFile(const std::string& name, std::string bytes) = 0;
};

}  // namespace simulator
