#include "UIKit/Automation/VisibleElements.h"

#include <algorithm>

#include "UIKit/UIApplication.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIWindow.h"

namespace ios {
namespace {

// Below the first, nobody sees it; from the second on, nobody sees through it.
constexpr CGFloat kFaintest = 0.05, kOpaque = 0.9;

class Survey {
 public:
  void visitWindow(UIWindow& window) {
    window.layoutIfNeeded();
    window_ = &window;
    visit(window, UIScreen::mainScreen()->bounds(), 1, {});
  }

  std::vector<VisibleElement> result() const {
    std::vector<VisibleElement> elements;
    for (const Found& found : found_) elements.push_back(found.element);
    return elements;
  }

 private:
  struct Found {
    const UIView* view;
    VisibleElement element;
  };

  void visit(UIView& view, CGRect clip, CGFloat alpha, std::string enclosingText) {
    alpha *= view.alpha();
    if (view.isHidden() || alpha < kFaintest) return;
    const CGPoint origin = window_->frame().origin;
    const CGRect frame = CGRectOffset(
        view.convertRectToView(view.bounds(), static_cast<const UIView*>(window_)), origin.x, origin.y);
    const CGRect seen = CGRectIntersection(frame, clip);
    if (view.clipsToBounds()) clip = seen;

    const auto& background = view.backgroundColor();
    if (background && background->CGColorValue().alpha * alpha >= kOpaque) coverWith(view, seen);

    const std::string text = view.accessibilityLabel();
    if (!text.empty() && text != enclosingText && CGRectContainsPoint(seen, {frame.midX(), frame.midY()})) {
      found_.push_back({&view, {text, frame, dynamic_cast<UIControl*>(&view) != nullptr}});
      enclosingText = text;
    }
    const auto subviews = view.subviews();
    for (const auto& subview : subviews) visit(*subview, clip, alpha, enclosingText);
  }

  void coverWith(const UIView& cover, const CGRect& area) {
    std::erase_if(found_, [&](const Found& found) {
      const CGRect& frame = found.element.frame;
      return CGRectContainsPoint(area, {frame.midX(), frame.midY()}) &&
             !cover.isDescendantOfView(*found.view);
    });
  }

  UIWindow* window_ = nullptr;
  std::vector<Found> found_;
};

}  // namespace

std::vector<VisibleElement> visibleElements(const UIApplication& application) {
  Survey survey;
  for (const auto& window : application.windowsOnScreen()) survey.visitWindow(*window);
  return survey.result();
}

}  // namespace ios
