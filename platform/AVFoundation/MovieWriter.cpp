#include "AVFoundation/MovieWriter+Private.h"

#include <algorithm>
#include <utility>

#include "AVFoundation/SoundEncoder+Private.h"

namespace ios {
namespace {

// A file's head names its tracks, so it waits for the first buffer of sound whose format nobody told; but not
// for more than some seconds of picture.
constexpr std::size_t kMostWaiting = 1 << 20;
// What sound that has not come by then will be like: the device's own.
constexpr CMAudioFormat kDeviceSound{44100, 1};

}  // namespace

MovieWriter::MovieWriter(std::filesystem::path path, std::string container)
    : path_(std::move(path)),
      container_(std::move(container)),
      queue_(dispatch_queue_create("AVAssetWriter")) {}

std::shared_ptr<NSError> MovieWriter::error() const {
  MutexLock lock(errorMutex_);
  return error_;
}

std::optional<CMTime> MovieWriter::sessionStart() const {
  MutexLock lock(errorMutex_);
  return sessionStart_;
}

bool MovieWriter::addTrack(const std::shared_ptr<MovieTrack>& track) {
  MutexLock lock(mutex_);
  if (status_ != AVAssetWriterStatusUnknown) return false;
  track->join(weak_from_this(), tracks_.size());
  tracks_.push_back({track, {}, -1});
  return true;
}

void MovieWriter::refuseStart(const MediaError& reason) {
  MutexLock lock(mutex_);
  if (!refusal_) refusal_ = reason;
}

bool MovieWriter::start() {
  MutexLock lock(mutex_);
  if (status_ != AVAssetWriterStatusUnknown) return false;
  if (const auto failure = prepare()) {
    end(AVAssetWriterStatusFailed, failure->asError());
    return false;
  }
  status_ = AVAssetWriterStatusWriting;
  return true;
}

MediaFailure MovieWriter::prepare() {
  if (refusal_) return refusal_;
  if (tracks_.empty()) return MediaError::refusal("start the movie", "it has no input");
  MediaFailure failure;
  file_ = MovieFile::create(path_, container_, failure);
  for (auto& track : tracks_) {
    if (!failure) failure = track.media->open(track.description);
  }
  return failure;
}

void MovieWriter::startSession(const CMTime& time) {
  if (!accepts()) return;
  if (!CMTIME_IS_NUMERIC(time)) {
    fail(MediaError::refusal("start the session", "the time is no number"));
    return;
  }
  MutexLock lock(errorMutex_);
  if (!sessionStart_) sessionStart_ = time;
}

void MovieWriter::finish(std::function<void()> handler) {
  const bool completes = status_ == AVAssetWriterStatusWriting && !finishing_.exchange(true);
  dispatch_async(queue_, [self = shared_from_this(), handler = std::move(handler), completes] {
    if (completes) self->complete();
    if (handler) handler();
  });
}

void MovieWriter::complete() {
  // Not under the lock: what the encoders still hold comes in through `write`.
  const auto failure = finishTracks();
  if (failure) fail(*failure);
  MutexLock lock(mutex_);
  if (status_ != AVAssetWriterStatusWriting) return;
  auto problem = fileStarted_ ? std::nullopt : startFile();
  if (!problem) problem = file_->complete();
  end(problem ? AVAssetWriterStatusFailed : AVAssetWriterStatusCompleted,
      problem ? problem->asError() : nullptr);
}

MediaFailure MovieWriter::finishTracks() {
  std::vector<std::shared_ptr<MovieTrack>> tracks;
  {
    MutexLock lock(mutex_);
    for (const auto& track : tracks_) tracks.push_back(track.media);
  }
  MediaFailure failure;
  for (const auto& track : tracks) {
    if (!failure) failure = track->finish(*this);
  }
  return failure;
}

void MovieWriter::cancel() {
  MutexLock lock(mutex_);
  if (status_ == AVAssetWriterStatusWriting) end(AVAssetWriterStatusCancelled, nullptr);
}

void MovieWriter::abandon() {
  if (!finishing_) cancel();
}

void MovieWriter::fail(const MediaError& reason) {
  MutexLock lock(mutex_);
  if (status_ == AVAssetWriterStatusWriting) end(AVAssetWriterStatusFailed, reason.asError());
}

void MovieWriter::end(AVAssetWriterStatus status, std::shared_ptr<NSError> error) {
  {
    MutexLock lock(errorMutex_);
    error_ = std::move(error);
  }
  status_ = status;  // after the error: who sees it failed finds out why
  file_ = nullptr;
  waiting_.clear();
}

CMAudioFormat MovieWriter::settlePlainFormat(std::size_t track, const CMAudioFormat& first) {
  MutexLock lock(mutex_);
  if (fileStarted_) return kDeviceSound;
  tracks_[track].description = SoundEncoder::plainStream(first);
  return first;
}

bool MovieWriter::everyTrackIsKnown() const {
  return std::all_of(tracks_.begin(), tracks_.end(),
                     [](const Track& track) { return track.description.parameters != nullptr; });
}

MediaFailure MovieWriter::write(std::size_t track, AVPacket& packet) {
  MutexLock lock(mutex_);
  if (!file_) return std::nullopt;  // it ended meanwhile; the next append will tell
  if (fileStarted_) return file_->write(tracks_[track].stream, packet);

  waiting_.push_back({track, ffmpeg::Packet(av_packet_clone(&packet))});
  if (!waiting_.back().packet) return failed("write to the movie", AVERROR(ENOMEM));
  waitingBytes_ += static_cast<std::size_t>(packet.size);
  if (everyTrackIsKnown()) return startFile();
  if (waitingBytes_ < kMostWaiting) return std::nullopt;
  for (auto& each : tracks_) {
    if (!each.description.parameters) each.description = SoundEncoder::plainStream(kDeviceSound);
  }
  return startFile();
}

MediaFailure MovieWriter::startFile() {
  if (waiting_.empty()) return MediaError::refusal("complete the movie", "nothing was appended");
  int streams = 0;
  for (auto& track : tracks_) {
    if (!track.description.parameters) continue;  // of sound that never came
    if (auto failure = file_->addStream(track.description)) return failure;
    track.stream = streams++;
  }
  if (auto failure = file_->start()) return failure;
  fileStarted_ = true;
  for (auto& each : std::exchange(waiting_, {})) {
    if (auto failure = file_->write(tracks_[each.track].stream, *each.packet)) return failure;
  }
  return std::nullopt;
}

}  // namespace ios
