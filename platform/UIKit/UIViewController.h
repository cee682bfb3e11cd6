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

enum class UIModalPresentationStyle : long { fullScreen = 0, pageSheet = 1, formSheet = 2, popover = 7 };

/// A screen of the interface: owns a view, made when first asked for. It holds its children and what it presents;
/// parent and presenter are back references. Main thread.
class UIViewController : public Subclass<UIViewController, UIResponder> {
 public:
  UIViewController() = default;
  /// The view comes from the interface file `nibName` of `bundle`, where there is one.
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
  void addChildViewController(const std::shared_ptr<UIViewController>& child);
  void removeFromParentViewController();
  const std::vector<std::shared_ptr<UIViewController>>& childViewControllers() const { return children_; }
  std::shared_ptr<UIViewController> parentViewController() const { return parent_.lock(); }
  std::shared_ptr<UINavigationController> navigationController() const;
  std::shared_ptr<UITabBarController> tabBarController() const;

  // Presentation.
  /// Shows `controller` over this one's outermost container. Refused, with a line on standard error and nothing
  /// changed, when this controller presents something already, when its view is in no window, or when `controller`
  /// is being presented.
  void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                             std::function<void()> completion = nullptr);
  /// Dismisses what this controller presents (with all above it) or, if nothing, this controller itself.
  void dismissViewControllerAnimated(bool animated, std::function<void()> completion = nullptr);
  /// What this controller, or the nearest ancestor that presents, presents; empty if nothing.
  std::shared_ptr<UIViewController> presentedViewController() const;
  /// Who presented this controller or the nearest of its ancestors that was presented.
  std::shared_ptr<UIViewController> presentingViewController() const;
  bool isBeingPresented() const { return beingPresented_; }
  bool isBeingDismissed() const { return beingDismissed_; }
  virtual UIModalPresentationStyle modalPresentationStyle() const { return presentationStyle_; }
  void setModalPresentationStyle(UIModalPresentationStyle style) { presentationStyle_ = style; }
  /// Anchor and arrows of a popover; made when first asked for, for controllers shown as one.
  std::shared_ptr<UIPopoverPresentationController> popoverPresentationController();

  std::shared_ptr<UIResponder> nextResponder() override;

 protected:
  /// Appearance calls in the platform's order, passed on to children that are shown.
  void beginAppearanceTransition(bool appearing, bool animated);
  void endAppearanceTransition();

 private:
  friend class UIView;
  friend class UIWindow;
  friend class PresentationController;
  enum class Appearance { disappeared, appearing, appeared, disappearing };

  std::shared_ptr<UIView> view_;
  std::optional<std::string> nibName_;
  std::shared_ptr<NSBundle> bundle_;
  std::string title_;
  std::vector<std::shared_ptr<UIViewController>> children_;
  std::weak_ptr<UIViewController> parent_;
  std::shared_ptr<UIViewController> presented_;
  std::weak_ptr<UIViewController> presenting_;
  std::shared_ptr<NSObject> presentation_;  // the views around a presented controller's view
  std::shared_ptr<UIPopoverPresentationController> popover_;
  UIModalPresentationStyle presentationStyle_ = UIModalPresentationStyle::fullScreen;
  Appearance appearance_ = Appearance::disappeared;
  bool transitionAnimated_ = false;
  bool beingPresented_ = false;
  bool beingDismissed_ = false;
};

}  // namespace ios
