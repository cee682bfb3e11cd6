#include <utility>

#include "UIKit/Private/PresentationController.h"
#include "UIKit/UIViewController.h"
#include "UIKit/UIWindow.h"

namespace ios {

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller) {
  if (controller == root_) return;
  const auto old = std::exchange(root_, controller);
  const bool shows = !isHidden();
  if (old) {
    PresentationController::abandon(*old);
    if (shows) old->beginAppearanceTransition(false, false);
    if (old->isViewLoaded()) old->view()->removeFromSuperview();
    if (shows) old->endAppearanceTransition();
  }
  if (!controller) return;
  const auto view = controller->view();
  view->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  view->setFrame(bounds());
  if (shows) controller->beginAppearanceTransition(true, false);
  insertSubviewAtIndex(view, 0);
  if (shows) controller->endAppearanceTransition();
}

}  // namespace ios
