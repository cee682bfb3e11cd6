#include "CoreGraphics/Private/CGContext.h"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

namespace ios {
namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

std::shared_ptr<std::uint8_t[]> uninitialised(std::size_t bytes) {
  return {static_cast<std::uint8_t*>(std::malloc(bytes)), Free()};
}

// From points of the context to pixels of the bitmap, whose first row is the topmost.
cairo_matrix_t deviceMatrix(const CGAffineTransform& t, std::size_t height) {
  return {t.a, -t.b, t.c, -t.d, t.tx, static_cast<double>(height) - t.ty};
}

bool isUsable(const cairo_matrix_t& m) {
  const double determinant = m.xx * m.yy - m.xy * m.yx;
  return determinant != 0 && std::isfinite(determinant) && std::isfinite(m.x0) && std::isfinite(m.y0);
}

// The value as a whole number of pixels, if it is one apart from rounding errors.
std::optional<long> whole(double value) {
  const double nearest = std::round(value);
  if (!(std::abs(value - nearest) < 1e-3) || std::abs(nearest) > 1e6) return std::nullopt;
  return static_cast<long>(nearest);
}

double share(double component) {
  return component > 0 ? std::min(component, 1.0) : 0.0;
}

void setSource(cairo_t* canvas, const CGColor& c) {
  cairo_set_source_rgba(canvas, share(c.red), share(c.green), share(c.blue), share(c.alpha));
}

}  // namespace

CGContextRef CGContext::onMemory(void* data, std::size_t width, std::size_t height, std::size_t bytesPerRow) {
  CGContextRef context(new CGContext);
  context->width_ = width;
  context->height_ = height;
  context->bytesPerRow_ = bytesPerRow;
  return context->attach(data) ? context : nullptr;
}

CGContextRef CGContext::withOwnPixels(std::size_t width, std::size_t height, bool opaque) {
  std::shared_ptr<std::uint8_t[]> pixels(static_cast<std::uint8_t*>(std::calloc(height, width * 4)), Free());
  if (!pixels) return nullptr;
  if (opaque) std::fill_n(reinterpret_cast<std::uint32_t*>(pixels.get()), width * height, 0xFF000000u);
  CGContextRef context = onMemory(pixels.get(), width, height, width * 4);
  if (!context) return nullptr;
  context->ownPixels_ = std::move(pixels);
  context->opaque_ = opaque;
  return context;
}

bool CGContext::attach(void* data) {
  constexpr std::size_t kMaximumSide = 32767;
  if (width_ > kMaximumSide || height_ > kMaximumSide || bytesPerRow_ > kMaximumSide * 64) return false;
  data_ = static_cast<std::uint8_t*>(data);
  surface_.reset(cairo_image_surface_create_for_data(data_, CAIRO_FORMAT_ARGB32, static_cast<int>(width_),
                                                     static_cast<int>(height_),
                                                     static_cast<int>(bytesPerRow_)));
  cairo_.reset(cairo_create(surface_.get()));
  return cairo_status(cairo_.get()) == CAIRO_STATUS_SUCCESS;
}

cairo_t* CGContext::canvas() {
  const cairo_matrix_t matrix = deviceMatrix(state().ctm, height_);
  if (!isUsable(matrix)) return nullptr;
  if (taken_ && !detachFromTakenImage()) return nullptr;
  cairo_set_matrix(cairo_.get(), &matrix);
  return cairo_.get();
}

CGImageRef CGContext::makeImage() {
  cairo_surface_flush(surface_.get());
  std::shared_ptr<std::uint8_t[]> pixels = ownPixels_;
  if (pixels && layers_.empty()) {
    taken_ = true;
  } else {
    // Copied: the caller may change its own memory, and cairo cannot switch buffers while a layer is open.
    pixels = uninitialised(height_ * bytesPerRow_);
    if (!pixels) return nullptr;
    std::memcpy(pixels.get(), data_, height_ * bytesPerRow_);
  }
  return std::make_shared<const CGImage>(std::move(pixels), width_, height_, bytesPerRow_, opaque_);
}

bool CGContext::detachFromTakenImage() {
  auto copy = uninitialised(height_ * bytesPerRow_);
  if (!copy) return false;
  std::memcpy(copy.get(), data_, height_ * bytesPerRow_);
  cairo_identity_matrix(cairo_.get());
  const CairoHandle<cairo_path_t> path(cairo_copy_path(cairo_.get()));
  attach(copy.get());
  ownPixels_ = std::move(copy);
  taken_ = false;
  cairo_t* canvas = cairo_.get();
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (i > 0) cairo_save(canvas);
    for (const auto& clip : states_[i].clips) {
      cairo_append_path(canvas, clip.get());
      cairo_clip(canvas);
    }
  }
  cairo_append_path(canvas, path.get());
  return true;
}

void CGContext::save() {
  cairo_save(cairo_.get());
  states_.push_back(state());
  state().clips.clear();
}

void CGContext::restore() {
  if (states_.size() <= (layers_.empty() ? 1 : layers_.back())) return;
  cairo_restore(cairo_.get());
  states_.pop_back();
}

void CGContext::beginLayer() {
  if (taken_) detachFromTakenImage();
  cairo_push_group(cairo_.get());
  states_.push_back(state());
  state().clips.clear();
  layers_.push_back(states_.size());
}

