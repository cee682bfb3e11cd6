#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "simulator/live/Display.h"

namespace simulator {

/// A movie of the screen while it is made: of the phone's time, with a picture for each change, at most thirty a second.
/// It has the first picture's size; a phone that is turned is fitted into it. Main thread.
class ScreenMovie {
 public:
  using Time = std::chrono::nanoseconds;
  /// Begins a new file, which appears when the movie is complete; empty if that cannot be, with the reason.
  static std::unique_ptr<ScreenMovie> begin(const std::filesystem::path& file, Display::Shape shape, Time now,
                                            std::string& problem);

  /// What the screen shows from now on: BGRA, all rows without gaps.
  void show(std::span<const std::uint8_t> pixels, Display::Shape shape, Time now);
  /// Completes it; what was wrong, if anything. A movie that goes before that leaves nothing.
  std::string end(Time now);

 private:
  ScreenMovie() = default;
  void draw(std::span<const std::uint8_t> pixels, Display::Shape shape);
  void append(Time time);

  std::shared_ptr<ios::AVAssetWriter> writer_;
  std::shared_ptr<ios::AVAssetWriterInput> input_;
  std::shared_ptr<ios::AVAssetWriterInputPixelBufferAdaptor> adaptor_;
  ios::CVPixelBufferRef picture_;
  Time last_{-1};
  bool pending_ = false;  // the picture has changed since it was appended
};

}  // namespace simulator
