#include "UIKit/Private/BackingStore.h"

#include <cmath>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include "CoreGraphics/CGContext.h"
#include "UIKit/Private/ViewRenderer.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIWindow.h"

namespace ios {
namespace {

constexpr std::size_t kLargestSide = 16384;

/// When the display's newest refresh began.
Clock::Instant lastRefresh(Clock::Instant now) {
  return Clock::refresh(Clock::newestRefresh(now));
}

}  // namespace

/// Memory for renderings of one size. Images give theirs back on whichever thread releases them last; the
/// lock orders their reading before the next drawing.
class BackingStore::PixelPool : public std::enable_shared_from_this<PixelPool> {
 public:
  explicit PixelPool(std::size_t size) : size_(size) {}
  std::size_t size() const { return size_; }

  std::shared_ptr<std::uint8_t[]> take() {
    std::unique_ptr<std::uint8_t[]> memory;
    {
      std::lock_guard lock(mutex_);
      memory = std::move(spare_);
    }
    if (!memory) memory.reset(new std::uint8_t[size_]);
    return {memory.release(), [pool = shared_from_this()](std::uint8_t* pixels) { pool->giveBack(pixels); }};
  }

 private:
  void giveBack(std::uint8_t* pixels) {
    std::unique_ptr<std::uint8_t[]> memory(pixels);
    std::lock_guard lock(mutex_);
    if (!spare_) spare_.swap(memory);
  }
  const std::size_t size_;
  std::mutex mutex_;
  std::unique_ptr<std::uint8_t[]> spare_;
};

BackingStore::BackingStore() = default;
BackingStore::~BackingStore() = default;

void BackingStore::markDirty() {
  if (!dirtySince_) dirtySince_ = Clock::shared().now();
}

CGImageRef BackingStore::image(UIWindow& window, bool afterScreenUpdates) {
  const CGFloat scale = UIScreen::mainScreen()->scale();
  const CGSize size = window.bounds().size;
  const auto width = static_cast<std::size_t>(std::lround(std::min(size.width * scale, 1e6)));
  const auto height = static_cast<std::size_t>(std::lround(std::min(size.height * scale, 1e6)));
  if (width == 0 || height == 0 || width > kLargestSide || height > kLargestSide) return nullptr;
  // A view that asks for the window's picture while it is being drawn gets the previous one.
  if (rendering_) return image_;

  const bool fits = image_ && image_->width() == width && image_->height() == height;
  const bool due = dirtySince_ && (afterScreenUpdates || *dirtySince_ <= lastRefresh(Clock::shared().now()));
  if (!fits || due) render(window, width, height, scale);
  return image_;
}

void BackingStore::render(UIWindow& window, std::size_t width, std::size_t height, CGFloat scale) {
  window.layoutIfNeeded();
  // Whatever fails, nothing is left half done: the next one to ask begins anew.
  struct Rendering {
    explicit Rendering(bool& flag) : flag(flag) { flag = true; }
    ~Rendering() { flag = false; }
    bool& flag;
  };

  const std::size_t bytesPerRow = width * 4;
  const std::size_t size = bytesPerRow * height;
  image_.reset();
  if (!pool_ || pool_->size() != size) pool_ = std::make_shared<PixelPool>(size);
  auto pixels = pool_->take();
  const auto& background = window.backgroundColor();
  // The background must reach every pixel: a row or column that it covers in part would show
  // what was there before.
  const CGSize points = window.bounds().size;
  const bool wholePixels = std::abs(points.width * scale - static_cast<CGFloat>(width)) < 1e-6 &&
                           std::abs(points.height * scale - static_cast<CGFloat>(height)) < 1e-6;
  const bool opaque =
      wholePixels && background && background->CGColorValue().alpha >= 1 && window.layer()->cornerRadius <= 0;
  if (!opaque) std::memset(pixels.get(), 0, size);

  const CGContextRef context =
      CGBitmapContextCreate(pixels.get(), width, height, 8, bytesPerRow, CGColorSpaceCreateDeviceRGB(),
                            kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Little);
  const CGRect bounds = window.bounds();
  CGContextTranslateCTM(context, 0, static_cast<CGFloat>(height));
  CGContextScaleCTM(context, scale, -scale);
  CGContextTranslateCTM(context, -bounds.origin.x, -bounds.origin.y);
  {
    const Rendering rendering(rendering_);
    // What changes from here on is not in this picture.
    const auto dirtySince = std::exchange(dirtySince_, std::nullopt);
    try {
      ViewRenderer(context).drawContents(window, bounds);
    } catch (...) {
      dirtySince_ = dirtySince;
      throw;
    }
  }
  image_ = std::make_shared<const CGImage>(std::move(pixels), width, height, bytesPerRow, opaque);
}

}  // namespace ios
