#pragma once

#include <functional>
#include <memory>
#include <string>

#include "CoreGraphics/CGImage.h"
#include "CoreMedia/CMTime.h"
#include "Foundation/NSError.h"
#include "Foundation/NSURL.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class PictureQueue;
class CADisplayLink;
class PlayedSound;

enum AVPlayerStatus : long {
  AVPlayerStatusUnknown = 0,
  AVPlayerStatusReadyToPlay = 1,
  AVPlayerStatusFailed = 2,
};

/// Posted, with the player as its object, when it has played to the end.
inline const std::string AVPlayerItemDidPlayToEndTimeNotification =
    "AVPlayerItemDidPlayToEndTimeNotification";

/// Plays a movie: a file, or a movie of the photo library ("assets-library://asset/asset.MP4?id=…&ext=MP4").
/// Pictures are decoded on a queue of the player's own, a few ahead; sound goes to the machine's sound output
/// in real time, where there is one. Made and used on the main thread; it may be released in any state, on
/// any thread.
class AVPlayer : public Subclass<AVPlayer, NSObject> {
 public:
  /// Begins to read. What cannot be read or played becomes `AVPlayerStatusFailed`, soon after.
  static std::shared_ptr<AVPlayer> playerWithURL(const NSURL& url);
  AVPlayer();
  ~AVPlayer() override;
  static MethodList methods() { return {}; }

  /// Unknown until the first picture is there.
  AVPlayerStatus status() const { return status_; }
  /// Why it failed; empty otherwise.
  const std::shared_ptr<NSError>& error() const { return error_; }

  /// Plays from the current time; from the beginning if that is the end.
  void play();
  void pause();
  /// 1 while it plays, else 0.
  float rate() const { return playing_ ? 1 : 0; }
  CMTime currentTime() const;
  /// Zero until the status is known.
  CMTime duration() const;
  /// A time before the beginning or past the end is clamped. Playback continues from there.
  void seekToTime(const CMTime& time);

  /// The movie's picture at the current time: the last whose time has come. Empty until the first is there.
  const CGImageRef& currentPicture() const { return picture_; }
  /// Called on the main thread when the picture, the status or the rate has changed, and now and then while playback
  /// goes on without a new picture.
  void setObserver(std::function<void()> changed) { changed_ = std::move(changed); }

 private:
  class Ticker;
  double position() const;
  void picturesCame();
  void refresh();
  void setPlaying(bool playing);
  void arriveAtEnd();
  void tell();

  std::shared_ptr<PictureQueue> pictures_;
  std::shared_ptr<CADisplayLink> link_;  // while it plays
  std::unique_ptr<PlayedSound> sound_;   // while it plays
  NSURL url_;
  AVPlayerStatus status_ = AVPlayerStatusUnknown;
  std::shared_ptr<NSError> error_;
  CGImageRef picture_;
  bool playing_ = false;
  bool sought_ = false;      // the picture of the new position has not come yet
  double standsAt_ = 0;      // seconds of movie, while it does not play or when it began to
  double playingSince_ = 0;  // on the device's clock
  double toldAt_ = 0;        // seconds of movie
  std::function<void()> changed_;
};

}  // namespace ios
