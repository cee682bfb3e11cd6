#pragma once

#include <memory>

#include "QuartzCore/CADisplayLink.h"
#include "UIKit/UIScrollView.h"
#include "UIKit/UIWindow.h"

/// A long list of notes over the whole of a window, moved up and down as a thumb would. Main thread.
class ScrolledList : public ios::Subclass<ScrolledList, ios::NSObject> {
 public:
  explicit ScrolledList(const std::shared_ptr<ios::UIWindow>& window);
  static ios::MethodList methods() { return {{"refresh", &ScrolledList::refresh}}; }

  /// Moves the list to where it is after `seconds` of scrolling.
  void moveTo(double seconds);
  /// Scrolls at every refresh of the display from now on, or stops.
  void setScrolling(bool scrolling);

 private:
  void refresh();
  std::shared_ptr<ios::UIScrollView> list_;
  std::shared_ptr<ios::CADisplayLink> link_;
};
