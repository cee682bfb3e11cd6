#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CoreGraphics/CGContext.h"
#include "QuartzCore/CALayer.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIResponder.h"

namespace ios {

class UIGestureRecognizer;
class UIViewController;
class UIWindow;

/// How a subview follows when its superview's size changes; a set of bits, the platform's values.
enum UIViewAutoresizing : unsigned {
  UIViewAutoresizingNone = 0,
  UIViewAutoresizingFlexibleLeftMargin = 1 << 0,
  UIViewAutoresizingFlexibleWidth = 1 << 1,
  UIViewAutoresizingFlexibleRightMargin = 1 << 2,
  UIViewAutoresizingFlexibleTopMargin = 1 << 3,
  UIViewAutoresizingFlexibleHeight = 1 << 4,
  UIViewAutoresizingFlexibleBottomMargin = 1 << 5,
};

/// A rectangle of the interface. Coordinates are points, y downwards. A view holds its subviews; the
/// superview, the window and the controller are back references. Main thread.
///
/// Changes of what is shown (frame, colours, contents, the tree) mark the window dirty; a subclass whose
/// drawing changes calls `setNeedsDisplay`.
class UIView : public Subclass<UIView, UIResponder> {
 public:
  explicit UIView(CGRect frame = CGRectZero);
  ~UIView() override;
  static MethodList methods();

  // Geometry. The bounds' origin is what scrolling moves; the transform is applied about the centre.
  CGRect frame() const;
  void setFrame(const CGRect& frame);
  CGRect bounds() const { return bounds_; }
  void setBounds(const CGRect& bounds);
  CGPoint center() const { return center_; }
  void setCenter(CGPoint center);
  const CGAffineTransform& transform() const { return transform_; }
  void setTransform(const CGAffineTransform& transform);
  unsigned autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }
  /// Coordinates of the view's window (of the topmost superview, outside a window) when `view` is null.
  CGPoint convertPointToView(CGPoint point, const UIView* view) const;
  CGPoint convertPointFromView(CGPoint point, const UIView* view) const;
  CGRect convertRectToView(const CGRect& rect, const UIView* view) const;

  // The tree.
  void addSubview(const std::shared_ptr<UIView>& view);
  void insertSubviewAtIndex(const std::shared_ptr<UIView>& view, std::size_t index);
  void bringSubviewToFront(const std::shared_ptr<UIView>& view);
  void removeFromSuperview();
  const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
  std::shared_ptr<UIView> superview() const;
  /// The window it is in; empty when it is in none. A window answers itself.
  virtual std::shared_ptr<UIWindow> window() const;
  bool isDescendantOfView(const UIView& view) const;

  // Looks.
  const std::shared_ptr<UIColor>& backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(std::shared_ptr<UIColor> color);
  CGFloat alpha() const { return alpha_; }
  void setAlpha(CGFloat alpha);
  bool isHidden() const { return hidden_; }
  virtual void setHidden(bool hidden);
  bool clipsToBounds() const { return layer_->masksToBounds; }
  void setClipsToBounds(bool clips);
  /// After changing the layer's fields, call `setNeedsDisplay`.
  const std::shared_ptr<CALayer>& layer() const { return layer_; }
  long tag() const { return tag_; }
  void setTag(long tag) { tag_ = tag; }
  bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
  void setUserInteractionEnabled(bool enabled) { userInteractionEnabled_ = enabled; }
  bool isMultipleTouchEnabled() const { return multipleTouchEnabled_; }
  void setMultipleTouchEnabled(bool enabled) { multipleTouchEnabled_ = enabled; }
  /// The name that assistive tools and drivers use; by default a label's or button's text.
  virtual std::string accessibilityLabel() const { return accessibilityLabel_; }
  void setAccessibilityLabel(std::string label) { accessibilityLabel_ = std::move(label); }
  /// A name for drivers alone, the same in every language; nobody sees or hears it.
  const std::string& accessibilityIdentifier() const { return accessibilityIdentifier_; }
  void setAccessibilityIdentifier(std::string identifier) {
    accessibilityIdentifier_ = std::move(identifier);
  }

