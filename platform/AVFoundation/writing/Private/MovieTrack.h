#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "AVFoundation/AVMediaFormat.h"
#include "AVFoundation/Private/FFmpeg.h"
#include "Base/Mutex.h"
#include "CoreMedia/CMSampleBuffer.h"
#include "CoreVideo/CVPixelBuffer.h"

namespace ios {

class MovieWriter;

/// The implementation of a writer's input: takes media on the threads of the application, has it encoded and
/// hands the result to the writer. Its lock is taken before the writer's, never after.
class MovieTrack {
 public:
  virtual ~MovieTrack() = default;
  MovieTrack(const MovieTrack&) = delete;

  /// Hands what is encoded to `writer`, which is not kept alive; `index` is this track's number there.
  void join(std::weak_ptr<MovieWriter> writer, std::size_t index);
  bool isReady() const;
  bool append(const CMSampleBufferRef& buffer);
  bool append(const CVPixelBufferRef& buffer, const CMTime& time);
  void markAsFinished();

  // For the writer, while nothing is appended.

  /// Opens the encoder, where that need not wait for what comes.
  [[nodiscard]] virtual MediaResult<> open() = 0;
  /// Flushes what the encoder still holds.
  [[nodiscard]] MediaResult<> finish(MovieWriter& writer);
  /// How the track is described in the file; known once it has produced a packet.
  const ffmpeg::Stream& description() const { return description_; }

 protected:
  MovieTrack() = default;
  /// `time` counts from the movie's start and is later than the last one; before the start it is negative.
  virtual MediaResult<> take(MovieWriter& writer, const CMSampleBufferRef& buffer, const CMTime& time);
  virtual MediaResult<> take(MovieWriter& writer, const CVPixelBufferRef& buffer, const CMTime& time);
  virtual MediaResult<> flush(MovieWriter& writer) = 0;
  void describe(ffmpeg::Stream description) { description_ = std::move(description); }
  ffmpeg::PacketSink sink(MovieWriter& writer) const;

 private:
  template <class Buffer>
  bool appendAt(const Buffer& buffer, const CMTime& time);

  std::weak_ptr<MovieWriter> writer_;  // set before the track is shared between threads
  std::size_t index_ = 0;
  ffmpeg::Stream description_;
  std::atomic<bool> finished_ = false;
  Mutex mutex_;  // held while a buffer is encoded
  CMTime last_ IOS_GUARDED_BY(mutex_) = kCMTimeInvalid;
};

}  // namespace ios
