#include "Device/Device.h"
#include "simulator/screens/Parts.h"
#include "simulator/screens/ScreenController.h"

namespace simulator {
namespace {

class HomeScreen : public ScreenController {
 public:
  explicit HomeScreen(WishSink wish) : ScreenController("", std::move(wish)) {}

 private:
  void build(CGSize size) override {
    add(std::make_shared<Shade>(CGRectMake(0, 0, size.width, size.height), 0x7FB4DE, 0x2F4F86));
    auto dock = std::make_shared<UIView>(CGRectMake(0, size.height - 96, size.width, 96));
    dock->setBackgroundColor(UIColor::colorWithWhiteAlpha(1, 0.25));
    add(dock);

    constexpr int kColumns = 4;
    const CGFloat width = (size.width - 16) / kColumns;
    int place = 0;
    const auto icon = [&](const std::string& identifier, const std::string& name) {
      const CGRect frame = CGRectMake(8 + place % kColumns * width, 44 + place / kColumns * 92, width, 82);
      ++place;
      addIcon(frame, identifier, name);
    };
    for (const InstalledApplication& application : Device::current().applications().all()) {
      icon(application.bundleIdentifier, displayName(application));
    }
    addIcon(CGRectMake((size.width - width) / 2, size.height - 88, width, 82), kSettingsIdentifier,
            "Settings");
  }

  void addIcon(CGRect frame, const std::string& identifier, const std::string& name) {
    auto button = std::make_shared<IconButton>(frame, identifier, name);
    onTap(button, {ScreenWish::Kind::open, identifier});
    add(button);
  }
};

}  // namespace

std::shared_ptr<UIViewController> makeHomeScreen(WishSink wish) {
  return std::make_shared<HomeScreen>(std::move(wish));
}

std::string displayName(const InstalledApplication& application) {
  const PropertyList info(application.info);
  for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
    if (const std::string* name = info.text(key)) return *name;
  }
  return application.bundleIdentifier;
}

}  // namespace simulator
