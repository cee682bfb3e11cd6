#include "UIKit/VisibleElements.h"

#include <algorithm>

#include "UIKit/UIApplication.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIImageView.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIWindow.h"

namespace ios {
namespace {

// Opacities: a view below the first cannot be seen; one from the second on hides what is behind it.
constexpr CGFloat kFaintest = 0.05, kOpaque = 0.9;

/// The view that a finger at this place of the screen would touch.
std::shared_ptr<UIView> viewAt(const UIApplication& application, CGPoint place) {
  const auto windows = application.windowsOnScreen();
  for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
    const CGPoint origin = (*window)->frame().origin;
    if (auto view = (*window)->hitTest({place.x - origin.x, place.y - origin.y}, nullptr)) return view;
  }
  return nullptr;
}

class Survey {
 public:
  void visitWindow(UIWindow& window) {
    window.layoutIfNeeded();
    window_ = &window;
    visit(window, UIScreen::mainScreen()->bounds(), 1, {});
  }

  std::vector<VisibleElement> result(const UIApplication& application) const {
    std::vector<VisibleElement> elements;
    for (const Found& found : found_) {
      VisibleElement& element = elements.emplace_back(found.element);
      if (!element.control || !element.enabled) continue;
      const auto hit = viewAt(application, {element.frame.midX(), element.frame.midY()});
      element.focusable = hit && hit->isDescendantOfView(*found.view);
    }
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
      const auto* control = dynamic_cast<UIControl*>(&view);
      found_.push_back({&view,
                        {.text = text,
                         .frame = frame,
                         .control = control != nullptr,
                         .role = roleOf(view),
                         .enabled = !control || control->isEnabled()}});
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

std::string roleOf(const UIView& view) {
  if (dynamic_cast<const UIControl*>(&view)) return "button";
  if (dynamic_cast<const UILabel*>(&view)) return "text";
  if (dynamic_cast<const UIImageView*>(&view)) return "image";
  return "group";
}

std::vector<VisibleElement> visibleElements(const UIApplication& application) {
  Survey survey;
  for (const auto& window : application.windowsOnScreen()) survey.visitWindow(*window);
  return survey.result(application);
}

}  // namespace ios
