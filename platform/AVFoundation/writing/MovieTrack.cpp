#include "AVFoundation/Private/MovieTrack.h"

#include <utility>

#include "AVFoundation/Private/MovieWriter.h"

namespace ios {
namespace {

const std::string kAppend = "append to the movie";

// Eleven days; far from what a file can count.
constexpr double kLongestMovie = 1e6;

tl::unexpected<MediaError> wrongMedia() {
  return refused(kAppend, "the input takes another kind of media");
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
  const auto taken = withinMemory(kAppend, [&]() IOS_REQUIRES(mutex_) -> MediaResult<> {
    const auto start = writer->sessionStart();
    if (!start) return refused(kAppend, "the session has not been started");
    if (!CMTIME_IS_NUMERIC(time)) return refused(kAppend, "the time is not a number");
    if (CMTIME_IS_VALID(last_) && CMTimeCompare(time, last_) <= 0) {
      return refused(kAppend, "the time is not later than the last one");
    }
    last_ = time;
    const CMTime offset = CMTimeSubtract(time, *start);
    if (!CMTIME_IS_NUMERIC(offset) || CMTimeGetSeconds(offset) > kLongestMovie) {
      return refused(kAppend, "the time is out of range");
    }
    return take(*writer, buffer, offset);
  });
  if (!taken) writer->fail(taken.error());
  return taken.has_value();
}

void MovieTrack::markAsFinished() {
  finished_ = true;
  MutexLock lock(mutex_);
}

MediaResult<> MovieTrack::finish(MovieWriter& writer) {
  finished_ = true;
  MutexLock lock(mutex_);
  return withinMemory(kAppend, [&]() IOS_REQUIRES(mutex_) { return flush(writer); });
}

MediaResult<> MovieTrack::take(MovieWriter&, const CMSampleBufferRef&, const CMTime&) {
  return wrongMedia();
}
MediaResult<> MovieTrack::take(MovieWriter&, const CVPixelBufferRef&, const CMTime&) {
  return wrongMedia();
}

ffmpeg::PacketSink MovieTrack::sink(MovieWriter& writer) const {
  return [&writer, index = index_](AVPacket& packet) { return writer.write(index, packet); };
}

}  // namespace ios
