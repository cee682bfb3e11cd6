#pragma once

#include <string>

#include "CoreFoundation/PropertyList.h"

namespace ios {

class UIApplication;

/// Does to an application what a driver asks for. Requests and answers are dictionaries:
///
///     request            fields                                        the answer adds
///     runFor             nanoseconds
///     tap                x, y; count, fingers, hold, delay (ns)
///     swipe              fromX, fromY, toX, toY; duration (ns)
///     shake
///     settle             limit (ns)                                    still
///     elements                                                         elements: [{text, x, y, width,
///     height, control}],
///                                                                      width, height (of the screen)
///     screenshot                                                       png
///     state
///     reloadSettings
///     moveToBackground   front
///     moveToForeground
///     openURL            url                                           opened
///     terminate
///
/// Every answer has "uptime" (ns on the device's clock), "state" and "front"; one to a request that could not
/// be done has "problem". The clock moves within requests only. Main thread, outside of the clock's verbs.
class AutomationServer {
 public:
  explicit AutomationServer(UIApplication& application) : application_(application) {}
  NSDictionary answer(const NSDictionary& request);
  /// After "terminate".
  bool hasEnded() const { return ended_; }

 private:
  /// Empty, or what was wrong.
  std::string perform(const std::string& name, const PropertyList& request, NSDictionary& answer);
  std::string tap(const PropertyList& request);
  std::string swipe(const PropertyList& request);
  bool settle(std::int64_t limit);
  void openURL(const std::string& text, NSDictionary& answer);

  UIApplication& application_;
  bool ended_ = false;
};

}  // namespace ios
