#include "UIKit/UIViewController.h"

#include "Device/Device.h"
#include "Dispatch/Queue.h"
#include "UIKit/Private/PresentationController.h"
#include "UIKit/UINib.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIWindow.h"

namespace ios {

UIViewController::UIViewController(std::optional<std::string> nibName, std::shared_ptr<NSBundle> bundle)
    : nibName_(std::move(nibName)), bundle_(std::move(bundle)) {}

MethodList UIViewController::methods() {
  return {{"setView:", &UIViewController::setView},
          {"loadView", &UIViewController::loadView},
          {"viewDidLoad", &UIViewController::viewDidLoad},
          {"viewWillAppear:", &UIViewController::viewWillAppear},
          {"viewDidAppear:", &UIViewController::viewDidAppear},
          {"viewWillDisappear:", &UIViewController::viewWillDisappear},
          {"viewDidDisappear:", &UIViewController::viewDidDisappear},
          {"didReceiveMemoryWarning", &UIViewController::didReceiveMemoryWarning}};
}

const std::shared_ptr<UIView>& UIViewController::view() {
  assertMainThread("UIViewController view");
  if (!view_) {
    loadView();
    if (!view_) loadPlainView();
    viewDidLoad();
  }
  return view_;
}

void UIViewController::setView(std::shared_ptr<UIView> view) {
  if (view_) view_->controller_.reset();
  view_ = std::move(view);
  if (view_) view_->controller_ = sharedAs<UIViewController>();
}

void UIViewController::loadView() {
  if (nibName_) {
    UINib::nibWithNibName(*nibName_, bundle_)->instantiateWithOwner(shared_from_this());
    if (view_) return;
    deviceLog("the interface file " + *nibName_ + ".xib gives <" + className() +
              "> no view; it gets a plain one");
  }
  loadPlainView();
}

void UIViewController::loadPlainView() {
  auto view = std::make_shared<UIView>(UIScreen::mainScreen()->bounds());
  view->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  setView(std::move(view));
}

void UIViewController::setTitle(std::string title) {
  if (title == title_) return;
  title_ = std::move(title);
  for (auto parent = parent_.lock(); parent; parent = parent->parent_.lock()) parent->childTitleDidChange();
}

std::shared_ptr<UIResponder> UIViewController::nextResponder() {
  if (auto presenter = presenting_.lock()) return presenter;
  if (!view_) return nullptr;
  if (auto superview = view_->superview()) return superview;
  // A full-screen presentation took the view off the window; events still reach the window through it.
  return presented_ && presented_->presentation_ ? presented_->presentation_->presenterSuperview() : nullptr;
}

void UIViewController::beginAppearanceTransition(bool appearing, bool animated) {
  const auto self = weak_from_this().lock();  // an overriding method may release the last reference
  const bool towards = appearance_ == Appearance::appearing || appearance_ == Appearance::appeared;
  if (appearing == towards) return;
  appearance_ = appearing ? Appearance::appearing : Appearance::disappearing;
  transitionAnimated_ = animated;
  if (appearing) {
    view();
    viewWillAppear(animated);
  } else {
    viewWillDisappear(animated);
  }
  for (const auto& child : std::vector(children_)) {
    if (child->view_ && child->view_->isDescendantOfView(*view_))
      child->beginAppearanceTransition(appearing, animated);
  }
}

void UIViewController::endAppearanceTransition() {
  const auto self = weak_from_this().lock();
  if (appearance_ != Appearance::appearing && appearance_ != Appearance::disappearing) return;
  const bool appeared = appearance_ == Appearance::appearing;
  appearance_ = appeared ? Appearance::appeared : Appearance::disappeared;
  if (appeared) {
    viewDidAppear(transitionAnimated_);
  } else {
    viewDidDisappear(transitionAnimated_);
  }
  for (const auto& child : std::vector(children_)) child->endAppearanceTransition();
}

void UIViewController::viewMovedToWindow() {
  // Without an appeared parent somebody else is in charge: the window, a presentation or a
  // container's transition.
  const auto parent = parent_.lock();
  if (!parent || parent->appearance_ != Appearance::appeared) return;
  const bool inWindow = view_ && view_->window();
  if (appearance_ != (inWindow ? Appearance::disappeared : Appearance::appeared)) return;
  beginAppearanceTransition(inWindow, false);
  endAppearanceTransition();
}

}  // namespace ios
