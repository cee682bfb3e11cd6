#include "Device/Device.h"
#include "simulator/screens/Parts.h"
#include "simulator/screens/ScreenController.h"

namespace simulator {
namespace {

class SettingsScreen : public ScreenController {
 public:
  SettingsScreen(const std::string& backTo, WishSink wish) : ScreenController(backTo, std::move(wish)) {}

 private:
  void build(CGSize size) override {
    view()->setBackgroundColor(UIColor::colorWithHex(0xEFEFF4));
    addBackLink(0x1877D2);
    add(makeLabel("Settings", CGRectMake(20, 64, size.width - 40, 40), 30, 700, 0x1C1C1E));
    CGFloat y = 120;
    Device::current().reloadSettings();  // the applications write down what they were answered
    const DeviceSettings& settings = Device::current().settings();
    for (const InstalledApplication& application : Device::current().applications().all()) {
      add(makeLabel(displayName(application), CGRectMake(20, y, size.width - 40, 24), 14, 600, 0x6D6D72));
      y += 28;
      for (const char* service : {"microphone", "photos"}) {
        row(size, y, service, inWords(settings, application.bundleIdentifier, service));
        y += 45;
      }
      y += 18;
    }
  }

  static std::string inWords(const DeviceSettings& settings, const std::string& identifier,
                             const std::string& service) {
    const auto application = settings.permissions.find(identifier);
    if (application == settings.permissions.end()) return "Not asked yet";
    const auto answer = application->second.find(service);
    if (answer == application->second.end() || answer->second == Permission::notDetermined)
      return "Not asked yet";
    return answer->second == Permission::authorized ? "Allowed" : "Denied";
  }

  void row(CGSize size, CGFloat y, const std::string& service, const std::string& answer) {
    auto row = std::make_shared<UIView>(CGRectMake(0, y, size.width, 44.5));
    row->setBackgroundColor(UIColor::whiteColor());
    const std::string title = service == "photos" ? "Photos" : "Microphone";
    row->addSubview(makeLabel(title, CGRectMake(20, 0, 160, 44), 17, 400, 0x1C1C1E));
    row->addSubview(
        makeLabel(answer, CGRectMake(180, 0, size.width - 196, 44), 17, 400, 0x8A8A8E, TextAlignment::right));
    add(row);
  }
};

}  // namespace

std::shared_ptr<UIViewController> makeSettingsScreen(const std::string& backTo, WishSink wish) {
  return std::make_shared<SettingsScreen>(backTo, std::move(wish));
}

}  // namespace simulator
