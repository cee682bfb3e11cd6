#pragma once

#include <functional>
#include <memory>

#include "Foundation/NSData.h"
#include "Tellvane/Platform.h"
#include "UIKit/UIImage.h"

namespace tellvane {

/// Takes a still image of the key window, as JPEG, and keeps it until the next one. Main thread; nothing is
/// written to storage.
class CaptureScreenshot : public Subclass<CaptureScreenshot, NSObject> {
 public:
  static const std::shared_ptr<CaptureScreenshot>& shared();
  static MethodList methods();

  /// Captures the screen now. Without a key window, an image or a byte from the encoder,
  /// the kept image stays.
  void saveCurrentScreenshot();
  /// The kept JPEG bytes, not a copy; empty before the first capture.
  std::shared_ptr<NSData> getSavedScreenshot() const { return screenshot_; }

 private:
  void resizeImage(const std::shared_ptr<UIImage>& image);
  std::shared_ptr<NSData> screenshot_;
};

/// The largest encoding, from quality 1.0 downwards in steps of 0.1, that has at most `maximumSize` bytes;
/// when every one is larger, the last. The steps are subtracted in the precision of `Number`, which
/// decides how many there are: eleven with a 64-bit number, ten with a 32-bit one. Empty as soon as
/// `encode` gives nothing.
template <class Number>
std::shared_ptr<NSData> encodeWithin(std::size_t maximumSize,
                                     const std::function<std::shared_ptr<NSData>(Number quality)>& encode) {
  constexpr auto kStep = static_cast<Number>(0.1);
  Number quality = 1;
  auto data = encode(quality);
  while (data && data->length() > maximumSize && quality >= kStep) {
    quality -= kStep;
    data = encode(quality);
  }
  return data;
}

}  // namespace tellvane
