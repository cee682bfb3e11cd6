#include <gtest/gtest.h>

#include "Foundation/NSKeyedArchiver.h"
#include "Foundation/NSKeyedUnarchiver.h"
#include "Tellvane/UIDevice+Tellvane.h"
#include "UIKit/UIDevice.h"
#include "info/TLVConstants.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::TestPhone;

TEST(DeviceModel, IsLookedUpByTheWholeCodeAndPassesUnknownCodesThrough) {
  const struct {
    const char* code;
    const char* name;
  } rows[] = {
      {"iPod7,1", "iPod Touch 6G"},
      {"iPhone3,2", "iPhone 4"},
      {"iPhone7,2", "iPhone 6"},
      {"iPhone7,1", "iPhone 6 Plus"},
      {"iPhone9,3", "iPhone 7"},
      {"iPhone9,2", "iPhone 7 Plus"},
      {"iPad2,4", "iPad 2"},
      {"iPad2,5", "iPad Mini"},
      {"iPad4,5", "iPad Mini 2"},
      {"iPad4,9", "iPad Mini 3"},
      {"iPad5,4", "iPad Air 2"},
      {"iPad5,2", "iPad Mini 4"},
      {"iPad6,8", "iPad Pro (12.9 inch)"},
      {"iPad6,3", "iPad Pro (9.7 inch)"},
      {"x86_64", "Simulator"},
      {"i386", "Simulator"},
      {"iPhone10,1", "iPhone10,1"},
      {"", ""},
      {"iphone8,1", "iphone8,1"},
      {"iPhone8,1 ", "iPhone8,1 "},
      {"iPhone8", "iPhone8"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.name, modelName(row.code)) << row.code;
}

TEST(DeviceModel, ComesFromTheMachineFieldAndSurvivesBytesThatAreNotText) {
  TestPhone phone;
  const auto device = UIDevice::currentDevice();
  EXPECT_EQ("iPhone 6", DEVICE_MODEL());
  const struct {
    std::string machine, code;
  } rows[] = {
      {"iPad5,3", "iPad5,3"},
      {std::string(300, 'x'), std::string(255, 'x')},  // the field ends with a NUL
      {"a\xFFz", "a\xFFz"},
  };
  for (const auto& row : rows) {
    phone.device().setMachine(row.machine);
    EXPECT_EQ(row.code, deviceCode(*device));
    EXPECT_EQ(row.code, send<std::string>(*device, "deviceCode")) << "by selector";
  }
  // The record stays readable.
  const auto archive =
      NSKeyedArchiver::archivedDataWithRootObject(NSDictionary{{"deviceModel", DEVICE_MODEL()}});
  const auto record = NSKeyedUnarchiver::unarchiveObjectWithData(archive->bytes());
  ASSERT_TRUE(record);
  EXPECT_EQ(PropertyList(NSDictionary{{"deviceModel", "a\uFFFDz"}}), *record);
}

TEST(DeviceInformation, NamesTheFamily) {
  TestPhone phone({.profile = "iPad Air 2"});
  EXPECT_EQ("iPad", deviceFamily(*UIDevice::currentDevice()));
}

TEST(DeviceInformation, FollowsTheWayTheDeviceIsHeld) {
  TestPhone phone;
  EXPECT_EQ("iPhone", deviceFamily(*UIDevice::currentDevice()));
  EXPECT_EQ("750.00 x 1334.00", DEVICE_RESOLUTION());
  phone.device().changeSettings([](DeviceSettings& settings) { settings.orientation = 3; });
  EXPECT_EQ("1334.00 x 750.00", DEVICE_RESOLUTION());
  EXPECT_EQ("Landscape Left", deviceOrientationString(*UIDevice::currentDevice()));
  const std::pair<long, const char*> names[] = {
      {-1, "Portrait"},      {0, "Unknown"},         {1, "Portrait"}, {2, "Portrait Upside Down"},
      {3, "Landscape Left"}, {4, "Landscape Right"}, {5, "Face Up"},  {6, "Face Down"},
      {7, "Portrait"}};
  for (const auto& [orientation, name] : names) EXPECT_EQ(name, orientationName(orientation));
}

TEST(DeviceInformation, TheLanguageIsReadAfreshAndHasAFallback) {
  TestPhone phone({.languages = {"de-AT", "fr"}});
  EXPECT_EQ("de-AT", DEVICE_LANGUAGE());
  phone.device().changeSettings([](DeviceSettings& settings) { settings.languages = {"ja"}; });
  EXPECT_EQ("ja", DEVICE_LANGUAGE());
  phone.device().changeSettings([](DeviceSettings& settings) { settings.languages.clear(); });
  EXPECT_EQ("en-US", DEVICE_LANGUAGE());
}

TEST(AppInformation, VersionsAreWholeOrZeroAndNamesFallBack) {
  using Info = std::optional<NSDictionary>;
  const Info both = NSDictionary{{"CFBundleShortVersionString", "1.2"}, {"CFBundleVersion", "7"}};
  EXPECT_EQ("iOS-1.2.7", versionText(both, "iOS-"));
  EXPECT_EQ("1.2.7", versionText(both, ""));
  for (const Info& broken :
       {Info(), Info(NSDictionary{}), Info(NSDictionary{{"CFBundleShortVersionString", "1.2"}}),
        Info(NSDictionary{{"CFBundleVersion", "7"}}),
        Info(NSDictionary{{"CFBundleShortVersionString", 1.2}, {"CFBundleVersion", "7"}})}) {
    EXPECT_EQ("0", versionText(broken, "iOS-"));
  }
  const std::vector<std::string> keys = {"CFBundleDisplayName", "CFBundleName"};
  EXPECT_EQ("Tellvane-Dev", nameText(std::nullopt, keys));
  EXPECT_EQ("N", nameText(NSDictionary{{"CFBundleName", "N"}}, keys));
  EXPECT_EQ("N", nameText(NSDictionary{{"CFBundleName", "N"}, {"CFBundleDisplayName", 5}}, keys));
  EXPECT_EQ("D", nameText(NSDictionary{{"CFBundleName", "N"}, {"CFBundleDisplayName", "D"}}, keys));
}

TEST(AppInformation, IsReadFromTheTwoBundles) {
  TestPhone phone;
  EXPECT_EQ("3.0.12", APP_VERSION());
  EXPECT_EQ("My Notes", APP_NAME());
  EXPECT_EQ("Notes", APP_BUNDLE_NAME());
  EXPECT_EQ("iOS-" TELLVANE_VERSION, TLV_SDK_VERSION());
  EXPECT_EQ(phone.device().home().string() + "/tmp/screenCapture.mp4", TLV_SCREEN_RECORDING_PATH());
}

TEST(AppInformation, ResolutionsHaveTwoDecimals) {
  EXPECT_EQ("320.00 x 568.00", resolutionText(320, 568));
  EXPECT_EQ("0.13 x 1242.33", resolutionText(0.125 + 0.001, 1242.3333));
}
