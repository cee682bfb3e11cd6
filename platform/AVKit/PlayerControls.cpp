#include "AVKit/Private/PlayerControls.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "CoreGraphics/CGContext.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIEvent.h"
#include "UIKit/UIGraphics.h"

namespace ios {
namespace {

constexpr CGFloat kStripHeight = 44, kTimeWidth = 48, kLargeSide = 72, kMargin = 8;
constexpr CGColor kWhite{1, 1, 1, 1}, kDim{1, 1, 1, 0.35}, kShade{0, 0, 0, 0.55};

CGPath triangle(CGPoint middle, CGFloat size) {
  // A little to the right of centre, where a triangle looks centred.
  const CGFloat x = middle.x - size * 0.36, half = size / 2;
  CGPath path;
  path.moveTo({x, middle.y - half});
  path.lineTo({x + size * 0.88, middle.y});
  path.lineTo({x, middle.y + half});
  path.close();
  return path;
}

}  // namespace

std::string playerTimeText(double seconds, const std::string& sign) {
  const long whole = std::lround(std::floor(std::max(0.0, seconds)));
  const std::string rest = std::to_string(whole % 60);
  return sign + std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

void PlayButton::setPlaying(bool playing) {
  setAccessibilityLabel(playing ? "Pause" : "Play");
  if (playing == playing_) return;
  playing_ = playing;
  setNeedsDisplay();
}

void PlayButton::drawRect(const CGRect&) {
  const CGContextRef context = UIGraphicsGetCurrentContext();
  CGColor color = kWhite;
  if (isHighlighted()) color.alpha = 0.5;
  CGContextSetFillColorWithColor(context, color);
  const CGPoint middle{bounds().midX(), bounds().midY()};
  const CGFloat size = bounds().height() * 0.42;
  if (playing_) {
    for (const CGFloat side : {-1.0, 1.0}) {
      CGContextFillRect(context, CGRectMake(middle.x + side * size * 0.27 - size * 0.13, middle.y - size / 2,
                                            size * 0.26, size));
    }
  } else {
    CGContextAddPath(context, triangle(middle, size));
    CGContextFillPath(context);
  }
}

void PlayerBar::setShare(double share) {
  share = std::clamp(share, 0.0, 1.0);
  if (share == share_) return;
  share_ = share;
  setNeedsDisplay();
}

void PlayerBar::drawRect(const CGRect&) {
  constexpr CGFloat kThickness = 3, kKnob = 10;
  const CGContextRef context = UIGraphicsGetCurrentContext();
  const CGFloat length = bounds().width() - kKnob, y = bounds().midY();
  const CGRect whole = CGRectMake(bounds().minX() + kKnob / 2, y - kThickness / 2, length, kThickness);
  CGContextSetFillColorWithColor(context, kDim);
  CGContextAddPath(context, CGPath::roundedRect(whole, kThickness / 2));
  CGContextFillPath(context);
  CGContextSetFillColorWithColor(context, kWhite);
  CGRect played = whole;
  played.size.width = length * share_;
  if (played.size.width > kThickness) {
    CGContextAddPath(context, CGPath::roundedRect(played, kThickness / 2));
    CGContextFillPath(context);
  }
  CGContextAddPath(
      context, CGPath::roundedRect(CGRectMake(bounds().minX() + length * share_, y - kKnob / 2, kKnob, kKnob),
                                   kKnob / 2));
  CGContextFillPath(context);
}

void PlayerBar::touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  UIControl::touchesBegan(touches, event);
  follow(touches);
}

void PlayerBar::touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  UIControl::touchesMoved(touches, event);
  follow(touches);
}

void PlayerBar::follow(const UITouches& touches) {
  if (touches.empty() || bounds().width() <= 0) return;
  setShare(touches.front()->locationInView(this).x / bounds().width());
  sendActionsForControlEvents(UIControlEventValueChanged);
}

CannotPlaySign::CannotPlaySign(CGRect frame) : Subclass(frame) {
  setUserInteractionEnabled(false);
  setAccessibilityLabel("Cannot Play");
}

void CannotPlaySign::drawRect(const CGRect&) {
  const CGContextRef context = UIGraphicsGetCurrentContext();
  const CGFloat side = std::min(bounds().width(), bounds().height());
  const CGPoint middle{bounds().midX(), bounds().midY()};
  CGContextSetFillColorWithColor(context, {1, 1, 1, 0.6});
  CGContextAddPath(context, triangle(middle, side * 0.6));
  CGContextFillPath(context);
  CGPath stroke;
  stroke.moveTo({middle.x - side * 0.38, middle.y + side * 0.38});
  stroke.lineTo({middle.x + side * 0.38, middle.y - side * 0.38});
  // First wider and in black, which sets the stroke off from the sign.
  for (const auto& [color, width] :
       {std::pair(CGColor{0, 0, 0, 1}, side * 0.14), std::pair(kWhite, side * 0.06)}) {
    CGContextSetStrokeColorWithColor(context, color);
    CGContextSetLineWidth(context, width);
    CGContextAddPath(context, stroke);
    CGContextStrokePath(context);
  }
}

