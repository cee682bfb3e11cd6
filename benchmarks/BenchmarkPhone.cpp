#include "BenchmarkPhone.h"

#include <stdlib.h>

#include <fstream>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIColor.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

using namespace ios;

BenchmarkPhone::BenchmarkPhone(Time time, const std::string& profile) {
  std::string name = (std::filesystem::temp_directory_path() / "benchmark-XXXXXX").string();
  folder_ = ::mkdtemp(name.data());
  const auto bundle = folder_ / "Applications" / "com.example.benchmark";
  std::filesystem::create_directories(bundle);
  std::filesystem::create_directory_symlink(FRAMEWORKS, bundle / "Frameworks");
  std::ofstream(bundle / "Info.plist")
      << PropertyList(
             NSDictionary{{"CFBundleIdentifier", "com.example.benchmark"}, {"CFBundleName", "Benchmark"}})
             .xml();
  if (time == Time::virtual_) Clock::shared().useVirtualTime();
  DeviceSettings settings;
  settings.profile = profile;
  Device::start({.root = folder_, .mainBundle = bundle, .bundleIdentifier = {}, .settings = settings});
  Device::current().setPermission("photos", Permission::authorized);
  Device::current().setPermission("microphone", Permission::authorized);
  UIApplication::sharedApplication()->launch(std::make_shared<UIApplicationDelegate>());

  const auto root = std::make_shared<UIViewController>();
  root->view()->setBackgroundColor(UIColor::whiteColor());
  for (int row = 0; row < 12; ++row) {
    const auto label = std::make_shared<UILabel>(CGRectMake(20, 30 + row * 52, 335, 44));
    label->setText("Row " + std::to_string(row) + ": a note of some length");
    label->setBackgroundColor(UIColor::colorWithRedGreenBlueAlpha(1 - row * 0.05, 0.6 + row * 0.03, 0.9, 1));
    root->view()->addSubview(label);
  }
  const CGSize size = Device::current().screenSize();
  window_ = std::make_shared<UIWindow>(CGRectMake(0, 0, size.width, size.height));
  window_->setRootViewController(root);
  window_->makeKeyAndVisible();
  Clock::shared().runFor(std::chrono::seconds(1));
}

BenchmarkPhone& BenchmarkPhone::shared() {
  static BenchmarkPhone phone;
  return phone;
}

BenchmarkPhone::~BenchmarkPhone() {
  window_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}
