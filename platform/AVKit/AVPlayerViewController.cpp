#include "AVKit/AVPlayerViewController.h"

#include <utility>

#include "AVKit/Private/PlayerView.h"

namespace ios {

void AVPlayerViewController::setPlayer(std::shared_ptr<AVPlayer> player) {
  if (player_) player_->setObserver(nullptr);
  player_ = std::move(player);
  if (playerView_) playerView_->setPlayer(player_);
}

void AVPlayerViewController::loadView() {
  playerView_ = std::make_shared<PlayerView>();
  playerView_->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  setView(playerView_);
  playerView_->setPlayer(player_);
}

}  // namespace ios
