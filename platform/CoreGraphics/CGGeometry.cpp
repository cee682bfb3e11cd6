#include "CoreGraphics/CGGeometry.h"

namespace ios {

// Written so that a NaN makes a rectangle empty.
bool CGRectIsEmpty(const CGRect& r) {
  return !(r.width() > 0 && r.height() > 0);
}

bool CGRectIntersectsRect(const CGRect& a, const CGRect& b) {
  return !CGRectIsEmpty(CGRectIntersection(a, b));
}

CGRect CGRectIntersection(const CGRect& a, const CGRect& b) {
  if (CGRectIsEmpty(a) || CGRectIsEmpty(b)) return CGRectZero;
  const CGFloat left = std::max(a.minX(), b.minX()), right = std::min(a.maxX(), b.maxX());
  const CGFloat top = std::max(a.minY(), b.minY()), bottom = std::min(a.maxY(), b.maxY());
  if (!(left < right && top < bottom)) return CGRectZero;
  return {{left, top}, {right - left, bottom - top}};
}

CGRect CGRectInset(const CGRect& r, CGFloat dx, CGFloat dy) {
  const CGRect inner{{r.minX() + dx, r.minY() + dy}, {r.width() - 2 * dx, r.height() - 2 * dy}};
  return inner.width() < 0 || inner.height() < 0 ? CGRectZero : inner;
}

CGRect CGRectOffset(const CGRect& r, CGFloat dx, CGFloat dy) {
  return {{r.minX() + dx, r.minY() + dy}, r.size};
}

CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty) {
  return {1, 0, 0, 1, tx, ty};
}

CGAffineTransform CGAffineTransformMakeScale(CGFloat sx, CGFloat sy) {
  return {sx, 0, 0, sy, 0, 0};
}

CGAffineTransform CGAffineTransformMakeRotation(CGFloat radians) {
  const CGFloat sine = std::sin(radians), cosine = std::cos(radians);
  return {cosine, sine, -sine, cosine, 0, 0};
}

CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first, const CGAffineTransform& second) {
  const CGAffineTransform &f = first, &s = second;
  return {f.a * s.a + f.b * s.c, f.a * s.b + f.b * s.d,          f.c * s.a + f.d * s.c,
          f.c * s.b + f.d * s.d, f.tx * s.a + f.ty * s.c + s.tx, f.tx * s.b + f.ty * s.d + s.ty};
}

CGAffineTransform CGAffineTransformInvert(const CGAffineTransform& t) {
  const CGFloat determinant = t.a * t.d - t.b * t.c;
  if (determinant == 0 || !std::isfinite(determinant)) return t;
  return {t.d / determinant,
          -t.b / determinant,
          -t.c / determinant,
          t.a / determinant,
          (t.c * t.ty - t.d * t.tx) / determinant,
          (t.b * t.tx - t.a * t.ty) / determinant};
}

CGPoint CGPointApplyAffineTransform(CGPoint p, const CGAffineTransform& t) {
  return {t.a * p.x + t.c * p.y + t.tx, t.b * p.x + t.d * p.y + t.ty};
}

}  // namespace ios
