#pragma once

#include <memory>

#include "UIKit/UIGestureRecognizer.h"

namespace ios {

/// Recognises a number of taps in a row, each with a number of fingers.
class UITapGestureRecognizer : public Subclass<UITapGestureRecognizer, UIGestureRecognizer> {
 public:
  using Subclass::Subclass;
  ~UITapGestureRecognizer() override;
  static MethodList methods() { return {}; }
  unsigned long numberOfTapsRequired() const { return taps_; }
  void setNumberOfTapsRequired(unsigned long taps) { taps_ = taps; }
  unsigned long numberOfTouchesRequired() const { return touches_; }
  void setNumberOfTouchesRequired(unsigned long touches) { touches_ = touches; }
  CGPoint locationInView(const UIView* view) const override;
  /// More taps than `other` takes: both may be made, the shorter one first.
  bool canBePreventedByGestureRecognizer(const UIGestureRecognizer& other) const override;

 protected:
  void touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) override;
  void reset() override;

 private:
  struct Progress;
  void failAfter(double seconds);
  unsigned long taps_ = 1, touches_ = 1;
  std::shared_ptr<Progress> progress_;
};

}  // namespace ios
