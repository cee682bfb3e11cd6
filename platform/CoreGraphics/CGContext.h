#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "CoreGraphics/CGColor.h"
#include "CoreGraphics/CGGeometry.h"
#include "CoreGraphics/CGImage.h"
#include "CoreGraphics/CGPath.h"

namespace ios {

/// A drawing context. Used by one thread at a time. Coordinates are as the bitmap's owner set them
/// up: a fresh bitmap context has its origin at the bottom left and y upwards, as on the platform;
/// UIKit's are flipped. Operations on an empty reference have no effect; nor has drawing while the
/// transform has no inverse.
class CGContext;
using CGContextRef = std::shared_ptr<CGContext>;

enum : std::uint32_t {
  kCGImageAlphaPremultipliedFirst = 2,
  kCGImageAlphaNoneSkipFirst = 6,
  kCGBitmapByteOrder32Little = 2 << 12,
};

/// A context that draws into the caller's memory, which must outlive it: 32-bit BGRA, premultiplied
/// (`bitmapInfo` 0x2002), 8 bits per component, `bytesPerRow` a multiple of 4 and at least 4 × `width`. The
/// pixels are left as they are.
///
/// Without `data` the context allocates its own memory, and `bytesPerRow` must be 0. It starts out clear or,
/// where alpha is skipped (0x2006), black; then it stays opaque whatever is drawn.
///
/// Empty for any other layout, for an empty size, for more than CGImage::kMaximumPixels, and
/// when out of memory.
CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                   std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                   const CGColorSpace& space, std::uint32_t bitmapInfo);
/// What was drawn so far. If the context owns its memory, nothing is copied until something is drawn into it
/// again. Empty when there is no memory for a copy.
CGImageRef CGBitmapContextCreateImage(const CGContextRef& context);

/// How an image that is stretched or shrunk is drawn.
enum CGInterpolationQuality : int {
  kCGInterpolationDefault = 0,  // as kCGInterpolationHigh
  kCGInterpolationNone = 1,     // the nearest pixel
  kCGInterpolationLow = 2,   // the four nearest pixels: fast, and rough at less than half of the image's size
  kCGInterpolationHigh = 3,  // all the pixels that a pixel covers
};

void CGContextSaveGState(const CGContextRef& context);
void CGContextRestoreGState(const CGContextRef& context);
void CGContextScaleCTM(const CGContextRef& context, CGFloat sx, CGFloat sy);
void CGContextTranslateCTM(const CGContextRef& context, CGFloat tx, CGFloat ty);
void CGContextConcatCTM(const CGContextRef& context, const CGAffineTransform& transform);

void CGContextSetFillColorWithColor(const CGContextRef& context, const CGColor& color);
void CGContextSetStrokeColorWithColor(const CGContextRef& context, const CGColor& color);
void CGContextSetLineWidth(const CGContextRef& context, CGFloat width);
/// Part of the state that is saved and restored.
void CGContextSetInterpolationQuality(const CGContextRef& context, CGInterpolationQuality quality);
/// Multiplies everything drawn inside with `alpha`, as one layer.
void CGContextBeginTransparencyLayer(const CGContextRef& context);
void CGContextEndTransparencyLayer(const CGContextRef& context, CGFloat alpha);

void CGContextFillRect(const CGContextRef& context, const CGRect& rect);
void CGContextClearRect(const CGContextRef& context, const CGRect& rect);
void CGContextClipToRect(const CGContextRef& context, const CGRect& rect);
void CGContextAddPath(const CGContextRef& context, const CGPath& path);
void CGContextFillPath(const CGContextRef& context);
void CGContextStrokePath(const CGContextRef& context);
void CGContextClip(const CGContextRef& context);
/// Fills `rect` from top to bottom, from `top` to `bottom`.
void CGContextDrawVerticalGradient(const CGContextRef& context, const CGRect& rect, const CGColor& top,
                                   const CGColor& bottom);
/// The image, upright in a context whose y goes downwards, stretched to `rect`. Rows are copied where each
/// pixel of an opaque image falls on exactly one of the bitmap.
void CGContextDrawImage(const CGContextRef& context, const CGRect& rect, const CGImageRef& image);

}  // namespace ios
