#include "AVFoundation/MovieTrack+Private.h"

#include <utility>

#include "AVFoundation/MovieWriter+Private.h"

namespace ios {
namespace {

const std::string kAppend = "append to the movie";

// Eleven days; far from what a file can count.
constexpr double kLongestMovie = 1e6;

MediaFailure wrongMedia() {
  return MediaError::refusal(kAppend, "the input takes another kind of media");
}

}  // namespace

void MovieTrack::join(std::weak_ptr<MovieWriter> writer, std::size_t index) {
  writer_ = std::move(writer);
  index_ = index;
}

bool MovieTrack::isReady() const {
  const auto writer = writer_.lock();
  return writer && !finished_ && writer->accepts();
}

bool MovieTrack::append(const CMSampleBufferRef& buffer) {
  return appendAt(buffer, CMSampleBufferGetPresentationTimeStamp(buffer));
}

bool MovieTrack::append(const CVPixelBufferRef& buffer, const CMTime& time) {
  return appendAt(buffer, time);
}

template <class Buffer>
bool MovieTrack::appendAt(const Buffer& buffer, const CMTime& time) {
  const auto writer = writer_.lock();
  if (!writer || !buffer) return false;
  MutexLock lock(mutex_);
  if (finished_ || !writer->accepts()) return false;
  const auto failure = [&]() IOS_REQUIRES(mutex_) -> MediaFailure {
    const auto start = writer->sessionStart();
    if (!start) return MediaError::refusal(kAppend, "the session has not been started");
    if (!CMTIME_IS_NUMERIC(time)) return MediaError::refusal(kAppend, "the time is no number");
    if (CMTIME_IS_VALID(last_) && CMTimeCompare(time, last_) <= 0) {
      return MediaError::refusal(kAppend, "the time is not later than the last one");
    }
    last_ = time;
    const CMTime offset = CMTimeSubtract(time, *start);
    if (!CMTIME_IS_NUMERIC(offset) || CMTimeGetSeconds(offset) > kLongestMovie) {
      return MediaError::refusal(kAppend, "the time is out of range");
    }
    return take(*writer, buffer, offset);
  }();
  if (!failure) return true;
  writer->fail(*failure);
  return false;
}

void MovieTrack::markAsFinished() {
  finished_ = true;
  MutexLock lock(mutex_);
}

MediaFailure MovieTrack::finish(MovieWriter& writer) {
  finished_ = true;
  MutexLock lock(mutex_);
  return flush(writer);
}

MediaFailure MovieTrack::take(MovieWriter&, const CMSampleBufferRef&, const CMTime&) {
  return wrongMedia();
}
MediaFailure MovieTrack::take(MovieWriter&, const CVPixelBufferRef&, const CMTime&) {
  return wrongMedia();
}

ffmpeg::PacketSink MovieTrack::sink(MovieWriter& writer) const {
  return [&writer, index = index_](AVPacket& packet) { return writer.write(index, packet); };
}

}  // namespace ios
