#pragma once

#include <memory>
#include <string>

#include "UIKit/UIControl.h"
#include "UIKit/UILabel.h"

namespace simulator {

using namespace ios;

/// A label, made in one go.
std::shared_ptr<UILabel> makeLabel(const std::string& text, CGRect frame, CGFloat size, int weight,
                                   unsigned color, TextAlignment alignment = TextAlignment::natural);

/// The icon of an application, drawn from its identifier and name.
class AppIcon : public Subclass<AppIcon, UIView> {
 public:
  AppIcon(CGRect frame, std::string bundleIdentifier, std::string name);
  static MethodList methods() { return {}; }
  void drawRect(const CGRect& rect) override;

 private:
  std::string bundleIdentifier_, name_;
};

/// An icon with its name below, to tap.
class IconButton : public Subclass<IconButton, UIControl> {
 public:
  IconButton(CGRect frame, const std::string& bundleIdentifier, std::string name);
  static MethodList methods() { return {}; }
  const std::string& bundleIdentifier() const { return bundleIdentifier_; }
  std::string accessibilityLabel() const override { return name_; }
  void setHighlighted(bool highlighted) override;

 private:
  std::string bundleIdentifier_, name_;
};

/// A ground that shades from one colour at the top to another at the bottom.
class Shade : public Subclass<Shade, UIView> {
 public:
  Shade(CGRect frame, unsigned top, unsigned bottom);
  static MethodList methods() { return {}; }
  void drawRect(const CGRect& rect) override;

 private:
  CGColor top_, bottom_;
};

}  // namespace simulator
