#pragma once

#include <cairo.h>

#include <memory>
#include <vector>

#include "CoreGraphics/CGContext.h"

namespace ios {

struct CairoDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* canvas) const { cairo_destroy(canvas); }
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
  void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
  void operator()(cairo_rectangle_list_t* list) const { cairo_rectangle_list_destroy(list); }
};
template <class T>
using CairoHandle = std::unique_ptr<T, CairoDeleter>;

/// A cairo context on a block of pixels, with the platform's state kept beside it.
///
/// The state is kept here too because cairo cannot be told to go on in other memory: a context whose pixels
/// were given away as an image starts over on a copy and is brought to the same state.
class CGContext {
 public:
  /// On memory of the caller's. Empty when cairo cannot draw there (more than 32767 pixels across, for one).
  static CGContextRef onMemory(void* data, std::size_t width, std::size_t height, std::size_t bytesPerRow);
  /// On memory of its own, clear, or black if `opaque`; then nothing that is drawn makes it less than opaque.
  /// Empty for an empty size, for more than CGImage::kMaximumPixels and when there is no memory.
  static CGContextRef withOwnPixels(std::size_t width, std::size_t height, bool opaque);

  /// cairo, set to the current transform and ready to draw; null while nothing can be drawn. Good until the
  /// next call of another operation.
  cairo_t* canvas();
  /// The pixels as they are, without a copy; only of a context with pixels of its own, else empty.
  CGImageRef takeImage();

  void save();
  void restore();
  void beginLayer();
  void endLayer(CGFloat alpha);
  /// Clips to the canvas's path, which is used up.
  void clip();
  void fillPath(const CGColor& color, bool replacing = false);
  void strokePath();
  void drawImage(const CGRect& rect, const CGImage& image);

  struct State {
    CGAffineTransform ctm;
    CGColor fill, stroke;
    CGFloat lineWidth = 1;
    CGInterpolationQuality interpolation = kCGInterpolationDefault;
    /// What was clipped to since the state was saved, in the bitmap's coordinates.
    std::vector<std::shared_ptr<cairo_path_t>> clips;
  };
  State& state() { return states_.back(); }
  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  /// What clearing paints: nothing, or black where that would make an opaque bitmap less than opaque.
  CGColor clearColor() const { return {0, 0, 0, opaque_ && layers_.empty() ? 1.0 : 0.0}; }

 private:
  CGContext() = default;
  bool attach(void* data);
  /// Goes on in a copy of the pixels. False, and nothing has changed, when there is no memory for it.
  bool detachFromTakenImage();
  bool copyRows(const CGRect& rect, const CGImage& image, const cairo_matrix_t& matrix);

  std::size_t width_ = 0, height_ = 0, bytesPerRow_ = 0;
  bool opaque_ = false;
  bool taken_ = false;  // the pixels belong to an image now and must not change
  std::uint8_t* data_ = nullptr;
  std::shared_ptr<std::uint8_t[]> ownPixels_;
  CairoHandle<cairo_surface_t> surface_;
  CairoHandle<cairo_t> cairo_;
  std::vector<State> states_{State{}};
  std::vector<std::size_t> layers_;  // the depth of states at the start of each open layer
};

}  // namespace ios
