#include <algorithm>

#include "UIKit/UINavigationController.h"
#include "UIKit/UITabBarController.h"
#include "UIKit/UIViewController.h"

namespace ios {

namespace {

template <class Container>
std::shared_ptr<Container> nearest(std::shared_ptr<UIViewController> ancestor) {
  for (; ancestor; ancestor = ancestor->parentViewController()) {
    if (auto container = std::dynamic_pointer_cast<Container>(ancestor)) return container;
  }
  return nullptr;
}

}  // namespace

void UIViewController::addChildViewController(const std::shared_ptr<UIViewController>& child) {
  if (!child) return;
  const auto self = sharedAs<UIViewController>();
  for (auto ancestor = self; ancestor; ancestor = ancestor->parent_.lock()) {
    if (ancestor == child) {
      programmingError("addChildViewController: " + child->className() + " is a parent of " + className());
    }
  }
  child->removeFromParentViewController();
  children_.push_back(child);
  child->parent_ = self;
}

void UIViewController::removeFromParentViewController() {
  const auto self = weak_from_this().lock();
  const auto parent = parent_.lock();
  parent_.reset();
  if (parent) std::erase_if(parent->children_, [this](const auto& child) { return child.get() == this; });
}

std::shared_ptr<UINavigationController> UIViewController::navigationController() const {
  return nearest<UINavigationController>(parentViewController());
}

std::shared_ptr<UITabBarController> UIViewController::tabBarController() const {
  return nearest<UITabBarController>(parentViewController());
}

void UIViewController::beginExchange(const std::shared_ptr<UIViewController>& old,
                                     const std::shared_ptr<UIViewController>& shown, bool animated) {
  if (appearance_ != Appearance::appearing && appearance_ != Appearance::appeared) return;
  if (old) old->beginAppearanceTransition(false, animated);
  if (shown) shown->beginAppearanceTransition(true, animated);
}

void UIViewController::endExchange(const std::shared_ptr<UIViewController>& old,
                                   const std::shared_ptr<UIViewController>& shown) {
  if (old && old->appearance_ == Appearance::disappearing) old->endAppearanceTransition();
  // While the container itself is appearing, the end of its transition also ends the child's.
  if (shown && shown->appearance_ == Appearance::appearing && appearance_ == Appearance::appeared) {
    shown->endAppearanceTransition();
  }
}

}  // namespace ios