  // Layout and drawing.
  void setNeedsLayout();
  void layoutIfNeeded();
  virtual void layoutSubviews() {}
  virtual CGSize sizeThatFits(CGSize size) const {
    (void)size;
    return bounds_.size;
  }
  void setNeedsDisplay();
  /// Draws the view's own content (background and subviews are drawn by the platform) into the current
  /// context, in the view's coordinates.
  virtual void drawRect(const CGRect& rect) { (void)rect; }
  /// Draws what the display shows of this view, subviews included, into `rect` of the current context. With
  /// `afterScreenUpdates` changes that are still pending are laid out and rendered first; without, the last
  /// rendering is used. False when there is no current context.
  bool drawViewHierarchyInRectAfterScreenUpdates(const CGRect& rect, bool afterScreenUpdates);

  // Touches.
  /// The deepest view under `point` (in this view's coordinates) that takes touches; empty if none.
  virtual std::shared_ptr<UIView> hitTest(CGPoint point, const std::shared_ptr<UIEvent>& event);
  virtual bool pointInside(CGPoint point, const std::shared_ptr<UIEvent>& event) const;
  void addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
  void removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
  const std::vector<std::shared_ptr<UIGestureRecognizer>>& gestureRecognizers() const { return recognizers_; }
  /// Asked of the view under the finger when a recogniser, its own or an ancestor's, has found its gesture;
  /// false makes that recogniser fail.
  virtual bool gestureRecognizerShouldBegin(const UIGestureRecognizer& recognizer) const {
    (void)recognizer;
    return true;
  }
  std::shared_ptr<UIResponder> nextResponder() override;

  virtual void didMoveToSuperview() {}
  virtual void didMoveToWindow() {}

  /// Runs `animations` now; frames, centres, bounds, alphas and transforms it sets are shown moving to their
  /// new values over `duration` seconds. `completion` runs on the main thread when they have arrived.
  static void animateWithDuration(double duration, const std::function<void()>& animations,
                                  std::function<void()> completion = nullptr);

 protected:
  /// What is drawn above the subviews, below the border: a scroll view's indicator.
  virtual void drawOverSubviews(const CGContextRef& context) const { (void)context; }

 private:
  friend class UIApplication;
  friend class UITouch;
  friend class UIWindow;
  friend class UIViewController;
  friend class ViewRenderer;
  enum class Animatable { center, bounds, alpha, transform };
  struct Animation;
  struct Shown;
  /// The values on the display: the view's own, or those on the way to them.
  Shown shown() const;
  /// To be called before a value changes: inside an animation it starts from what is shown now.
  void willChange(Animatable property);
  void setSize(CGSize size);
  CGPoint pointToSuperview(CGPoint point) const;
  CGPoint pointFromSuperview(CGPoint point) const;
  void autoresizeSubviews(CGSize oldSize);
  void autoresize(CGSize oldSuperviewSize, CGSize newSuperviewSize);
  void detach();
  void movedToWindow();
  void detachGestureRecognizers();
  // These do nothing unless this is a controller's view.
  void tellControllerOfWindow();
  void tellControllerOfLayout();

  CGRect bounds_;
  CGPoint center_;
  CGAffineTransform transform_;
  CGFloat alpha_ = 1;
  unsigned autoresizingMask_ = UIViewAutoresizingNone;
  bool hidden_ = false;
  bool needsLayout_ = true;
  bool userInteractionEnabled_ = true;
  bool multipleTouchEnabled_ = false;
  long tag_ = 0;
  std::string accessibilityLabel_, accessibilityIdentifier_;
  std::shared_ptr<UIColor> backgroundColor_;
  std::shared_ptr<CALayer> layer_;
  UIView* superview_ = nullptr;  // cleared when that view goes; plain, so that a constructor can add subviews
  std::weak_ptr<UIViewController> controller_;  // set when this is a controller's view
  std::vector<std::shared_ptr<UIView>> subviews_;
  std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers_;
  std::unique_ptr<Animation> animation_;  // what is shown while values are on their way
};

}  // namespace ios
