#include "Device/Device.h"
#include "UIKit/UISwitch.h"
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
      for (const auto& [service, title] :
           {std::pair("microphone", "Microphone"), std::pair("photos", "Photos"),
            std::pair("screen", "Screen Recording")}) {
        row(size, y,
            {application, service, title, answerOf(settings, application.bundleIdentifier, service)});
        y += 45;
      }
      y += 18;
    }
  }

  static Permission answerOf(const DeviceSettings& settings, const std::string& identifier,
                             const std::string& service) {
    const auto application = settings.permissions.find(identifier);
    if (application == settings.permissions.end()) return Permission::notDetermined;
    const auto answer = application->second.find(service);
    return answer == application->second.end() ? Permission::notDetermined : answer->second;
  }

  static const char* inWords(Permission answer) {
    if (answer == Permission::notDetermined) return "Not asked yet";
    if (answer == Permission::restricted) return "Disabled";
    return answer == Permission::authorized ? "Allowed" : "Denied";
  }

  struct Row {
    const InstalledApplication& application;
    std::string service, title;
    Permission answer;
  };
  void row(CGSize size, CGFloat y, const Row& given) {
    constexpr CGFloat kHeight = 44.5, kMargin = 16;
    auto row = std::make_shared<UIView>(CGRectMake(0, y, size.width, kHeight));
    row->setBackgroundColor(UIColor::whiteColor());
    const CGFloat left = size.width - UISwitch::kSize.width - kMargin, middle = 176;
    row->addSubview(makeLabel(given.title, CGRectMake(20, 0, middle - 20, 44), 17, 400, 0x1C1C1E));
    row->addSubview(makeLabel(inWords(given.answer), CGRectMake(middle, 0, left - middle - 12, 44), 17, 400,
                              0x8A8A8E, TextAlignment::right));
    const bool allowed = given.answer == Permission::authorized;
    auto toggle = std::make_shared<UISwitch>(CGRectMake(left, (kHeight - UISwitch::kSize.height) / 2, 0, 0));
    toggle->setOn(allowed);
    toggle->setAccessibilityLabel(given.title + " for " + displayName(given.application));
    // What the owner of the phone has disabled is not the user's to allow.
    toggle->setEnabled(given.answer != Permission::restricted);
    onTap(toggle, {allowed ? ScreenWish::Kind::refuse : ScreenWish::Kind::permit,
                   given.application.bundleIdentifier, given.service});
    row->addSubview(toggle);
    add(row);
  }
};

}  // namespace

std::shared_ptr<UIViewController> makeSettingsScreen(const std::string& backTo, WishSink wish) {
  return std::make_shared<SettingsScreen>(backTo, std::move(wish));
}

}  // namespace simulator
