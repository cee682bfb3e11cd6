#pragma once

#include <string>
#include <vector>

#include "CoreGraphics/CGGeometry.h"

namespace ios {

class UIApplication;

/// A view and those in it, for somebody who wants to know how a screen is built.
struct ViewNode {
  std::string className;
  CGRect frame;  // on the screen, as it is held
  std::string label, role;
  bool enabled = true, hidden = false;
  std::vector<ViewNode> children;

  static void fields(auto& self, auto&& field) {
    field("class", self.className);
    field("x", self.frame.origin.x);
    field("y", self.frame.origin.y);
    field("width", self.frame.size.width);
    field("height", self.frame.size.height);
    field("label", self.label);
    field("role", self.role);
    field("enabled", self.enabled);
    field("hidden", self.hidden);
    field("children", self.children);
  }
};

/// The windows on the screen, from back to front. Main thread; pending layout is done first.
std::vector<ViewNode> viewTree(const UIApplication& application);
/// Class of the view controller on top, as found by the application's operation "topViewController:", which a loaded
/// library may add; empty without such a library, or when nothing is on top.
std::string topViewControllerName(UIApplication& application);

}  // namespace ios
