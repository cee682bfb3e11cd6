// A host outside the tree: starts the library on a phone of its own and says what it finds of it.
#include <cstdio>
#include <filesystem>
#include <memory>

#include <Tellvane/Tellvane.h>
#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "Foundation/NSBundle.h"
#include "UIKit/UIApplication.h"

int main(int argc, char** argv) {
  using namespace ios;
  if (argc != 2) return 2;
  Clock::shared().useVirtualTime();
  DeviceSettings settings;
  settings.languages = {"de-AT"};
  Device::start({.root = argv[1],
                 .mainBundle = std::filesystem::read_symlink("/proc/self/exe").parent_path(),
                 .bundleIdentifier = "com.example.outside",
                 .settings = settings});
  const auto application = UIApplication::sharedApplication();
  application->launch(std::make_shared<UIApplicationDelegate>());

  tellvane::Tellvane::instantiateSDK(true, false);
  Clock::shared().runFor(std::chrono::seconds(15));
  std::printf("version: %s\n", tellvane::Tellvane::getTLVSDKVersion().c_str());
  const auto bundle = NSBundle::bundleWithIdentifier("com.tellvane.sdk");
  std::printf("text: %s\n", NSLocalizedString("Options", "TLVLocalizable", bundle, "").c_str());
  // By an operation that no object file of the host refers to.
  std::printf("extended: %s\n", application->respondsToSelector("topViewController:") ? "yes" : "no");
  std::printf("records: %s\n", tellvane::CaptureScreenRecording::shared()->isRecording() ? "yes" : "no");
  std::printf("device: %s\n", tellvane::deviceModel(*UIDevice::currentDevice()).c_str());
}
