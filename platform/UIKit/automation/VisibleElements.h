#pragma once

#include <string>
#include <vector>

#include "CoreGraphics/CGGeometry.h"

namespace ios {

class UIApplication;

/// Something on the screen that a person would read or tap.
struct VisibleElement {
  std::string text;        // its accessibility label; may be empty if it has an identifier
  std::string identifier;  // its accessibility identifier
  CGRect frame;            // on the screen, as it is held
  bool control = false;
  std::string role;        // "button", "switch", "text", "image" or "group"
  bool enabled = true;     // false for a control that takes no taps now
  bool focusable = false;  // a control that a tap on its middle reaches
  bool selected = false;   // the selected one of several, such as a tab
  bool on = false;         // of a switch
  int parent = -1;         // which element before it contains it most closely; -1: none
  double shown = 1;        // the part of its area that is on the screen and not cut off

  static void fields(auto& self, auto&& field) {
    field("text", self.text);
    field("identifier", self.identifier);
    field("x", self.frame.origin.x);
    field("y", self.frame.origin.y);
    field("width", self.frame.size.width);
    field("height", self.frame.size.height);
    field("control", self.control);
    field("role", self.role);
    field("enabled", self.enabled);
    field("focusable", self.focusable);
    field("selected", self.selected);
    field("on", self.on);
    field("parent", self.parent);
    field("shown", self.shown);
  }
};

class UIView;
/// The role of a view for somebody who cannot see it: "button", "switch", "text", "image"
/// or "group".
std::string roleOf(const UIView& view);

/// What can be seen of views with a text or an identifier, from back to front: those whose centre is on the screen,
/// not cut off by a clipping ancestor and not under an opaque view. A view without an identifier that has the same
/// text as one that contains it is left out. Main thread; pending layout is done first.
std::vector<VisibleElement> visibleElements(const UIApplication& application);

}  // namespace ios
