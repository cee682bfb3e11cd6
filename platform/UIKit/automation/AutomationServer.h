#pragma once

#include <memory>
#include <string>
#include <utility>

#include "CoreFoundation/PropertyList.h"
#include "UIKit/DisplayMemory.h"

namespace ios {

class UIApplication;

/// Carries out a driver's requests on the application; AutomationRequests.h lists them. Main thread, outside
/// of the clock's verbs.
class AutomationServer {
 public:
  explicit AutomationServer(UIApplication& application) : application_(application) {}
  NSDictionary answer(const NSDictionary& request);
  /// Where "step" puts the picture: for a driver in the same process.
  void setDisplay(std::shared_ptr<DisplayMemory> display) { display_ = std::move(display); }
  /// After "terminate".
  bool hasEnded() const { return ended_; }

 private:
  /// Empty, or what was wrong. Each request has its own specialisation.
  template <class Request>
  std::string perform(const Request& request, typename Request::Answer& answer);
  template <class Request>
  std::string performEncoded(const PropertyList& request, NSDictionary& answer);
  struct Table;

  UIApplication& application_;
  bool ended_ = false;
  std::shared_ptr<DisplayMemory> display_;
};

}  // namespace ios
