#pragma once

#include <string>
#include <vector>

#include "CoreGraphics/CGGeometry.h"

namespace ios {

/// What kind of hardware the device is.
struct ScreenProfile {
  std::string name;     // "iPhone 6", as given to --profile
  CGSize size;          // points, in portrait
  CGFloat scale = 1;    // pixels per point
  std::string machine;  // the hardware code that `uname` answers: "iPhone7,2"
  std::string model;    // the family word: "iPhone", "iPad"
  bool isPad() const { return model == "iPad"; }

  static const std::vector<ScreenProfile>& all();
  /// By name, ignoring case; null if there is none.
  static const ScreenProfile* named(const std::string& name);
};

}  // namespace ios
