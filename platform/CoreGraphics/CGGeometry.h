#pragma once

#include <algorithm>
#include <cmath>

namespace ios {

/// The platform's graphics number, of 64 bits as on its 64-bit devices.
using CGFloat = double;

struct CGPoint {
  CGFloat x = 0, y = 0;
  bool operator==(const CGPoint&) const = default;
};
struct CGSize {
  CGFloat width = 0, height = 0;
  bool operator==(const CGSize&) const = default;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
  bool operator==(const CGRect&) const = default;
  CGFloat minX() const { return origin.x; }
  CGFloat minY() const { return origin.y; }
  CGFloat midX() const { return origin.x + size.width / 2; }
  CGFloat midY() const { return origin.y + size.height / 2; }
  CGFloat maxX() const { return origin.x + size.width; }
  CGFloat maxY() const { return origin.y + size.height; }
  CGFloat width() const { return size.width; }
  CGFloat height() const { return size.height; }
};

inline CGPoint CGPointMake(CGFloat x, CGFloat y) {
  return {x, y};
}
inline CGSize CGSizeMake(CGFloat width, CGFloat height) {
  return {width, height};
}
inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return {{x, y}, {width, height}};
}
inline const CGRect CGRectZero{};

/// Right and bottom edges are outside, as on the platform.
inline bool CGRectContainsPoint(const CGRect& r, CGPoint p) {
  return p.x >= r.minX() && p.x < r.maxX() && p.y >= r.minY() && p.y < r.maxY();
}
bool CGRectIsEmpty(const CGRect& r);
/// Whether they share an area; touching edges do not count.
bool CGRectIntersectsRect(const CGRect& a, const CGRect& b);
/// The area they share; the zero rectangle if there is none.
CGRect CGRectIntersection(const CGRect& a, const CGRect& b);
/// Smaller by `dx` at the left and the right and by `dy` at the top and the bottom; the zero rectangle if
/// nothing is left.
CGRect CGRectInset(const CGRect& r, CGFloat dx, CGFloat dy);
CGRect CGRectOffset(const CGRect& r, CGFloat dx, CGFloat dy);

/// x' = a·x + c·y + tx, y' = b·x + d·y + ty.
struct CGAffineTransform {
  CGFloat a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
  bool operator==(const CGAffineTransform&) const = default;
};
inline const CGAffineTransform CGAffineTransformIdentity{};
CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty);
CGAffineTransform CGAffineTransformMakeScale(CGFloat sx, CGFloat sy);
CGAffineTransform CGAffineTransformMakeRotation(CGFloat radians);
/// First `first`, then `second`.
CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first, const CGAffineTransform& second);
/// The transform itself when it has no inverse.
CGAffineTransform CGAffineTransformInvert(const CGAffineTransform& t);
CGPoint CGPointApplyAffineTransform(CGPoint point, const CGAffineTransform& t);

}  // namespace ios
