#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/Private/MovieTrack.h"
#include "AVFoundation/Private/PacketSpool.h"
#include "Base/Mutex.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"

namespace ios {

/// The implementation of an asset writer: the states, the tracks and the file. Any thread; encoding happens in the
/// tracks, this keeps their packets and assembles the movie in the end.
class MovieWriter : public std::enable_shared_from_this<MovieWriter> {
 public:
  MovieWriter(std::filesystem::path path, std::string container);

  AVAssetWriterStatus status() const { return status_; }
  std::shared_ptr<NSError> error() const;
  const std::string& container() const { return container_; }

  /// Before writing; false afterwards.
  bool addTrack(const std::shared_ptr<MovieTrack>& track);
  /// Makes `start` fail with this error.
  void refuseStart(const MediaError& reason);
  /// Whether a failure leaves the movie of what was encoded before it.
  void keepWhatThereIs(bool keep);
  bool start();
  void startSession(const CMTime& time);
  void finish(std::function<void()> handler);
  void cancel();
  /// The writer's owner is gone: cancels unless it is finishing.
  void abandon();

  // For tracks.

  bool accepts() const { return status_ == AVAssetWriterStatusWriting && !finishing_; }
  std::optional<CMTime> sessionStart() const;
  [[nodiscard]] MediaResult<> write(std::size_t track, AVPacket& packet);
  void fail(const MediaError& reason);

 private:
  struct Track {
    std::shared_ptr<MovieTrack> media;
    std::size_t packets = 0;
  };
  MediaResult<> prepare() IOS_REQUIRES(mutex_);
  /// Assembles the movie from what was encoded, unless nothing is to be kept. On the writer's queue.
  void complete();
  MediaResult<> finishTracks();
  /// Assembles the movie.
  MediaResult<> assemble() IOS_REQUIRES(mutex_);
  void setStatus(AVAssetWriterStatus status, std::shared_ptr<NSError> error);
  void end(AVAssetWriterStatus status, std::shared_ptr<NSError> error) IOS_REQUIRES(mutex_);

  const std::filesystem::path path_;
  const std::string container_;
  const dispatch_queue_t queue_;
  std::atomic<AVAssetWriterStatus> status_ = AVAssetWriterStatusUnknown;
  std::atomic<bool> finishing_ = false;

  mutable Mutex errorMutex_;  // held only for copying
  std::shared_ptr<NSError> error_ IOS_GUARDED_BY(errorMutex_);
  std::optional<CMTime> sessionStart_ IOS_GUARDED_BY(errorMutex_);

  mutable Mutex mutex_;  // held while a packet is stored, and while the movie is assembled
  std::vector<Track> tracks_ IOS_GUARDED_BY(mutex_);
  std::optional<MediaError> refusal_ IOS_GUARDED_BY(mutex_);
  bool keepsWhatThereIs_ IOS_GUARDED_BY(mutex_) = false;
  Clock::WallTime begun_ IOS_GUARDED_BY(mutex_);
  std::unique_ptr<PacketSpool> spool_ IOS_GUARDED_BY(mutex_);  // while there is something to complete
};

}  // namespace ios
