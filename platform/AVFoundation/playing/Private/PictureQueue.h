#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "AVFoundation/Private/MediaError.h"
#include "Base/Mutex.h"
#include "CoreGraphics/CGImage.h"
#include "Dispatch/Queue.h"

namespace ios {

class MovieReader;

/// A movie's pictures, decoded a few ahead of whoever shows them, on a queue of its own. The blocks on that
/// queue keep it alive. Any thread.
class PictureQueue : public std::enable_shared_from_this<PictureQueue> {
 public:
  struct Picture {
    double time = 0;  // seconds of movie
    CGImageRef image;
  };
  /// Maximum number of decoded pictures held: as many as a late display refresh or two skips.
  static constexpr std::size_t kAhead = 3;

  /// `find` names the movie's file and is called on the queue. `came`, on the main thread, reports something new: a
  /// picture where there was none, the end, or a failure.
  PictureQueue(std::function<std::optional<std::filesystem::path>()> find, std::function<void()> came);
  ~PictureQueue();

  /// Decodes until enough pictures are ahead.
  void fill();
  /// Drops what was decoded and continues with the picture that is shown at `seconds`.
  void seek(double seconds);
  /// Nothing more is decoded.
  void cancel();

  /// Takes out the newest picture whose time has come by `seconds`; empty when none has.
  std::optional<Picture> takeUntil(double seconds);
  /// Takes out the next picture, whatever its time.
  std::optional<Picture> takeNext();
  /// Whether every picture was taken, and there are no more.
  bool isAtEnd() const;
  /// Why no more pictures come, if something went wrong.
  std::optional<MediaError> failure() const;
  /// Seconds, as the movie says, or to the last picture that was decoded if that is later.
  double duration() const;

 private:
  void decode();
  void keep(const MediaResult<std::optional<Picture>>& decoded, std::uint64_t generation);
  MediaResult<> open();
  /// The next picture; none at the end.
  MediaResult<std::optional<Picture>> next();
  /// The picture that is shown at `seconds`.
  MediaResult<std::optional<Picture>> seekTo(double seconds, std::uint64_t generation);
  /// Whether the result of the current decoding is no longer needed.
  bool isSuperseded(std::uint64_t generation) const;

  const std::function<std::optional<std::filesystem::path>()> find_;
  const std::function<void()> came_;
  const dispatch_queue_t queue_;

  // Used only on the queue.
  std::unique_ptr<MovieReader> reader_;
  std::optional<Picture> held_;  // decoded, not yet due: the picture after the one that was sought

  mutable Mutex mutex_;
  std::deque<Picture> ready_ IOS_GUARDED_BY(mutex_);
  std::optional<double> wanted_ IOS_GUARDED_BY(mutex_);  // a seek that the queue has not made yet
  std::uint64_t generation_ IOS_GUARDED_BY(mutex_) = 0;  // counts seeks: earlier pictures are obsolete
  bool any_ IOS_GUARDED_BY(mutex_) = false;              // whether any picture came
  bool queued_ IOS_GUARDED_BY(mutex_) = false;
  bool ended_ IOS_GUARDED_BY(mutex_) = false;
  bool cancelled_ IOS_GUARDED_BY(mutex_) = false;
  double duration_ IOS_GUARDED_BY(mutex_) = 0;
  std::optional<MediaError> failure_ IOS_GUARDED_BY(mutex_);
};

}  // namespace ios
