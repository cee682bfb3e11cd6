#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/Colour.h"

namespace testing_support {

/// A decoded picture.
struct Picture {
  std::size_t width = 0, height = 0;
  std::vector<std::uint8_t> pixels;  // blue, green, red
  Colour at(std::size_t x, std::size_t y) const;
};

/// A movie as ffprobe and ffmpeg see it, which share only the format with the writer. Any complaint of
/// theirs fails the test.
class MovieProbe {
 public:
  explicit MovieProbe(std::filesystem::path path) : path_(std::move(path)) {}

  /// A fact about the first stream of pictures ('v') or sound ('a'): "codec_name",
  /// "nb_frames". Empty without one.
  std::string fact(char kind, const std::string& name) const;
  double number(char kind, const std::string& name) const;
  /// Presentation times, in seconds.
  std::vector<double> times(char kind) const;
  std::vector<long> sizes(char kind) const;
  /// The largest number of pictures from one key picture to the next.
  std::size_t longestKeyInterval() const;
  std::vector<Picture> pictures() const;
  /// Sound from the movie's time zero on, in frames of `rate`, mixed to one channel unless
  /// `channels` says otherwise.
  std::vector<std::int16_t> sound(int rate = 44100, int channels = 1) const;

 private:
  std::vector<std::string> packets(char kind, const std::string& entry) const;
  std::string run(const std::string& command) const;
  const std::filesystem::path path_;
};

/// Where sound first becomes loud, in seconds; negative if nowhere.
double onset(const std::vector<std::int16_t>& sound, int rate = 44100);
/// The frequency of a pure tone between two times, from its zero crossings.
double frequency(const std::vector<std::int16_t>& sound, double from, double to, int rate = 44100);

}  // namespace testing_support
