#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "AVFoundation/AVPlayer.h"
#include "UIKit/UIControl.h"
#include "UIKit/UILabel.h"

namespace ios {

/// A triangle or two bars: what a tap will do.
class PlayButton : public Subclass<PlayButton, UIControl> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  void setPlaying(bool playing);
  void drawRect(const CGRect& rect) override;

 private:
  bool playing_ = false;
};

/// How much of a movie has been played; a finger moves along it.
class PlayerBar : public Subclass<PlayerBar, UIControl> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  double share() const { return share_; }
  void setShare(double share);
  void drawRect(const CGRect& rect) override;
  /// Send UIControlEventValueChanged, with `share` set.
  void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;

 private:
  void follow(const UITouches& touches);
  double share_ = 0;
};

/// Shown where a movie cannot be played: the play sign, crossed out.
class CannotPlaySign : public Subclass<CannotPlaySign, UIView> {
 public:
  explicit CannotPlaySign(CGRect frame = CGRectZero);
  static MethodList methods() { return {}; }
  void drawRect(const CGRect& rect) override;
};

/// The strip at the lower edge, and the large button in the middle while nothing plays. Always left to right,
/// as such controls are in every language.
class PlayerControls : public Subclass<PlayerControls, UIView> {
 public:
  explicit PlayerControls(CGRect frame = CGRectZero);
  static MethodList methods();
  void setPlayer(std::shared_ptr<AVPlayer> player);
  void update();
  /// Called when a finger has moved along the bar.
  void setOnMove(std::function<void()> moved) { onMove_ = std::move(moved); }
  void layoutSubviews() override;
  /// Touches beside the controls go to the picture.
  bool pointInside(CGPoint point, const std::shared_ptr<UIEvent>& event) const override;

 private:
  void playOrPause();
  void moved();
  void connect();

  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<UIView> strip_;
  std::shared_ptr<PlayButton> small_, large_;
  std::shared_ptr<UILabel> elapsed_, remaining_;
  std::shared_ptr<PlayerBar> bar_;
  std::function<void()> onMove_;
  bool connected_ = false;
};

/// "1:05", with a sign in front.
std::string playerTimeText(double seconds, const std::string& sign = "");

}  // namespace ios
