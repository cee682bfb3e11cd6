#include <libyuv.h>

#include <cstring>
#include <utility>
#include <vector>

#include "AVFoundation/Private/PictureConverter.h"

namespace ios {
namespace {

const std::string kConvert = "convert a picture";

class LockedForReading {
 public:
  explicit LockedForReading(const CVPixelBufferRef& buffer) : buffer_(buffer) {
    CVPixelBufferLockBaseAddress(buffer_, kReading);
  }
  ~LockedForReading() { CVPixelBufferUnlockBaseAddress(buffer_, kReading); }
  LockedForReading(const LockedForReading&) = delete;

 private:
  static constexpr CVPixelBufferLockFlags kReading = 1;
  const CVPixelBufferRef& buffer_;
};

/// Repeats the last column and row of `plane` where the picture, `width` by `height`, falls short
/// of the frame.
void repeatEdges(std::uint8_t* plane, int stride, const CVPixelSize& picture, const CVPixelSize& frame) {
  if (frame.width > picture.width) {
    for (std::size_t row = 0; row < picture.height; ++row) {
      std::uint8_t* end = plane + row * static_cast<std::size_t>(stride) + picture.width;
      *end = end[-1];
    }
  }
  if (frame.height > picture.height) {
    std::uint8_t* last = plane + picture.height * static_cast<std::size_t>(stride);
    std::memcpy(last, last - stride, frame.width);
  }
}

}  // namespace

CVPixelSize PictureConverter::evenSize(const CVPixelSize& size) {
  return {(size.width + 1) / 2 * 2, (size.height + 1) / 2 * 2};
}

MediaResult<bool> PictureConverter::convert(const CVPixelBufferRef& buffer) {
  IOS_TRY(prepareSpare());
  IOS_TRY(fillSpare(buffer));
  // The encoder's own pictures are compared: they are less than half of the buffer, and what does not show in
  // them does not count as a change.
  const bool changed = !current_ || !spareEqualsCurrent();
  std::swap(current_, spare_);
  return changed;
}

MediaResult<> PictureConverter::prepareSpare() {
  if (!spare_) {
    spare_.reset(av_frame_alloc());
    if (!spare_) return failed(kConvert, AVERROR(ENOMEM));
    const CVPixelSize even = evenSize(size_);
    spare_->format = AV_PIX_FMT_YUV420P;
    spare_->width = static_cast<int>(even.width);
    spare_->height = static_cast<int>(even.height);
    return checked(kConvert, av_frame_get_buffer(spare_.get(), 0));
  }
  return checked(kConvert, av_frame_make_writable(spare_.get()));
}

MediaResult<> PictureConverter::fillSpare(const CVPixelBufferRef& buffer) {
  const LockedForReading lock(buffer);
  const auto* pixels = static_cast<const std::uint8_t*>(CVPixelBufferGetBaseAddress(buffer));
  int stride = static_cast<int>(CVPixelBufferGetBytesPerRow(buffer));
  const CVPixelSize drawn{CVPixelBufferGetWidth(buffer), CVPixelBufferGetHeight(buffer)};
  const int width = static_cast<int>(size_.width), height = static_cast<int>(size_.height);
  if (drawn != size_) {
    stretched_.resize(size_.width * size_.height * 4);
    if (libyuv::ARGBScale(pixels, stride, static_cast<int>(drawn.width), static_cast<int>(drawn.height),
                          stretched_.data(), width * 4, width, height, libyuv::kFilterBox) != 0) {
      return failed(kConvert, AVERROR(ENOMEM));
    }
    pixels = stretched_.data();
    stride = width * 4;
  }
  // libyuv names formats by the word, least significant byte last: its ARGB is BGRA in memory.
  if (libyuv::ARGBToI420(pixels, stride, spare_->data[0], spare_->linesize[0], spare_->data[1],
                         spare_->linesize[1], spare_->data[2], spare_->linesize[2], width, height) != 0) {
    return failed(kConvert, AVERROR(EINVAL));
  }
  repeatEdges(spare_->data[0], spare_->linesize[0], size_, evenSize(size_));
  return {};
}

bool PictureConverter::spareEqualsCurrent() const {
  for (int plane = 0; plane < 3; ++plane) {
    const int width = plane == 0 ? current_->width : current_->width / 2;
    const int height = plane == 0 ? current_->height : current_->height / 2;
    for (int row = 0; row < height; ++row) {
      if (std::memcmp(current_->data[plane] + row * current_->linesize[plane],
                      spare_->data[plane] + row * spare_->linesize[plane],
                      static_cast<std::size_t>(width)) != 0) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace ios
