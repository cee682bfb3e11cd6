#include "AVFoundation/Private/MoviePicture.h"

#include <libyuv.h>

namespace ios {
namespace {

const std::string kConvert = "convert a picture";

/// How the movie says its colours were coded; older movies that say nothing go by their size, as
/// is the custom.
const libyuv::YuvConstants* coding(const AVFrame& frame) {
  const bool full = frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P;
  const bool high = frame.colorspace == AVCOL_SPC_BT709 ||
                    (frame.colorspace == AVCOL_SPC_UNSPECIFIED && frame.height >= 720 && frame.width >= 1280);
  if (full) return high ? &libyuv::kYuvF709Constants : &libyuv::kYuvJPEGConstants;
  return high ? &libyuv::kYuvH709Constants : &libyuv::kYuvI601Constants;
}

}  // namespace

MediaResult<CGImageRef> imageOf(const AVFrame& frame) {
  const auto width = static_cast<std::size_t>(frame.width), height = static_cast<std::size_t>(frame.height);
  const bool known = frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P;
  if (!known || frame.width <= 0 || frame.height <= 0 || width > CGImage::kMaximumPixels / height) {
    return refused(kConvert, "its pixel format is not supported");
  }
  const std::shared_ptr<std::uint8_t[]> pixels(new std::uint8_t[width * height * 4]);
  // libyuv names formats by the word, least significant byte last: its ARGB is BGRA in memory.
  if (libyuv::I420ToARGBMatrix(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1],
                               frame.data[2], frame.linesize[2], pixels.get(), frame.width * 4, coding(frame),
                               frame.width, frame.height) != 0) {
    return failed(kConvert, AVERROR(EINVAL));
  }
  return std::make_shared<const CGImage>(pixels, width, height, width * 4, true);
}

}  // namespace ios