PlayerControls::PlayerControls(CGRect frame)
    : Subclass(frame),
      strip_(std::make_shared<UIView>()),
      small_(std::make_shared<PlayButton>()),
      large_(std::make_shared<PlayButton>()),
      elapsed_(std::make_shared<UILabel>()),
      remaining_(std::make_shared<UILabel>()),
      bar_(std::make_shared<PlayerBar>()) {
  strip_->setBackgroundColor(
      UIColor::colorWithRedGreenBlueAlpha(kShade.red, kShade.green, kShade.blue, kShade.alpha));
  large_->setBackgroundColor(strip_->backgroundColor());
  large_->layer()->cornerRadius = kLargeSide / 2;
  for (const auto& label : {elapsed_, remaining_}) {
    label->setFont(UIFont::systemFontOfSize(12));
    label->setTextColor(UIColor::whiteColor());
    label->setTextAlignment(TextAlignment::center);
  }
  addSubview(strip_);
  for (const std::shared_ptr<UIView>& view :
       {std::static_pointer_cast<UIView>(small_), std::static_pointer_cast<UIView>(elapsed_),
        std::static_pointer_cast<UIView>(bar_), std::static_pointer_cast<UIView>(remaining_)}) {
    strip_->addSubview(view);
  }
  addSubview(large_);
}

MethodList PlayerControls::methods() {
  return {{"playOrPause", &PlayerControls::playOrPause}, {"moved", &PlayerControls::moved}};
}

void PlayerControls::setPlayer(std::shared_ptr<AVPlayer> player) {
  player_ = std::move(player);
}

// Not in the constructor: registering a target takes a shared reference, which does not exist there yet.
void PlayerControls::connect() {
  if (std::exchange(connected_, true)) return;
  small_->addTarget(shared_from_this(), "playOrPause", UIControlEventTouchUpInside);
  large_->addTarget(shared_from_this(), "playOrPause", UIControlEventTouchUpInside);
  bar_->addTarget(shared_from_this(), "moved", UIControlEventValueChanged);
}

void PlayerControls::layoutSubviews() {
  connect();
  const CGRect box = bounds();
  strip_->setFrame(CGRectMake(box.minX(), box.maxY() - kStripHeight, box.width(), kStripHeight));
  large_->setFrame(
      CGRectMake(box.midX() - kLargeSide / 2, box.midY() - kLargeSide / 2, kLargeSide, kLargeSide));
  small_->setFrame(CGRectMake(0, 0, kStripHeight, kStripHeight));
  elapsed_->setFrame(CGRectMake(kStripHeight, 0, kTimeWidth, kStripHeight));
  remaining_->setFrame(CGRectMake(box.width() - kTimeWidth - kMargin, 0, kTimeWidth, kStripHeight));
  const CGFloat left = kStripHeight + kTimeWidth + kMargin;
  bar_->setFrame(
      CGRectMake(left, 0, std::max(0.0, box.width() - left - kTimeWidth - 2 * kMargin), kStripHeight));
}

bool PlayerControls::pointInside(CGPoint point, const std::shared_ptr<UIEvent>&) const {
  return CGRectContainsPoint(strip_->frame(), point) ||
         (!large_->isHidden() && CGRectContainsPoint(large_->frame(), point));
}

void PlayerControls::update() {
  if (!player_) return;
  const bool playing = player_->rate() > 0;
  small_->setPlaying(playing);
  large_->setPlaying(playing);
  large_->setHidden(playing);
  const double duration = CMTimeGetSeconds(player_->duration()),
               time = CMTimeGetSeconds(player_->currentTime());
  const auto set = [](UILabel& label, std::string text) {
    if (label.text() != text) label.setText(std::move(text));
  };
  set(*elapsed_, playerTimeText(time));
  set(*remaining_, playerTimeText(duration - time, "-"));
  if (duration > 0) bar_->setShare(time / duration);
}

void PlayerControls::playOrPause() {
  if (!player_) return;
  if (player_->rate() > 0) {
    player_->pause();
  } else {
    player_->play();
  }
}

void PlayerControls::moved() {
  if (player_)
    player_->seekToTime(CMTimeMakeWithSeconds(bar_->share() * CMTimeGetSeconds(player_->duration()), 600));
  if (onMove_) onMove_();
}

}  // namespace ios
