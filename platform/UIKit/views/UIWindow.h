#pragma once

#include <memory>

#include "UIKit/UIView.h"

namespace ios {

class BackingStore;
class GestureArbiter;

inline constexpr CGFloat UIWindowLevelNormal = 0;
inline constexpr CGFloat UIWindowLevelStatusBar = 1000;
inline constexpr CGFloat UIWindowLevelAlert = 2000;

/// A window: the root of a view tree. It keeps its rendering, which the display, the still image and
/// recorders share; drawing a window in which nothing changed is one copy. The application holds windows
/// weakly: a window shows as long as its owner holds it.
class UIWindow : public Subclass<UIWindow, UIView> {
 public:
  explicit UIWindow(CGRect frame);
  ~UIWindow() override;
  static MethodList methods();

  const std::shared_ptr<UIViewController>& rootViewController() const { return root_; }
  void setRootViewController(std::shared_ptr<UIViewController> controller);
  /// Shows the window, in front of those of its level, and makes it the application's key window.
  void makeKeyAndVisible();
  /// Windows of a higher level are in front.
  CGFloat windowLevel() const { return level_; }
  void setWindowLevel(CGFloat level);
  /// A new window is hidden. One that is shown without being made key leaves the key window as it is; when
  /// the key window is hidden, the frontmost visible one takes its place.
  void setHidden(bool hidden) override;

  std::shared_ptr<UIWindow> window() const override;
  std::shared_ptr<UIResponder> nextResponder() override;
  /// Delivers an event to recognisers and views.
  virtual void sendEvent(const std::shared_ptr<UIEvent>& event);

 private:
  friend class UIView;
  friend class UIApplication;
  friend class UIGestureRecognizer;
  friend class PermissionAlert;
  friend class ViewRenderer;
  GestureArbiter& arbiter();
  void markDirty();
  /// The display lays out what asked for it at its next refresh.
  void layoutAtNextRefresh();

  std::shared_ptr<UIViewController> root_;
  CGFloat level_ = UIWindowLevelNormal;
  bool ofSystem_ = false;  // the system's, above the application's and unknown to it
  bool layoutIsScheduled_ = false;
  std::unique_ptr<BackingStore> backing_;
  std::shared_ptr<GestureArbiter> arbiter_;  // created on first use
};

}  // namespace ios
