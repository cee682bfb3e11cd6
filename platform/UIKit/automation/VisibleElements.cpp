#include "UIKit/VisibleElements.h"

#include <algorithm>
#include <map>

#include "UIKit/UIApplication.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIImageView.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UISwitch.h"
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
    std::map<const UIView*, int> places;
    for (const Found& found : found_) {
      VisibleElement& element = elements.emplace_back(found.element);
      for (auto above = found.view->superview(); above && element.parent < 0; above = above->superview()) {
        if (const auto place = places.find(above.get()); place != places.end())
          element.parent = place->second;
      }
      places.emplace(found.view, static_cast<int>(places.size()));
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
    const bool named = !view.accessibilityIdentifier().empty() || (!text.empty() && text != enclosingText);
    if (named && CGRectContainsPoint(seen, {frame.midX(), frame.midY()})) {
      found_.push_back({&view, describe(view, text, frame, seen)});
      if (!text.empty()) enclosingText = text;
    }
    const auto subviews = view.subviews();
    for (const auto& subview : subviews) visit(*subview, clip, alpha, enclosingText);
  }

  static VisibleElement describe(const UIView& view, const std::string& text, const CGRect& frame,
                                 const CGRect& seen) {
    const auto* control = dynamic_cast<const UIControl*>(&view);
    const auto* toggle = dynamic_cast<const UISwitch*>(&view);
    const CGFloat area = frame.width() * frame.height();
    return {.text = text,
            .identifier = view.accessibilityIdentifier(),
            .frame = frame,
            .control = control != nullptr,
            .role = roleOf(view),
            .enabled = !control || control->isEnabled(),
            .selected = control && control->isSelected(),
            .on = toggle && toggle->isOn(),
            .shown = area > 0 ? seen.width() * seen.height() / area : 1};
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
  if (dynamic_cast<const UISwitch*>(&view)) return "switch";
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
