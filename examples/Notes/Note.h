#pragma once

#include <memory>
#include <string>

#include "UIKit/UIColor.h"

namespace Notes {

/// The application's own tints.
std::shared_ptr<ios::UIColor> inkColor();    // text
std::shared_ptr<ios::UIColor> faintColor();  // secondary text
std::shared_ptr<ios::UIColor> lineColor();   // separators
std::shared_ptr<ios::UIColor> paperColor();  // backgrounds
std::shared_ptr<ios::UIColor> tintColor();   // what can be tapped

struct Note {
  std::string title;
  std::string date;  // as shown
  std::string body;
  unsigned color = 0xF5B800;  // 0xRRGGBB, of its mark in the list

  /// The body's beginning on one line.
  std::string snippet() const;
};

}  // namespace Notes
