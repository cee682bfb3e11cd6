#pragma once

#include <memory>

#include "AVFoundation/AVPlayer.h"
#include "UIKit/UIViewController.h"

namespace ios {

class PlayerView;

/// Shows a player's movie, as large as its view allows and on black, with controls over it: play and pause,
/// where it stands, a bar to move along. The controls go a few seconds after playing began and come back with
/// a tap. It pauses when the application goes to the background. A movie that cannot be played shows a
/// crossed-out sign instead. Main thread.
class AVPlayerViewController : public Subclass<AVPlayerViewController, UIViewController> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  /// The earlier player is let go; it plays on if somebody else holds it.
  void setPlayer(std::shared_ptr<AVPlayer> player);
  void loadView() override;

 private:
  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<PlayerView> playerView_;
};

}  // namespace ios
