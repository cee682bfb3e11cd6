#pragma once

#include <string>
#include <vector>

#include "CoreGraphics/CGGeometry.h"

namespace ios {

class UIApplication;

/// Something on the screen that a person would read or tap.
struct VisibleElement {
  std::string text;  // its accessibility label
  CGRect frame;      // on the screen, as it is held
  bool control = false;
  std::string role;        // "button", "text", "image" or "group"
  bool enabled = true;     // not a control that takes no taps now
  bool focusable = false;  // a control that a tap on its middle reaches

  static void fields(auto& self, auto&& field) {
    field("text", self.text);
    field("x", self.frame.origin.x);
    field("y", self.frame.origin.y);
    field("width", self.frame.size.width);
    field("height", self.frame.size.height);
    field("control", self.control);
    field("role", self.role);
    field("enabled", self.enabled);
    field("focusable", self.focusable);
  }
};

class UIView;
/// What kind of thing a view is to somebody who cannot see it: "button", "text", "image" or "group".
std::string roleOf(const UIView& view);

/// The texts that can be seen, from back to front: those of views whose centre is on the screen, not cut off
/// by a clipping ancestor and not under an opaque view. A view with the same text as one that contains it is
/// left out. Main thread; pending layout is done first.
std::vector<VisibleElement> visibleElements(const UIApplication& application);

}  // namespace ios
