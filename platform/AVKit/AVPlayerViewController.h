#pragma once

#include <memory>

#include "AVFoundation/AVPlayer.h"
#include "UIKit/UIViewController.h"

namespace ios {

class PlayerView;

/// Shows a player's movie, as large as its view allows and on black, with controls over it: a play/pause
/// button, the elapsed time and a seek bar. The controls hide a few seconds after playback starts and come
/// back with a tap. It pauses when the application goes to the background. A movie that cannot be played
/// shows a crossed-out sign instead. Main thread.
class AVPlayerViewController : public Subclass<AVPlayerViewController, UIViewController> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  /// Releases the previous player, which keeps playing if somebody else holds it.
  void setPlayer(std::shared_ptr<AVPlayer> player);
  void loadView() override;

 private:
  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<PlayerView> playerView_;
};

}  // namespace ios
