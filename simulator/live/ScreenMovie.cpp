#include "simulator/live/ScreenMovie.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "AVFoundation/AVVideoSettings.h"
#include "DeviceClock/Clock.h"

namespace simulator {
namespace {

constexpr ScreenMovie::Time kBetweenPictures = std::chrono::nanoseconds(1'000'000'000 / 30);
constexpr double kBitsPerSecond = 4e6;
constexpr std::size_t kPixel = 4;

ios::CMTime mediaTime(ScreenMovie::Time time) {
  return ios::CMTimeMake(time.count() / 1000, 1'000'000);
}

std::string reasonOf(const std::shared_ptr<ios::NSError>& error) {
  return error ? error->localizedDescription() : "the movie could not be written";
}

}  // namespace

std::unique_ptr<ScreenMovie> ScreenMovie::begin(const std::filesystem::path& file, Display::Shape shape,
                                                Time now, std::string& problem) {
  std::unique_ptr<ScreenMovie> movie(new ScreenMovie);
  std::shared_ptr<ios::NSError> error;
  movie->writer_ = ios::AVAssetWriter::initWithURL(
      ios::NSURL::fileURLWithPath(file),
      file.extension() == ".mp4" ? ios::AVFileTypeMPEG4 : ios::AVFileTypeQuickTimeMovie, error);
  movie->input_ = ios::AVAssetWriterInput::initWithMediaType(
      ios::AVMediaTypeVideo,
      ios::NSDictionary{{ios::AVVideoCodecKey, ios::AVVideoCodecH264},
                        {ios::AVVideoWidthKey, static_cast<double>(shape.width)},
                        {ios::AVVideoHeightKey, static_cast<double>(shape.height)},
                        {ios::AVVideoCompressionPropertiesKey,
                         ios::NSDictionary{{ios::AVVideoAverageBitRateKey, kBitsPerSecond}}}});
  movie->adaptor_ =
      ios::AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(movie->input_, std::nullopt);
  ios::CVPixelBufferCreate(static_cast<std::size_t>(shape.width), static_cast<std::size_t>(shape.height),
                           ios::kCVPixelFormatType_32BGRA, {}, movie->picture_);
  if (movie->writer_ && movie->picture_) {
    movie->writer_->addInput(movie->input_);
    if (movie->writer_->startWriting()) {
      movie->writer_->startSessionAtSourceTime(mediaTime(now));
      return movie;
    }
    error = movie->writer_->error();
  }
  problem = reasonOf(error);
  return nullptr;
}

void ScreenMovie::show(std::span<const std::uint8_t> pixels, Display::Shape shape, Time now) {
  // The last picture of a moment that has more than one to show is the one that stays.
  if (pending_ && now - last_ >= kBetweenPictures) append(last_ + kBetweenPictures);
  draw(pixels, shape);
  pending_ = true;
  if (last_ < Time::zero() || now - last_ >= kBetweenPictures) append(now);
}

/// Into the picture, with bars beside it if it is of another shape.
void ScreenMovie::draw(std::span<const std::uint8_t> pixels, Display::Shape shape) {
  const auto width = static_cast<int>(ios::CVPixelBufferGetWidth(picture_));
  const auto height = static_cast<int>(ios::CVPixelBufferGetHeight(picture_));
  if (pixels.size() < static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height) * kPixel)
    return;
  ios::CVPixelBufferLockBaseAddress(picture_, 0);
  auto* const rows = static_cast<std::uint8_t*>(ios::CVPixelBufferGetBaseAddress(picture_));
  const std::size_t stride = ios::CVPixelBufferGetBytesPerRow(picture_);
  const double scale =
      std::min({static_cast<double>(width) / shape.width, static_cast<double>(height) / shape.height, 1.0});
  const int shownWidth = static_cast<int>(shape.width * scale),
            shownHeight = static_cast<int>(shape.height * scale);
  const int left = (width - shownWidth) / 2, top = (height - shownHeight) / 2;
  for (int y = 0; y < height; ++y) {
    std::uint8_t* const row = rows + static_cast<std::size_t>(y) * stride;
    const bool within = y >= top && y < top + shownHeight;
    if (!within || shownWidth != width) std::memset(row, 0, static_cast<std::size_t>(width) * kPixel);
    if (!within) continue;
    const auto sourceRow =
        static_cast<std::size_t>((y - top) / scale) * static_cast<std::size_t>(shape.width);
    const std::uint8_t* const source = pixels.data() + sourceRow * kPixel;
    if (shownWidth == shape.width) {
      std::memcpy(row + static_cast<std::size_t>(left) * kPixel, source,
                  static_cast<std::size_t>(shownWidth) * kPixel);
      continue;
    }
    for (int x = 0; x < shownWidth; ++x)
      std::memcpy(row + static_cast<std::size_t>(left + x) * kPixel,
                  source + static_cast<std::size_t>(x / scale) * kPixel, kPixel);
  }
  ios::CVPixelBufferUnlockBaseAddress(picture_, 0);
}

void ScreenMovie::append(Time time) {
  adaptor_->appendPixelBuffer(picture_, mediaTime(time));
  last_ = time;
  pending_ = false;
}

std::string ScreenMovie::end(Time now) {
  // Once more at the end, so that the movie lasts as long as was recorded.
  if (now > last_) append(now);
  const auto done = std::make_shared<std::atomic<bool>>(false);  // the writer may answer after the wait
  writer_->finishWritingWithCompletionHandler([done] { *done = true; });
  constexpr std::chrono::seconds kLongest{60};
  const auto finished = ios::Clock::shared().runUntil([&] { return done->load(); }, kLongest);
  if (!finished) return "the movie was not completed: " + finished.pending;
  return writer_->status() == ios::AVAssetWriterStatusCompleted ? "" : reasonOf(writer_->error());
}

}  // namespace simulator
