#include "AVFoundation/MovieWriter+Private.h"

#include <utility>

#include "AVFoundation/MovieFile+Private.h"

namespace ios {
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
  tracks_.push_back({track});
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
  if (auto failure = MovieFile::checkFree(path_)) return failure;
  begun_ = Clock::shared().wallTime();
  MediaFailure failure;
  spool_ = PacketSpool::create(path_, failure);
  for (auto& track : tracks_) {
    if (!failure) failure = track.media->open();
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
  const auto problem = assemble();
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
  spool_ = nullptr;
}

MediaFailure MovieWriter::write(std::size_t track, AVPacket& packet) {
  MutexLock lock(mutex_);
  if (!spool_) return std::nullopt;  // it ended meanwhile; the next append will tell
  ++tracks_[track].packets;
  return spool_->append(track, packet);
}

MediaFailure MovieWriter::assemble() {
  MediaFailure failure;
  const auto file = MovieFile::create(path_, container_, begun_, failure);
  if (failure) return failure;
  std::vector<int> streams;  // the file's numbers of the tracks that have anything
  int count = 0;
  for (const Track& track : tracks_) {
    streams.push_back(track.packets > 0 ? count++ : -1);
    if (track.packets == 0) continue;
    if ((failure = file->addStream(track.media->description()))) return failure;
  }
  if (count == 0) return MediaError::refusal("complete the movie", "nothing was appended");
  if ((failure = file->start())) return failure;
  failure =
      spool_->drain([&](std::size_t track, AVPacket& packet) { return file->write(streams[track], packet); });
  return failure ? failure : file->complete();
}

}  // namespace ios
