#include "UIKit/Private/MoreListController.h"

#include "UIKit/Private/Chrome.h"
#include "UIKit/UIControl.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScrollView.h"

namespace ios {

namespace {

constexpr CGFloat kLineHeight = 44;
constexpr CGFloat kSide = 16;
constexpr unsigned kArrow = 0xC7C7CC;

/// A title with an arrow at its end and a line below.
class MoreLine : public Subclass<MoreLine, UIControl> {
 public:
  explicit MoreLine(const std::string& title) : label_(std::make_shared<UILabel>()) {
    label_->setText(title);
    label_->setFont(UIFont::systemFontOfSize(17));
    label_->setTextAlignment(chrome::isMirrored() ? TextAlignment::right : TextAlignment::left);
    addSubview(label_);
  }
  static MethodList methods() { return {}; }
  std::string accessibilityLabel() const override { return label_->text(); }
  void setHighlighted(bool highlighted) override {
    UIControl::setHighlighted(highlighted);
    setBackgroundColor(highlighted ? UIColor::colorWithHex(chrome::kPressed) : nullptr);
  }
  void layoutSubviews() override {
    const CGSize size = bounds().size;
    label_->setFrame(chrome::mirrored({{kSide, 0}, {std::max(0.0, size.width - 3 * kSide), size.height}},
                                      size.width, chrome::isMirrored()));
  }
  void drawRect(const CGRect&) override {
    const CGSize size = bounds().size;
    const bool mirror = chrome::isMirrored();
    const auto context = UIGraphicsGetCurrentContext();
    const CGFloat thin = chrome::hairline();
    CGContextSetFillColorWithColor(context, UIColor::colorWithHex(chrome::kSeparator)->CGColorValue());
    CGContextFillRect(context, chrome::mirrored({{kSide, size.height - thin}, {size.width - kSide, thin}},
                                                size.width, mirror));
    const auto at = [&](CGFloat x, CGFloat y) {
      return CGPoint{mirror ? x : size.width - x, size.height / 2 + y};
    };
    CGContextSetStrokeColorWithColor(context, UIColor::colorWithHex(kArrow)->CGColorValue());
    CGContextSetLineWidth(context, 2);
    CGContextAddPath(context, CGPath::lines({at(kSide + 6, -5.5), at(kSide, 0), at(kSide + 6, 5.5)}));
    CGContextStrokePath(context);
  }

 private:
  std::shared_ptr<UILabel> label_;
};

}  // namespace

MethodList MoreListController::methods() {
  return {{"lineTapped:", &MoreListController::lineTapped}};
}

void MoreListController::setScreens(const std::vector<std::shared_ptr<UIViewController>>& screens) {
  screens_.assign(screens.begin(), screens.end());
  if (isViewLoaded()) rebuild();
}

void MoreListController::loadView() {
  UIViewController::loadView();
  view()->setBackgroundColor(UIColor::whiteColor());
  list_ = std::make_shared<UIScrollView>(view()->bounds());
  list_->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  view()->addSubview(list_);
  rebuild();
}

void MoreListController::viewWillAppear(bool animated) {
  Subclass::viewWillAppear(animated);
  // A screen that was shown from here has left the stack: it belongs to the tab bar controller again.
  if (const auto tabs = tabBarController()) tabs->adoptControllers();
}

void MoreListController::rebuild() {
  for (const auto& line : std::vector(list_->subviews())) line->removeFromSuperview();
  long place = 0;
  for (const auto& screen : screens_) {
    const auto controller = screen.lock();
    if (!controller) continue;
    const auto line = std::make_shared<MoreLine>(controller->title());
    line->setTag(place++);
    line->addTarget(sharedAs<NSObject>(), "lineTapped:", UIControlEventTouchUpInside);
    list_->addSubview(line);
  }
  view()->setNeedsLayout();
}

void MoreListController::viewWillLayoutSubviews() {
  Subclass::viewWillLayoutSubviews();
  CGFloat y = 0;
  for (const auto& line : list_->subviews()) {
    line->setFrame({{0, y}, {view()->bounds().width(), kLineHeight}});
    y += kLineHeight;
  }
  list_->setContentSize({view()->bounds().width(), y});
}

void MoreListController::lineTapped(const id& sender) {
  const auto line = std::dynamic_pointer_cast<UIView>(sender);
  const auto navigation = navigationController();
  if (!line || !navigation || navigation->topViewController().get() != this) return;
  const auto place = static_cast<std::size_t>(line->tag());
  if (place >= screens_.size()) return;
  navigation->pushViewController(screens_[place].lock(), true);
}

}  // namespace ios
