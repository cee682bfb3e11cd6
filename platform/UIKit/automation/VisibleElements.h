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
};

/// The texts that can be seen, from back to front: those of views whose centre is on the screen, not cut off
/// by a clipping ancestor and not under an opaque view. A view that says the same as one around it is left
/// out. Main thread; pending layout is done first.
std::vector<VisibleElement> visibleElements(const UIApplication& application);

}  // namespace ios
