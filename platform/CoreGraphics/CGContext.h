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

/// A drawing context. Used by one thread at a time. Coordinates are as the bitmap's owner set them up: a
/// fresh bitmap context has its origin at the bottom left and y upwards, as on the platform; UIKit's are
/// flipped. Every operation on an empty reference does nothing; so does drawing while the transform has no
/// inverse.
class CGContext;
using CGContextRef = std::shared_ptr<CGContext>;

enum : std::uint32_t {
  kCGImageAlphaPremultipliedFirst = 2,
  kCGBitmapByteOrder32Little = 2 << 12,
};

/// A context that draws into memory of the caller's, which must outlive it: 32-bit BGRA, premultiplied
/// (`bitmapInfo` 0x2002), 8 bits a component, `bytesPerRow` a multiple of 4 and at least 4 × `width`. Empty
/// for any other layout, for no memory and for an empty size. The pixels are left as they are.
CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                   std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                   const CGColorSpace& space, std::uint32_t bitmapInfo);
std::size_t CGBitmapContextGetWidth(const CGContextRef& context);
std::size_t CGBitmapContextGetHeight(const CGContextRef& context);

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
CGAffineTransform CGContextGetCTM(const CGContextRef& context);

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
/// The image, upright in a context whose y goes downwards, stretched to `rect`. Where one pixel of an opaque
/// image meets exactly one of the bitmap, it is a copy of rows.
void CGContextDrawImage(const CGContextRef& context, const CGRect& rect, const CGImageRef& image);

}  // namespace ios
