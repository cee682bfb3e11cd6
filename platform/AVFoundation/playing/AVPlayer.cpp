#include "AVFoundation/AVPlayer.h"

#include <algorithm>
#include <utility>

#include "AVFoundation/Private/PictureQueue.h"
#include "AVFoundation/Private/PlayedSound.h"
#include "DeviceClock/Clock.h"
#include "Foundation/NSNotificationCenter.h"
#include "Foundation/NSRunLoop.h"
#include "Photos/AssetsLibraryURL.h"
#include "QuartzCore/CADisplayLink.h"

namespace ios {
namespace {

constexpr CMTimeScale kTimescale = 600;  // customary for movies
// How long a movie plays without a new picture before the observer is notified.
constexpr double kStillness = 0.1;

std::optional<std::filesystem::path> movieAt(const NSURL& url) {
  if (url.isFileURL()) return url.filePath();
  return movieOfAsset(url);
}

}  // namespace

/// Stands between the display link, which keeps its target alive, and the player, which may be destroyed at any time.
class AVPlayer::Ticker : public Subclass<Ticker, NSObject> {
 public:
  explicit Ticker(std::weak_ptr<AVPlayer> player) : player_(std::move(player)) {}
  static MethodList methods() { return {{"tick", &Ticker::tick}}; }

 private:
  void tick() {
    if (const auto player = player_.lock()) player->refresh();
  }
  const std::weak_ptr<AVPlayer> player_;
};

AVPlayer::AVPlayer() : url_(NSURL::fileURLWithPath("/")) {}

AVPlayer::~AVPlayer() {
  if (pictures_) pictures_->cancel();
  if (link_) link_->invalidate();
}

std::shared_ptr<AVPlayer> AVPlayer::playerWithURL(const NSURL& url) {
  auto player = std::make_shared<AVPlayer>();
  const std::weak_ptr<AVPlayer> weak = player;
  player->url_ = url;
  player->pictures_ = std::make_shared<PictureQueue>([url] { return movieAt(url); },
                                                     [weak] {
                                                       if (const auto self = weak.lock())
                                                         self->picturesCame();
                                                     });
  player->pictures_->fill();
  return player;
}

double AVPlayer::position() const {
  if (!playing_ || status_ != AVPlayerStatusReadyToPlay) return standsAt_;
  return std::min(standsAt_ + Clock::shared().secondsNow() - playingSince_, pictures_->duration());
}

CMTime AVPlayer::currentTime() const {
  // The conversion truncates: a time that rounding left just short of a unit still counts as that unit.
  return CMTimeMakeWithSeconds(position() + 1e-6, kTimescale);
}

CMTime AVPlayer::duration() const {
  return CMTimeMakeWithSeconds(pictures_ ? pictures_->duration() : 0, kTimescale);
}

void AVPlayer::play() {
  if (playing_ || status_ == AVPlayerStatusFailed || !pictures_) return;
  if (status_ == AVPlayerStatusReadyToPlay && position() >= pictures_->duration()) seekToTime(kCMTimeZero);
  setPlaying(true);
  tell();
}

void AVPlayer::pause() {
  if (!playing_) return;
  setPlaying(false);
  // The next picture may have become due since the display's last refresh. Not so for the first one, which makes the
  // player ready.
  if (status_ == AVPlayerStatusReadyToPlay && !sought_) {
    if (auto newest = pictures_->takeUntil(standsAt_)) {
      picture_ = std::move(newest->image);
      pictures_->fill();
    }
  }
  tell();
}

void AVPlayer::setPlaying(bool playing) {
  standsAt_ = position();
  playingSince_ = Clock::shared().secondsNow();
  playing_ = playing;
  if (link_) std::exchange(link_, nullptr)->invalidate();
  sound_ = nullptr;
  if (!playing) return;
  sound_ = PlayedSound::start([url = url_] { return movieAt(url); }, standsAt_);
  link_ = CADisplayLink::displayLinkWithTarget(std::make_shared<Ticker>(sharedAs<AVPlayer>()), "tick");
  link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
}

void AVPlayer::seekToTime(const CMTime& time) {
  if (!pictures_ || status_ == AVPlayerStatusFailed || !CMTIME_IS_NUMERIC(time)) return;
  const bool playing = playing_;
  if (playing) setPlaying(false);
  standsAt_ = std::clamp(CMTimeGetSeconds(time), 0.0, pictures_->duration());
  sought_ = true;
  pictures_->seek(standsAt_);
  if (playing) setPlaying(true);
  tell();
}

void AVPlayer::picturesCame() {
  if (status_ == AVPlayerStatusFailed) return;
  if (const auto failure = pictures_->failure()) {
    if (playing_) setPlaying(false);
    error_ = failure->asError();
    status_ = AVPlayerStatusFailed;
    tell();
    return;
  }
  // The first picture, and the one after a seek, is shown whether or not it plays.
  if (!picture_ || sought_) {
    auto first = pictures_->takeNext();
    if (!first) {
      // After a seek to where the movie has no picture nothing comes: the shown picture stays.
      if (pictures_->isAtEnd()) sought_ = false;
      return;
    }
    picture_ = std::move(first->image);
    sought_ = false;
    // Asked to play before there was anything to play: it begins now.
    if (status_ == AVPlayerStatusUnknown && playing_) setPlaying(true);
    status_ = AVPlayerStatusReadyToPlay;
    pictures_->fill();
    tell();
  }
}

void AVPlayer::refresh() {
  if (status_ != AVPlayerStatusReadyToPlay || sought_) return;
  const double time = position();
  if (auto newest = pictures_->takeUntil(time)) {
    picture_ = std::move(newest->image);
    pictures_->fill();
    tell();
  } else if (time - toldAt_ >= kStillness) {
    tell();
  }
  if (pictures_->isAtEnd() && time >= pictures_->duration()) arriveAtEnd();
}

void AVPlayer::arriveAtEnd() {
  setPlaying(false);
  standsAt_ = pictures_->duration();
  const auto self = sharedAs<AVPlayer>();
  tell();
  NSNotificationCenter::defaultCenter()->postNotificationName(AVPlayerItemDidPlayToEndTimeNotification, self);
}

void AVPlayer::tell() {
  toldAt_ = position();
  // Copied: the callback may replace itself.
  if (const auto changed = changed_) changed();
}

}  // namespace ios
