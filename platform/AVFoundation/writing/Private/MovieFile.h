#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/MediaError.h"
#include "Base/FileDescriptor.h"
#include "DeviceClock/Clock.h"

namespace ios {

/// A movie file that is assembled from encoded media: under a hidden name beside its path until `complete`
/// has succeeded; gone without a trace if that never happens. Used by one thread at a time.
class MovieFile {
 public:
  /// Creates the file. `container` is FFmpeg's name of the format; `begun` the time the movie was begun at.
  /// Fails if a file exists at `path`.
  static MediaResult<std::unique_ptr<MovieFile>> create(const std::filesystem::path& path,
                                                        const std::string& container, Clock::WallTime begun);
  ~MovieFile();

  /// Declares a track; its number is the count of those before it. Before `start`.
  [[nodiscard]] MediaResult<> addStream(const ffmpeg::Stream& stream);
  [[nodiscard]] MediaResult<> start();
  /// `packet` in the units that the track was declared with; its times within a track increase.
  [[nodiscard]] MediaResult<> write(int stream, AVPacket& packet);
  [[nodiscard]] MediaResult<> complete();
  /// Fails if there is something at `path` already.
  [[nodiscard]] static MediaResult<> checkFree(const std::filesystem::path& path);

 private:
  MovieFile(std::filesystem::path path, std::filesystem::path temporary);
  static int writeBytes(void* self, std::uint8_t* bytes, int count);
  static std::int64_t seek(void* self, std::int64_t offset, int whence);
  /// FFmpeg's result, or the disk error behind it, which FFmpeg may report only later.
  MediaResult<> outcome(const std::string& operation, int result) const;

  const std::filesystem::path path_, temporary_;
  FileDescriptor file_;
  std::int64_t position_ = 0, size_ = 0;
  ffmpeg::IOContext io_;
  ffmpeg::FormatContext format_;  // destroyed before the I/O it writes through
  std::vector<AVRational> timeBases_;
};

}  // namespace ios