void CGContext::endLayer(CGFloat alpha) {
  if (layers_.empty()) return;
  while (states_.size() > layers_.back()) restore();
  cairo_pop_group_to_source(cairo_.get());
  if (!taken_) cairo_paint_with_alpha(cairo_.get(), share(alpha));
  layers_.pop_back();
  states_.pop_back();
}

void CGContext::clip() {
  cairo_t* canvas = this->canvas();
  if (!canvas) {
    canvas = cairo_.get();
    cairo_new_path(canvas);
  }
  if (ownPixels_) {
    cairo_identity_matrix(canvas);
    state().clips.emplace_back(cairo_copy_path(canvas), CairoDeleter());
  }
  cairo_clip(canvas);
}

void CGContext::fillPath(const CGColor& color, bool replacing) {
  cairo_t* canvas = this->canvas();
  if (!canvas) return;
  setSource(canvas, color);
  cairo_set_operator(canvas, replacing ? CAIRO_OPERATOR_SOURCE : CAIRO_OPERATOR_OVER);
  cairo_fill(canvas);
  cairo_set_operator(canvas, CAIRO_OPERATOR_OVER);
}

void CGContext::strokePath() {
  cairo_t* canvas = this->canvas();
  if (!canvas) return;
  setSource(canvas, state().stroke);
  cairo_set_line_width(canvas, state().lineWidth);
  cairo_stroke(canvas);
}

namespace {

cairo_filter_t filterOf(CGInterpolationQuality quality) {
  if (quality == kCGInterpolationNone) return CAIRO_FILTER_NEAREST;
  return quality == kCGInterpolationLow ? CAIRO_FILTER_BILINEAR : CAIRO_FILTER_GOOD;
}

}  // namespace

void CGContext::drawImage(const CGRect& rect, const CGImage& image) {
  cairo_t* canvas = this->canvas();
  if (!canvas) return;
  cairo_matrix_t matrix;
  cairo_get_matrix(canvas, &matrix);
  if (copyRows(rect, image, matrix)) return;

  const auto format = image.isOpaque() ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32;
  const CairoHandle<cairo_surface_t> surface(cairo_image_surface_create_for_data(
      const_cast<std::uint8_t*>(image.pixels()), format, static_cast<int>(image.width()),
      static_cast<int>(image.height()), static_cast<int>(image.bytesPerRow())));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return;
  const CairoHandle<cairo_pattern_t> pattern(cairo_pattern_create_for_surface(surface.get()));
  const double sx = static_cast<double>(image.width()) / rect.width();
  const double sy = static_cast<double>(image.height()) / rect.height();
  const cairo_matrix_t toPixels{sx, 0, 0, sy, -rect.minX() * sx, -rect.minY() * sy};
  if (!isUsable(toPixels)) return;
  cairo_pattern_set_matrix(pattern.get(), &toPixels);
  // Without it, an enlarged image fades out at its edges.
  cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
  cairo_pattern_set_filter(pattern.get(), filterOf(state().interpolation));
  cairo_new_path(canvas);
  cairo_rectangle(canvas, rect.minX(), rect.minY(), rect.width(), rect.height());
  cairo_set_source(canvas, pattern.get());
  cairo_fill(canvas);
  setSource(canvas, state().fill);  // releases the image's pixels
}

bool CGContext::copyRows(const CGRect& rect, const CGImage& image, const cairo_matrix_t& m) {
  if (!image.isOpaque() || !layers_.empty() || m.xy != 0 || m.yx != 0 || m.xx <= 0 || m.yy <= 0) return false;
  const auto x = whole(rect.minX() * m.xx + m.x0), y = whole(rect.minY() * m.yy + m.y0);
  const auto width = whole(rect.width() * m.xx), height = whole(rect.height() * m.yy);
  if (!x || !y || width != static_cast<long>(image.width()) || height != static_cast<long>(image.height()))
    return false;
  cairo_identity_matrix(cairo_.get());
  const CairoHandle<cairo_rectangle_list_t> clip(cairo_copy_clip_rectangle_list(cairo_.get()));
  cairo_set_matrix(cairo_.get(), &m);
  if (clip->status != CAIRO_STATUS_SUCCESS) return false;

  cairo_surface_flush(surface_.get());
  for (int i = 0; i < clip->num_rectangles; ++i) {
    const cairo_rectangle_t& part = clip->rectangles[i];
    const long left = std::max(*x, std::lround(part.x)),
               right = std::min(*x + *width, std::lround(part.x + part.width));
    const long top = std::max(*y, std::lround(part.y)),
               bottom = std::min(*y + *height, std::lround(part.y + part.height));
    if (left >= right) continue;
    const auto bytes = static_cast<std::size_t>(right - left) * 4;
    for (long row = top; row < bottom; ++row) {
      std::memcpy(data_ + static_cast<std::size_t>(row) * bytesPerRow_ + static_cast<std::size_t>(left) * 4,
                  image.pixels() + static_cast<std::size_t>(row - *y) * image.bytesPerRow() +
                      static_cast<std::size_t>(left - *x) * 4,
                  bytes);
    }
  }
  cairo_surface_mark_dirty(surface_.get());
  return true;
}

}  // namespace ios
