#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Foundation/NSBundle.h"
#include "UIKit/UIResponder.h"
#include "UIKit/UIView.h"

namespace ios {

class UINavigationController;
class UITabBarController;
class UISplitViewController;
class UIPopoverPresentationController;
class PresentationController;
enum class PresentationStyle;

/// A screen of the interface: owns a view, made when first asked for. It holds its children and what it
/// presents; parent and presenter are back references. Main thread.
class UIViewController : public Subclass<UIViewController, UIResponder> {
 public:
  UIViewController() = default;
  /// `loadView` takes the view from the interface file of that name in `bundle` (the main bundle
  /// without one), which connects its outlet "view" to it. Without a name, or when the file gives no
  /// view, it makes a plain one.
  UIViewController(std::optional<std::string> nibName, std::shared_ptr<NSBundle> bundle);
  static MethodList methods();

  const std::shared_ptr<UIView>& view();
  bool isViewLoaded() const { return view_ != nullptr; }
  void setView(std::shared_ptr<UIView> view);

  // Life cycle, called by the platform in the platform's order; overriding operations call the inherited one.
  virtual void loadView();
  virtual void viewDidLoad() {}
  virtual void viewWillAppear(bool animated) { (void)animated; }
  virtual void viewDidAppear(bool animated) { (void)animated; }
  virtual void viewWillDisappear(bool animated) { (void)animated; }
  virtual void viewDidDisappear(bool animated) { (void)animated; }
  virtual void viewWillLayoutSubviews() {}
  virtual void didReceiveMemoryWarning() {}

  const std::string& title() const { return title_; }
  void setTitle(std::string title);

  // Containment.
  /// A child of another controller is removed from it first. Making a controller its own ancestor
  /// stops the process.
  void addChildViewController(const std::shared_ptr<UIViewController>& child);
  void removeFromParentViewController();
  const std::vector<std::shared_ptr<UIViewController>>& childViewControllers() const { return children_; }
  std::shared_ptr<UIViewController> parentViewController() const { return parent_.lock(); }
  std::shared_ptr<UINavigationController> navigationController() const;
  std::shared_ptr<UITabBarController> tabBarController() const;

  // Presentation.
  /// Shows `controller` over this one's outermost container, which is recorded as the one that presents.
  /// Refused, with a line on standard error and nothing changed (the completion is not called), when this
  /// controller presents something already, when its view is in no window, when it is being dismissed, when
  /// `controller` is shown somewhere, or when an action sheet on an iPad has no anchor. The completion runs
  /// on the main thread when the transition has ended; without animation, in its next turn.
  void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                             std::function<void()> completion = nullptr);
  /// Dismisses what this controller presents (with all above it) or, if nothing, this controller itself. A
  /// second call only adds its completion; an animated dismissal during the presentation starts after it. The
  /// completion runs on the main thread when the transition has ended; without animation, or with nothing to
  /// dismiss, in its next turn.
  void dismissViewControllerAnimated(bool animated, std::function<void()> completion = nullptr);
  /// What this controller, or else its nearest presenting ancestor, presents; empty if nothing. Set from the
  /// presenting call until the dismissal's transition has ended.
  std::shared_ptr<UIViewController> presentedViewController() const;
  /// The presenter of this controller, or else of its nearest presented ancestor.
  std::shared_ptr<UIViewController> presentingViewController() const;
  bool isBeingPresented() const { return beingPresented_; }
  bool isBeingDismissed() const { return beingDismissed_; }
  /// Anchor and arrows of a popover, created on first use; empty for controllers that are not shown as one.
  std::shared_ptr<UIPopoverPresentationController> popoverPresentationController();

  std::shared_ptr<UIResponder> nextResponder() override;

 protected:
  /// Appearance calls in the platform's order, passed on to children whose views are in this one's. A call
  /// that repeats the current state does nothing.
  void beginAppearanceTransition(bool appearing, bool animated);
  void endAppearanceTransition();
  /// For containers that show `shown` in place of `old` (either may be empty): the children's appearance
  /// calls, as far as the container itself is shown. `shown` goes into the view tree between the two calls,
  /// `old` leaves it.
  void beginExchange(const std::shared_ptr<UIViewController>& old,
                     const std::shared_ptr<UIViewController>& shown, bool animated);
  void endExchange(const std::shared_ptr<UIViewController>& old,
                   const std::shared_ptr<UIViewController>& shown);
  /// The title of a child, or of a child's top screen, has changed.
  virtual void childTitleDidChange() {}

 private:
  friend class UIView;
  friend class UIWindow;
  friend class PresentationController;
  // What a presentation asks: how to show this controller, how large it is where it does not cover all of
  // `available`, and what a tap beside it does.
  virtual PresentationStyle presentationStyle() const;
  virtual CGSize presentedSize(CGSize available) { return available; }
  virtual void tappedBeside() {}
  enum class Appearance { disappeared, appearing, appeared, disappearing };
  /// The outermost container of this controller; the controller itself if it has none.
  std::shared_ptr<UIViewController> outermost();
  /// Why `controller` cannot be presented here now; empty if it can.
  std::string refusal(const std::shared_ptr<UIViewController>& controller);
  void loadPlainView();
  /// The view came into a window or left it other than by a transition of a container or
  /// a presentation.
  void viewMovedToWindow();

  std::shared_ptr<UIView> view_;
  std::optional<std::string> nibName_;
  std::shared_ptr<NSBundle> bundle_;
  std::string title_;
  std::vector<std::shared_ptr<UIViewController>> children_;
  std::weak_ptr<UIViewController> parent_;
  std::shared_ptr<UIViewController> presented_;
  std::weak_ptr<UIViewController> presenting_;
  std::shared_ptr<PresentationController> presentation_;  // the views around a presented controller's view
  std::shared_ptr<UIPopoverPresentationController> popover_;
  Appearance appearance_ = Appearance::disappeared;
  bool transitionAnimated_ = false;
  bool beingPresented_ = false;
  bool beingDismissed_ = false;
};

}  // namespace ios
