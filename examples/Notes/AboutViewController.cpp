#include "AboutViewController.h"

#include "CoreGraphics/CGContext.h"
#include "Foundation/NSBundle.h"
#include "Note.h"
#include "UIKit/UIGraphics.h"

namespace Notes {
namespace {

using namespace ios;

/// The application's emblem: a sheet of a writing pad.
class Pad : public Subclass<Pad, UIView> {
 public:
  static MethodList methods() { return {}; }
  void drawRect(const CGRect&) override {
    const CGContextRef context = UIGraphicsGetCurrentContext();
    const CGRect all = bounds();
    CGContextAddPath(context, CGPath::roundedRect(all, 20));
    CGContextClip(context);
    CGContextSetFillColorWithColor(context, {1, 1, 1, 1});
    CGContextFillRect(context, all);
    CGContextDrawVerticalGradient(context, CGRectMake(0, 0, all.width(), 26), {0.98, 0.80, 0.25, 1},
                                  {0.94, 0.68, 0, 1});
    CGContextSetFillColorWithColor(context, {0.85, 0.83, 0.78, 1});
    for (CGFloat y = 44; y < all.height() - 8; y += 16)
      CGContextFillRect(context, CGRectMake(0, y, all.width(), 1));
  }
};

std::string versionLine() {
  const auto& info = NSBundle::mainBundle()->infoDictionary();
  if (!info) return "";
  const PropertyList all(*info);
  const std::string* version = all.text("CFBundleShortVersionString");
  const std::string* build = all.text(kCFBundleVersionKey);
  return version && build ? "Version " + *version + " (" + *build + ")" : "";
}

}  // namespace

AboutViewController::AboutViewController() {
  setTitle("About");
}

void AboutViewController::viewDidLoad() {
  view()->setBackgroundColor(paperColor());
  pad_ = std::make_shared<Pad>();
  pad_->layer()->cornerRadius = 20;
  pad_->layer()->borderWidth = 0.5;
  pad_->layer()->borderColor = lineColor()->CGColorValue();
  view()->addSubview(pad_);
  const auto label = [this](const std::string& text, std::shared_ptr<UIFont> font,
                            std::shared_ptr<UIColor> color) {
    auto made = std::make_shared<UILabel>();
    made->setText(text);
    made->setFont(std::move(font));
    made->setTextColor(std::move(color));
    made->setTextAlignment(TextAlignment::center);
    made->setNumberOfLines(0);
    view()->addSubview(made);
    return made;
  };
  name_ = label("Notes", UIFont::boldSystemFontOfSize(28), inkColor());
  version_ = label(versionLine(), UIFont::systemFontOfSize(15), faintColor());
  hint_ = label("Something not right? Tap the screen three times, and tell us.", UIFont::systemFontOfSize(17),
                inkColor());
}

void AboutViewController::viewWillLayoutSubviews() {
  const CGSize size = view()->bounds().size;
  // The hint goes below, or to the right where there is no room for that.
  const bool upright = size.height > size.width;
  const CGFloat width = upright ? size.width : size.width / 2;
  const CGFloat top = upright ? std::max(48.0, size.height / 2 - 190) : size.height / 2 - 89;
  pad_->setFrame(CGRectMake(width / 2 - 50, top, 100, 100));
  name_->setFrame(CGRectMake(20, top + 118, width - 40, 36));
  version_->setFrame(CGRectMake(20, top + 156, width - 40, 22));
  hint_->setFrame(upright ? CGRectMake(40, top + 206, width - 80, 66)
                          : CGRectMake(width, size.height / 2 - 44, width - 40, 88));
}

}  // namespace Notes
