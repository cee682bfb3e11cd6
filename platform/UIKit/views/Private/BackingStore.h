#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "CoreGraphics/CGGeometry.h"
#include "CoreGraphics/CGImage.h"
#include "DeviceClock/Clock.h"

namespace ios {

class UIWindow;

/// The rendering of one window, at the screen's scale.
///
/// Each rendering is an image that never changes: while somebody holds the last one, the next is
/// drawn into other memory; otherwise the memory is reused. Main thread; the images may be read and
/// released on any thread.
class BackingStore {
 public:
  BackingStore();
  ~BackingStore();

  void markDirty();
  /// The window's picture. With `afterScreenUpdates` all changes are laid out and drawn first; without, it is
  /// what the display shows, which draws at its refreshes: a change made after the last refresh may be
  /// missing. Empty for a window without a size, or one larger than any screen.
  CGImageRef image(UIWindow& window, bool afterScreenUpdates);

 private:
  class PixelPool;
  void render(UIWindow& window, std::size_t width, std::size_t height, CGFloat scale);

  std::shared_ptr<PixelPool> pool_;
  CGImageRef image_;
  std::optional<Clock::Instant> dirtySince_;  // empty: nothing has changed
  bool rendering_ = false;
};

}  // namespace ios
