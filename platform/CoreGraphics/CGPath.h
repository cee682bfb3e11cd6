#pragma once

#include <vector>

#include "CoreGraphics/CGGeometry.h"

namespace ios {

/// An outline of lines and curves; a value.
class CGPath {
 public:
  static CGPath rect(const CGRect& rect);
  static CGPath ellipse(const CGRect& rect);
  /// All corners have one radius, at most half the shorter side.
  static CGPath roundedRect(const CGRect& rect, CGFloat radius);
  static CGPath lines(const std::vector<CGPoint>& points, bool closed = false);

  void moveTo(CGPoint p) { elements_.push_back({Kind::move, {p, {}, {}}}); }
  void lineTo(CGPoint p) { elements_.push_back({Kind::line, {p, {}, {}}}); }
  void curveTo(CGPoint c1, CGPoint c2, CGPoint p) { elements_.push_back({Kind::curve, {c1, c2, p}}); }
  void close() { elements_.push_back({Kind::close, {}}); }

  enum class Kind { move, line, curve, close };
  struct Element {
    Kind kind;
    CGPoint points[3];
  };
  const std::vector<Element>& elements() const { return elements_; }

 private:
  std::vector<Element> elements_;
};

}  // namespace ios
