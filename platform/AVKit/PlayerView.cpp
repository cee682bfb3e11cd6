#include "AVKit/Private/PlayerView.h"

#include <utility>

#include "CoreGraphics/CGContext.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Time.h"
#include "Foundation/NSNotificationCenter.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UITapGestureRecognizer.h"

namespace ios {
namespace {

constexpr double kControlsStay = 3;  // seconds after the last touch, while it plays
constexpr double kFade = 0.25;
constexpr CGFloat kSignSide = 64;

}  // namespace

PlayerPicture::PlayerPicture() {
  setContentMode(UIViewContentMode::scaleAspectFit);
}

void PlayerPicture::setPlaying(bool playing) {
  if (playing == std::exchange(playing_, playing)) return;
  setNeedsDisplay();
}

void PlayerPicture::drawRect(const CGRect& rect) {
  // The finest interpolation takes the main thread longer than one refresh of the display.
  CGContextSetInterpolationQuality(UIGraphicsGetCurrentContext(),
                                   playing_ ? kCGInterpolationLow : kCGInterpolationHigh);
  UIImageView::drawRect(rect);
}

PlayerView::PlayerView(CGRect frame)
    : Subclass(frame),
      picture_(std::make_shared<PlayerPicture>()),
      sign_(std::make_shared<CannotPlaySign>()),
      controls_(std::make_shared<PlayerControls>()) {
  setBackgroundColor(UIColor::blackColor());
  setClipsToBounds(true);
  sign_->setHidden(true);
  addSubview(picture_);
  addSubview(sign_);
  addSubview(controls_);
}

MethodList PlayerView::methods() {
  return {{"tapped", &PlayerView::tapped}, {"unseen", &PlayerView::unseen}};
}

void PlayerView::setPlayer(std::shared_ptr<AVPlayer> player) {
  player_ = std::move(player);
  controls_->setPlayer(player_);
  if (player_) {
    const std::weak_ptr<PlayerView> weak = sharedAs<PlayerView>();
    player_->setObserver([weak] {
      if (const auto self = weak.lock()) self->update();
    });
  }
  update();
}

void PlayerView::layoutSubviews() {
  if (!std::exchange(recognizes_, true)) {
    addGestureRecognizer(std::make_shared<UITapGestureRecognizer>(shared_from_this(), "tapped"));
    NSNotificationCenter::defaultCenter()->addObserver(shared_from_this(), "unseen",
                                                       UIApplicationDidEnterBackgroundNotification, nullptr);
    // The delay runs from the last touch, so that they do not hide under the finger.
    const std::weak_ptr<PlayerView> weak = sharedAs<PlayerView>();
    controls_->setOnMove([weak] {
      const auto self = weak.lock();
      if (!self || !self->wasPlaying_) return;
      self->showControls(true);
      self->hideControlsLater();
    });
  }
  picture_->setFrame(bounds());
  controls_->setFrame(bounds());
  sign_->setFrame(
      CGRectMake(bounds().midX() - kSignSide / 2, bounds().midY() - kSignSide / 2, kSignSide, kSignSide));
}

void PlayerView::update() {
  const bool failed = player_ && player_->status() == AVPlayerStatusFailed;
  const bool ready = player_ && player_->status() == AVPlayerStatusReadyToPlay;
  sign_->setHidden(!failed);
  controls_->setHidden(!ready);
  const CGImageRef image = player_ && !failed ? player_->currentPicture() : nullptr;
  const auto& shown = picture_->image();
  if (image != (shown ? shown->CGImageValue() : nullptr))
    picture_->setImage(image ? std::make_shared<UIImage>(image, 1) : nullptr);
  controls_->update();
  const bool playing = player_ && player_->rate() > 0;
  picture_->setPlaying(playing);
  if (playing == std::exchange(wasPlaying_, playing)) return;
  showControls(true);
  if (playing) hideControlsLater();
}

void PlayerView::unseen() {
  if (player_) player_->pause();
}

void PlayerView::tapped() {
  showControls(controls_->alpha() <= 0);
  if (controls_->alpha() > 0 && wasPlaying_) hideControlsLater();
}

void PlayerView::showControls(bool shown) {
  ++hiding_;
  if ((controls_->alpha() > 0) == shown) return;
  controls_->setUserInteractionEnabled(shown);
  UIView::animateWithDuration(kFade, [this, shown] { controls_->setAlpha(shown ? 1 : 0); });
}

void PlayerView::hideControlsLater() {
  const std::weak_ptr<PlayerView> weak = sharedAs<PlayerView>();
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, static_cast<std::int64_t>(kControlsStay * 1e9)),
                 dispatch_get_main_queue(), [weak, wish = hiding_] {
                   const auto self = weak.lock();
                   if (self && self->hiding_ == wish && self->wasPlaying_) self->showControls(false);
                 });
}

}  // namespace ios
