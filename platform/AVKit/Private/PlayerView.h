#pragma once

#include <memory>

#include "AVFoundation/AVPlayer.h"
#include "AVKit/Private/PlayerControls.h"
#include "UIKit/UIImageView.h"

namespace ios {

/// A movie's picture, replaced many times a second while the movie plays.
class PlayerPicture : public Subclass<PlayerPicture, UIImageView> {
 public:
  PlayerPicture();
  static MethodList methods() { return {}; }
  void setPlaying(bool playing);
  void drawRect(const CGRect& rect) override;

 private:
  bool playing_ = false;
};

/// What a player shows, and the controls over it.
class PlayerView : public Subclass<PlayerView, UIView> {
 public:
  explicit PlayerView(CGRect frame = CGRectZero);
  static MethodList methods();
  void setPlayer(std::shared_ptr<AVPlayer> player);
  void layoutSubviews() override;

 private:
  void tapped();
  /// Called when the application went to the background and nobody watches.
  void unseen();
  void update();
  void showControls(bool shown);
  void hideControlsLater();

  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<PlayerPicture> picture_;
  std::shared_ptr<CannotPlaySign> sign_;
  std::shared_ptr<PlayerControls> controls_;
  bool wasPlaying_ = false;
  bool recognizes_ = false;
  unsigned hiding_ = 0;  // counts, so that only the newest request to hide applies
};

}  // namespace ios
