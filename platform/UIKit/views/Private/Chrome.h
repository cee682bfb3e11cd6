#pragma once

#include <memory>

#include "Device/Device.h"
#include "Foundation/NSLocale.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIView.h"

namespace ios::chrome {

// Appearance shared by the platform's own bars, lists and panels.
inline constexpr unsigned kTint = 0x007AFF;
inline constexpr unsigned kDestructive = 0xFF3B30;
inline constexpr unsigned kBar = 0xF8F8F8;
inline constexpr unsigned kBarEdge = 0xB2B2B2;
inline constexpr unsigned kSeparator = 0xDBDBDF;
inline constexpr unsigned kPressed = 0xE6E6E8;
inline constexpr unsigned kGray = 0x8F8F94;
inline constexpr CGFloat kStatusBar = 20;

/// One pixel, in points.
inline CGFloat hairline() {
  return 1 / UIScreen::mainScreen()->scale();
}

/// A thin line or a plain area of colour that takes no touches.
inline std::shared_ptr<UIView> plate(unsigned colour) {
  auto view = std::make_shared<UIView>();
  view->setBackgroundColor(UIColor::colorWithHex(colour));
  view->setUserInteractionEnabled(false);
  return view;
}

/// Whether the interface is mirrored, as the user's first language asks for.
inline bool isMirrored() {
  const auto languages = NSLocale::preferredLanguages();
  return !languages.empty() && NSLocale::isRightToLeft(languages.front());
}

/// Whether the user's text size is so large that lines have to wrap.
inline bool isAccessibilityTextSize() {
  return Device::current().textSize() >= TextSize::AccessibilityM;
}

/// `rect`, or its mirror image within a width.
inline CGRect mirrored(CGRect rect, CGFloat width, bool mirror) {
  if (mirror) rect.origin.x = width - rect.maxX();
  return rect;
}

}  // namespace ios::chrome
