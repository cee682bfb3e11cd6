#include "Device/Device.h"
#include "simulator/screens/Parts.h"
#include "simulator/screens/ScreenController.h"

namespace simulator {
namespace {

class PlainScreen : public ScreenController {
 public:
  PlainScreen(std::string identifier, const std::string& backTo, WishSink wish)
      : ScreenController(backTo, std::move(wish)), identifier_(std::move(identifier)) {}

 private:
  void build(CGSize size) override {
    view()->setBackgroundColor(UIColor::whiteColor());
    addBackLink(0x1877D2);
    const auto application = Device::current().applications().withIdentifier(identifier_);
    const std::string name = application ? displayName(*application) : identifier_;
    add(std::make_shared<AppIcon>(CGRectMake(size.width / 2 - 50, size.height / 2 - 90, 100, 100),
                                  identifier_, name));
    add(makeLabel(name, CGRectMake(20, size.height / 2 + 24, size.width - 40, 32), 24, 600, 0x1C1C1E,
                  TextAlignment::center));
  }

  std::string identifier_;
};

}  // namespace

std::shared_ptr<UIViewController> makePlainScreen(const std::string& bundleIdentifier,
                                                  const std::string& backTo, WishSink wish) {
  return std::make_shared<PlainScreen>(bundleIdentifier, backTo, std::move(wish));
}

}  // namespace simulator
