#include "CoreGraphics/CGPath.h"

namespace ios {
namespace {

// Distance of a curve's control points from its ends, in radii, for a quarter of a circle.
constexpr CGFloat kQuarterCircle = 0.5522847498307936;

CGPath roundedBox(const CGRect& r, CGFloat rx, CGFloat ry) {
  const CGFloat left = r.minX(), right = r.maxX(), top = r.minY(), bottom = r.maxY();
  const CGFloat hx = rx * (1 - kQuarterCircle), hy = ry * (1 - kQuarterCircle);
  CGPath path;
  path.moveTo({left + rx, top});
  path.lineTo({right - rx, top});
  path.curveTo({right - hx, top}, {right, top + hy}, {right, top + ry});
  path.lineTo({right, bottom - ry});
  path.curveTo({right, bottom - hy}, {right - hx, bottom}, {right - rx, bottom});
  path.lineTo({left + rx, bottom});
  path.curveTo({left + hx, bottom}, {left, bottom - hy}, {left, bottom - ry});
  path.lineTo({left, top + ry});
  path.curveTo({left, top + hy}, {left + hx, top}, {left + rx, top});
  path.close();
  return path;
}

}  // namespace

CGPath CGPath::rect(const CGRect& r) {
  return lines({{r.minX(), r.minY()}, {r.maxX(), r.minY()}, {r.maxX(), r.maxY()}, {r.minX(), r.maxY()}},
               true);
}

CGPath CGPath::ellipse(const CGRect& r) {
  return roundedBox(r, r.width() / 2, r.height() / 2);
}

CGPath CGPath::roundedRect(const CGRect& r, CGFloat radius) {
  const CGFloat shorter = std::min(r.width(), r.height());
  const CGFloat corner = std::min(radius, shorter / 2);
  return corner > 0 ? roundedBox(r, corner, corner) : rect(r);
}

CGPath CGPath::lines(const std::vector<CGPoint>& points, bool closed) {
  CGPath path;
  for (std::size_t i = 0; i < points.size(); ++i) i == 0 ? path.moveTo(points[i]) : path.lineTo(points[i]);
  if (closed && !points.empty()) path.close();
  return path;
}

}  // namespace ios
