#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "CoreVideo/CVPixelBuffer.h"
#include "support/MovieProbe.h"
#include "support/ScratchFolder.h"

namespace testing_support {

/// A device in virtual time with a folder for movies. One per process.
class Studio {
 public:
  Studio();

  const ScratchFolder& folder() const { return folder_; }
  std::filesystem::path path(const std::string& name = "movie.mov") const {
    return folder_.path() / "movies" / name;
  }
  /// Names of what lies beside the movies.
  std::vector<std::string> files() const;

 private:
  ScratchFolder folder_;
};

struct MovieOptions {
  std::string name = "movie.mov";
  double width = 64, height = 64;
  double bitRate = 629145.6;
  bool pictures = true, sound = false;
  std::optional<ios::NSDictionary> soundSettings = std::nullopt;
  ios::CMTime start = ios::kCMTimeZero;
  bool started = true;
};

ios::NSDictionary pictureSettings(double width, double height, double bitRate = 629145.6);
ios::NSDictionary aacSettings(double rate = 44100, int channels = 1);

/// A movie being written.
struct Movie {
  Movie(const Studio& studio, const MovieOptions& options = {});
  std::shared_ptr<ios::AVAssetWriter> writer;
  std::shared_ptr<ios::AVAssetWriterInput> pictures, sound;
  std::shared_ptr<ios::AVAssetWriterInputPixelBufferAdaptor> adaptor;

  /// Appends one at `seconds` after the start, in whole milliseconds.
  bool append(const ios::CVPixelBufferRef& picture, double seconds) const;
  bool append(std::vector<std::int16_t> samples, const ios::CMTime& time,
              const ios::CMAudioFormat& format = {}) const;
  /// Finishes and waits for it; returns how often the handler was called in all.
  int finish() const;
  /// The error's text; empty without one.
  std::string problem() const;
  MovieProbe probe() const { return MovieProbe(writer->outputURL().filePath()); }

 private:
  ios::CMTime start_;
};

/// A picture whose pixels `paint` says.
ios::CVPixelBufferRef picture(std::size_t width, std::size_t height,
                              const std::function<Colour(std::size_t x, std::size_t y)>& paint);
ios::CVPixelBufferRef plain(std::size_t width, std::size_t height, const Colour& colour);
/// `frames` frames of a tone, from frame `position` on.
std::vector<std::int16_t> tone(double hertz, std::size_t frames, std::size_t position = 0, int rate = 44100,
                               int channels = 1);

}  // namespace testing_support
