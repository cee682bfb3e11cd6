#include "CoreGraphics/CGContext.h"

#include "CoreGraphics/Private/CGContext.h"

namespace ios {
namespace {

void rectPath(cairo_t* canvas, const CGRect& rect) {
  cairo_new_path(canvas);
  cairo_rectangle(canvas, rect.minX(), rect.minY(), rect.width(), rect.height());
}

}  // namespace

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                   std::size_t bitsPerComponent, std::size_t bytesPerRow, const CGColorSpace&,
                                   std::uint32_t bitmapInfo) {
  const bool opaque = bitmapInfo == (kCGImageAlphaNoneSkipFirst | kCGBitmapByteOrder32Little);
  const bool premultiplied = bitmapInfo == (kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Little);
  if (bitsPerComponent != 8 || width == 0 || height == 0 || width > CGImage::kMaximumPixels / height)
    return nullptr;
  if (!data) {
    if (bytesPerRow != 0 || !(opaque || premultiplied)) return nullptr;
    return CGContext::withOwnPixels(width, height, opaque);
  }
  if (!premultiplied || bytesPerRow % 4 != 0 || bytesPerRow / 4 < width) return nullptr;
  return CGContext::onMemory(data, width, height, bytesPerRow);
}

CGImageRef CGBitmapContextCreateImage(const CGContextRef& context) {
  return context ? context->makeImage() : nullptr;
}

void CGContextSaveGState(const CGContextRef& context) {
  if (context) context->save();
}

void CGContextRestoreGState(const CGContextRef& context) {
  if (context) context->restore();
}

void CGContextScaleCTM(const CGContextRef& context, CGFloat sx, CGFloat sy) {
  CGContextConcatCTM(context, CGAffineTransformMakeScale(sx, sy));
}

void CGContextTranslateCTM(const CGContextRef& context, CGFloat tx, CGFloat ty) {
  CGContextConcatCTM(context, CGAffineTransformMakeTranslation(tx, ty));
}

void CGContextConcatCTM(const CGContextRef& context, const CGAffineTransform& transform) {
  if (context) context->state().ctm = CGAffineTransformConcat(transform, context->state().ctm);
}

void CGContextSetFillColorWithColor(const CGContextRef& context, const CGColor& color) {
  if (context) context->state().fill = color;
}

void CGContextSetStrokeColorWithColor(const CGContextRef& context, const CGColor& color) {
  if (context) context->state().stroke = color;
}

void CGContextSetLineWidth(const CGContextRef& context, CGFloat width) {
  if (context) context->state().lineWidth = width > 0 ? width : 0;
}

void CGContextSetInterpolationQuality(const CGContextRef& context, CGInterpolationQuality quality) {
  if (context) context->state().interpolation = quality;
}

void CGContextBeginTransparencyLayer(const CGContextRef& context) {
  if (context) context->beginLayer();
}

void CGContextEndTransparencyLayer(const CGContextRef& context, CGFloat alpha) {
  if (context) context->endLayer(alpha);
}

void CGContextFillRect(const CGContextRef& context, const CGRect& rect) {
  cairo_t* canvas = context ? context->canvas() : nullptr;
  if (!canvas) return;
  rectPath(canvas, rect);
  context->fillPath(context->state().fill);
}

void CGContextClearRect(const CGContextRef& context, const CGRect& rect) {
  cairo_t* canvas = context ? context->canvas() : nullptr;
  if (!canvas) return;
  rectPath(canvas, rect);
  context->fillPath(context->clearColor(), true);
}

void CGContextClipToRect(const CGContextRef& context, const CGRect& rect) {
  if (!context) return;
  if (cairo_t* canvas = context->canvas()) rectPath(canvas, rect);
  context->clip();
}

void CGContextAddPath(const CGContextRef& context, const CGPath& path) {
  cairo_t* canvas = context ? context->canvas() : nullptr;
  if (!canvas) return;
  for (const auto& [kind, p] : path.elements()) {
    switch (kind) {
      case CGPath::Kind::move:
        cairo_move_to(canvas, p[0].x, p[0].y);
        break;
      case CGPath::Kind::line:
        cairo_line_to(canvas, p[0].x, p[0].y);
        break;
      case CGPath::Kind::curve:
        cairo_curve_to(canvas, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
        break;
      case CGPath::Kind::close:
        cairo_close_path(canvas);
        break;
    }
  }
}

void CGContextFillPath(const CGContextRef& context) {
  if (context) context->fillPath(context->state().fill);
}

void CGContextStrokePath(const CGContextRef& context) {
  if (context) context->strokePath();
}

void CGContextClip(const CGContextRef& context) {
  if (context) context->clip();
}

void CGContextDrawVerticalGradient(const CGContextRef& context, const CGRect& rect, const CGColor& top,
                                   const CGColor& bottom) {
  cairo_t* canvas = context ? context->canvas() : nullptr;
  if (!canvas) return;
  const CairoHandle<cairo_pattern_t> gradient(cairo_pattern_create_linear(0, rect.minY(), 0, rect.maxY()));
  cairo_pattern_add_color_stop_rgba(gradient.get(), 0, top.red, top.green, top.blue, top.alpha);
  cairo_pattern_add_color_stop_rgba(gradient.get(), 1, bottom.red, bottom.green, bottom.blue, bottom.alpha);
  rectPath(canvas, rect);
  cairo_set_source(canvas, gradient.get());
  cairo_fill(canvas);
}

void CGContextDrawImage(const CGContextRef& context, const CGRect& rect, const CGImageRef& image) {
  if (context && image && !CGRectIsEmpty(rect)) context->drawImage(rect, *image);
}

}  // namespace ios
