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
/// The state is kept here too because cairo cannot move to other memory: a context whose pixels were given
/// away as an image starts over on a copy and restores its state there.
class CGContext {
 public:
  /// On the caller's memory. Empty when cairo cannot draw there (for example, more than 32767 pixels across).
  static CGContextRef onMemory(void* data, std::size_t width, std::size_t height, std::size_t bytesPerRow);
  /// On memory of its own, clear, or black if `opaque`; then it stays opaque whatever is drawn. Empty
  /// when out of memory.
  static CGContextRef withOwnPixels(std::size_t width, std::size_t height, bool opaque);

  /// cairo, set to the current transform and ready to draw; null while nothing can be drawn. Valid until
  /// another operation is called.
  cairo_t* canvas();
  /// The pixels as they are; its own are not copied until it is drawn into again. Empty when out of memory.
  CGImageRef makeImage();

  void save();
  void restore();
  void beginLayer();
  void endLayer(CGFloat alpha);
  /// Clips to the canvas's path and clears that.
  void clip();
  void fillPath(const CGColor& color, bool replacing = false);
  void strokePath();
  void drawImage(const CGRect& rect, const CGImage& image);

  struct State {
    CGAffineTransform ctm;
    CGColor fill, stroke;
    CGFloat lineWidth = 1;
    CGInterpolationQuality interpolation = kCGInterpolationDefault;
    /// The clips applied since the state was saved, in the bitmap's coordinates.
    std::vector<std::shared_ptr<cairo_path_t>> clips;
  };
  State& state() { return states_.back(); }
  /// What clearing paints: transparency, or black in a bitmap that must stay opaque.
  CGColor clearColor() const { return {0, 0, 0, opaque_ && layers_.empty() ? 1.0 : 0.0}; }

 private:
  CGContext() = default;
  bool attach(void* data);
  /// Continues in a copy of the pixels. False, with nothing changed, when there is no memory for it.
  bool detachFromTakenImage();
  bool copyRows(const CGRect& rect, const CGImage& image, const cairo_matrix_t& matrix);

  std::size_t width_ = 0, height_ = 0, bytesPerRow_ = 0;
  bool opaque_ = false;
  bool taken_ = false;  // an image shares the pixels, so they must not change
  std::uint8_t* data_ = nullptr;
  std::shared_ptr<std::uint8_t[]> ownPixels_;
  CairoHandle<cairo_surface_t> surface_;
  CairoHandle<cairo_t> cairo_;
  std::vector<State> states_{State{}};
  std::vector<std::size_t> layers_;  // the depth of states at the start of each open layer
};

}  // namespace ios
