#include "AVFoundation/Private/MovieWriter.h"

#include <utility>

#include "AVFoundation/Private/MovieFile.h"

namespace ios {
namespace {

const std::string kStart = "start the movie", kComplete = "complete the movie";

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
  tracks_.push_back({track});
  return true;
}

void MovieWriter::refuseStart(const MediaError& reason) {
  MutexLock lock(mutex_);
  if (!refusal_) refusal_ = reason;
}

void MovieWriter::keepWhatThereIs(bool keep) {
  MutexLock lock(mutex_);
  keepsWhatThereIs_ = keep;
}

bool MovieWriter::start() {
  MutexLock lock(mutex_);
  if (status_ != AVAssetWriterStatusUnknown) return false;
  const auto prepared = withinMemory(kStart, [this]() IOS_REQUIRES(mutex_) { return prepare(); });
  if (!prepared) {
    end(AVAssetWriterStatusFailed, prepared.error().asError());
    return false;
  }
  status_ = AVAssetWriterStatusWriting;
  return true;
}

MediaResult<> MovieWriter::prepare() {
  if (refusal_) return failure(*refusal_);
  if (tracks_.empty()) return refused(kStart, "it has no input");
  IOS_TRY(MovieFile::checkFree(path_));
  begun_ = Clock::shared().wallTime();
  spool_ = IOS_TRY(PacketSpool::create(path_));
  for (auto& track : tracks_) IOS_TRY(track.media->open());
  return {};
}

void MovieWriter::startSession(const CMTime& time) {
  if (!accepts()) return;
  if (!CMTIME_IS_NUMERIC(time)) {
    fail({"start the session", 0, "the time is not a number"});
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
  const auto finished = withinMemory(kComplete, [this] { return finishTracks(); });
  if (!finished) fail(finished.error());
  MutexLock lock(mutex_);
  if (!spool_) return;
  const auto assembled = withinMemory(kComplete, [this]() IOS_REQUIRES(mutex_) { return assemble(); });
  spool_ = nullptr;
  if (status_ != AVAssetWriterStatusWriting) return;  // the movie is what was encoded before the failure
  end(assembled ? AVAssetWriterStatusCompleted : AVAssetWriterStatusFailed,
      assembled ? nullptr : assembled.error().asError());
}

MediaResult<> MovieWriter::finishTracks() {
  std::vector<std::shared_ptr<MovieTrack>> tracks;
  {
    MutexLock lock(mutex_);
    for (const auto& track : tracks_) tracks.push_back(track.media);
  }
  MediaResult<> outcome;
  for (const auto& track : tracks) {
    auto finished = track->finish(*this);
    if (outcome) outcome = std::move(finished);
  }
  return outcome;
}

void MovieWriter::cancel() {
  MutexLock lock(mutex_);
  if (status_ == AVAssetWriterStatusWriting) end(AVAssetWriterStatusCancelled, nullptr);
}

void MovieWriter::abandon() {
  if (finishing_) return;
  cancel();
  MutexLock lock(mutex_);
  spool_ = nullptr;
}

void MovieWriter::fail(const MediaError& reason) {
  MutexLock lock(mutex_);
  if (status_ != AVAssetWriterStatusWriting) return;
  if (!keepsWhatThereIs_) return end(AVAssetWriterStatusFailed, reason.asError());
  setStatus(AVAssetWriterStatusFailed, reason.asError());
  // Queued behind the failed append, which holds its track's lock.
  if (!finishing_) dispatch_async(queue_, [self = shared_from_this()] { self->complete(); });
}

void MovieWriter::end(AVAssetWriterStatus status, std::shared_ptr<NSError> error) {
  setStatus(status, std::move(error));
  spool_ = nullptr;
}

void MovieWriter::setStatus(AVAssetWriterStatus status, std::shared_ptr<NSError> error) {
  {
    MutexLock lock(errorMutex_);
    error_ = std::move(error);
  }
  status_ = status;  // after the error: whoever sees the status finds the reason
}

MediaResult<> MovieWriter::write(std::size_t track, AVPacket& packet) {
  MutexLock lock(mutex_);
  if (!spool_) return {};  // it ended meanwhile; the next append will tell
  ++tracks_[track].packets;
  return spool_->append(track, packet);
}

MediaResult<> MovieWriter::assemble() {
  const auto file = IOS_TRY(MovieFile::create(path_, container_, begun_));
  std::vector<int> streams;  // the file's track numbers, of tracks that have media
  int count = 0;
  for (const Track& track : tracks_) {
    streams.push_back(track.packets > 0 ? count++ : -1);
    if (track.packets == 0) continue;
    IOS_TRY(file->addStream(track.media->description()));
  }
  if (count == 0) return refused(kComplete, "nothing was appended");
  IOS_TRY(file->start());
  IOS_TRY(spool_->drain(
      [&](std::size_t track, AVPacket& packet) { return file->write(streams[track], packet); }));
  return file->complete();
}

}  // namespace ios
