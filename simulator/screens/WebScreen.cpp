#include "Device/Device.h"
#include "Foundation/NSURL.h"
#include "UIKit/UIButton.h"
#include "simulator/screens/Parts.h"
#include "simulator/screens/ScreenController.h"

namespace simulator {
namespace {

class WebScreen : public ScreenController {
 public:
  WebScreen(std::string url, const std::string& backTo, WishSink wish)
      : ScreenController(backTo, std::move(wish)), url_(std::move(url)) {}

 private:
  void build(CGSize size) override {
    view()->setBackgroundColor(UIColor::whiteColor());
    addBackLink(0x1877D2);
    auto address = std::make_shared<UIView>(CGRectMake(16, 64, size.width - 32, 34));
    address->setBackgroundColor(UIColor::colorWithHex(0xEDEDF0));
    address->layer()->cornerRadius = 9;
    address->addSubview(
        makeLabel(url_, CGRectMake(12, 0, size.width - 56, 34), 14, 400, 0x55555C, TextAlignment::center));
    add(address);
    if (url_ == kStorePage) {
      buildStore(size);
    } else {
      const auto parsed = NSURL::URLWithString(url_);
      add(makeLabel(parsed ? parsed->host() : url_, CGRectMake(20, 150, size.width - 40, 40), 26, 600,
                    0x1C1C1E, TextAlignment::center));
      add(makeLabel("This phone is not connected.", CGRectMake(20, 194, size.width - 40, 24), 16, 400,
                    0x8A8A8E, TextAlignment::center));
    }
  }

  void buildStore(CGSize size) {
    const bool installed = Device::current().applications().withIdentifier(kCompanionIdentifier).has_value();
    add(std::make_shared<AppIcon>(CGRectMake(20, 124, 104, 104), kCompanionIdentifier, "Tellvane"));
    // The description goes below, or to the right where the screen is too low for that.
    const bool upright = size.height > size.width;
    const CGFloat column = upright ? size.width : size.width / 2;
    const CGFloat left = 142, width = column - left - 16;
    add(makeLabel("Tellvane", CGRectMake(left, 126, width, 32), 26, 600, 0x1C1C1E));
    auto subtitle =
        makeLabel("Feedback for apps you test", CGRectMake(left, 158, width, 22), 15, 400, 0x8A8A8E);
    subtitle->setMinimumScaleFactor(0.6);
    add(subtitle);

    auto get = std::make_shared<UIButton>(CGRectMake(left, 194, 84, 32));
    get->setTitle(installed ? "Open" : "Get");
    get->setTitleColor(UIColor::whiteColor());
    get->setFont(UIFont::boldSystemFontOfSize(16));
    get->setBackgroundColor(UIColor::colorWithHex(0x1877D2));
    get->layer()->cornerRadius = 16;
    onTap(get, {installed ? ScreenWish::Kind::open : ScreenWish::Kind::install, kCompanionIdentifier});
    add(get);

    auto line = std::make_shared<UIView>(upright ? CGRectMake(20, 252, size.width - 40, 0.5)
                                                 : CGRectMake(column, 124, 0.5, 104));
    line->setBackgroundColor(UIColor::colorWithHex(0xD8D8DC));
    add(line);
    auto text = makeLabel(
        "Show the people who make your apps what you see. A picture of the screen and a few facts about the "
        "phone arrive here, and stay here.",
        upright ? CGRectMake(20, 264, size.width - 40, 96) : CGRectMake(column + 16, 116, column - 32, 120),
        16, 400, 0x3A3A3E);
    text->setNumberOfLines(0);
    add(text);
  }

  std::string url_;
};

}  // namespace

std::shared_ptr<UIViewController> makeWebScreen(const std::string& url, const std::string& backTo,
                                                WishSink wish) {
  return std::make_shared<WebScreen>(url, backTo, std::move(wish));
}

}  // namespace simulator
