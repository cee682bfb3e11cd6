// Any interface file in a bundle is either refused, or gives views within the bounds that layout and drawing
// rely on, whose buttons can be tapped.

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Foundation/NSBundle.h"
#include "Require.h"
#include "ScratchDevice.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UILabel.h"
#include "UIKit/UINib.h"
#include "UIKit/UIViewController.h"

namespace {

using namespace ios;

/// The screen that the corpus's files describe.
class Screen : public Subclass<Screen, UIViewController> {
 public:
  static MethodList methods() {
    return {{"setQuestion:", &Screen::setQuestion}, {"answer:", &Screen::answer}};
  }
  int answers = 0;

 private:
  void setQuestion(const std::shared_ptr<UILabel>& label) { question_ = label; }
  void answer(const id&) { ++answers; }
  std::weak_ptr<UILabel> question_;
};

/// Mirrored, so that mirroring is covered too.
DeviceSettings arabic() {
  DeviceSettings settings;
  settings.languages = {"ar"};
  return settings;
}

bool isWithin(CGFloat value) {
  return std::isfinite(value) && std::abs(value) <= 1e6;
}

std::size_t checkViews(const UIView& view, std::size_t depth) {
  require(depth <= 64, "views are nested too deep");
  const CGRect frame = view.frame();
  require(isWithin(frame.minX()) && isWithin(frame.minY()), "a view is nowhere");
  require(isWithin(frame.width()) && isWithin(frame.height()) && frame.width() >= 0 && frame.height() >= 0,
          "a view has no size");
  require(view.alpha() >= 0 && view.alpha() <= 1, "a view is more than opaque");
  std::size_t count = 1;
  for (const auto& subview : view.subviews()) {
    require(subview->superview().get() == &view, "a view is in two places");
    count += checkViews(*subview, depth + 1);
  }
  return count;
}

void tapButtons(const std::shared_ptr<UIView>& view) {
  if (const auto control = std::dynamic_pointer_cast<UIControl>(view)) {
    for (const unsigned event : {UIControlEventTouchDown, UIControlEventTouchUpInside})
      control->sendActionsForControlEvents(event);
  }
  for (const auto& subview : view->subviews()) tapButtons(subview);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchDevice device(arabic());
  device.write("Screen.xib", data, size);
  const auto bundle = std::make_shared<NSBundle>(device.folder());
  const auto screen = std::make_shared<Screen>();
  const auto made = UINib::nibWithNibName("Screen", bundle)->instantiateWithOwner(screen);
  std::size_t count = 0;
  for (const id& object : made) {
    const auto view = std::dynamic_pointer_cast<UIView>(object);
    require(view != nullptr, "something else than a view was made");
    count += checkViews(*view, 1);
  }
  require(count <= 10'000, "there are more views than elements");
  for (const id& object : made) {
    const auto view = std::dynamic_pointer_cast<UIView>(object);
    tapButtons(view);
    view->setFrame(CGRectMake(0, 0, 120, 90));
    UIGraphicsBeginImageContextWithOptions({120, 90}, false, 1);
    view->drawViewHierarchyInRectAfterScreenUpdates(view->bounds(), true);
    UIGraphicsEndImageContext();
    checkViews(*view, 1);
  }
  return 0;
}
