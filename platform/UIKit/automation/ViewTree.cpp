#include "UIKit/ViewTree.h"

#include "UIKit/UIApplication.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIViewController.h"
#include "UIKit/UIWindow.h"
#include "UIKit/VisibleElements.h"

namespace ios {
namespace {

/// Deeper views are left out: a reader of the tree may have a smaller stack.
constexpr int kDeepest = 60;

ViewNode describe(UIView& view, const UIWindow& window, int levels) {
  const auto* control = dynamic_cast<UIControl*>(&view);
  const CGPoint origin = window.frame().origin;
  ViewNode node{.className = view.className(),
                .frame = CGRectOffset(view.convertRectToView(view.bounds(), &window), origin.x, origin.y),
                .label = view.accessibilityLabel(),
                .role = roleOf(view),
                .enabled = !control || control->isEnabled(),
                .hidden = view.isHidden(),
                .children = {}};
  if (levels == 0) return node;
  for (const auto& subview : view.subviews()) node.children.push_back(describe(*subview, window, levels - 1));
  return node;
}

}  // namespace

std::vector<ViewNode> viewTree(const UIApplication& application) {
  std::vector<ViewNode> windows;
  for (const auto& window : application.windowsOnScreen()) {
    window->layoutIfNeeded();
    windows.push_back(describe(*window, *window, kDeepest));
  }
  return windows;
}

std::string topViewControllerName(UIApplication& application) {
  constexpr const char* kLookup = "topViewController:";
  const auto window = application.keyWindow();
  const auto root = window ? window->rootViewController() : nullptr;
  if (!root || !application.respondsToSelector(kLookup)) return {};
  const auto top = send<std::shared_ptr<UIViewController>>(application, kLookup, root);
  return top ? top->className() : "";
}

}  // namespace ios
