#include "Device/Device.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>

#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using testing_support::outputOfPython;
using testing_support::ScratchFolder;

Device& startIn(const ScratchFolder& folder, std::optional<DeviceSettings> settings = std::nullopt) {
  Clock::shared().useVirtualTime();
  return Device::start({.root = folder.path() / "phone",
                        .mainBundle = folder.path(),
                        .bundleIdentifier = "com.example.app",
                        .settings = std::move(settings)});
}

TEST(Device, WritesItsFirstSettingsInAFormThatPeopleAndOthersRead) {
  const ScratchFolder folder;
  Device& device = startIn(folder);
  device.setPermission("microphone", Permission::denied);
  EXPECT_EQ(outputOfPython(folder, "import plistlib; print(plistlib.load(open('" +
                                       (folder.path() / "phone/Settings.plist").string() + "','rb')))"),
            "{'Languages': ['en-US'], 'OSVersion': '10.3.1', 'Orientation': 1, 'Permissions': "
            "{'com.example.app': {'microphone': 'denied'}}, 'Profile': 'iPhone 6', 'StatusBarTime': '', "
            "'TextSize': 'L'}\n");
  EXPECT_EQ(device.permission("microphone"), Permission::denied);
  EXPECT_EQ(device.permission("photos"), Permission::notDetermined);
}

TEST(Device, TakesUpWhatAnotherProcessSet) {
  const ScratchFolder folder;
  Device& device = startIn(folder, DeviceSettings{.languages = {"de-AT"}});
  int told = 0;
  device.addSettingsObserver([&told] { ++told; });

  DeviceSettings others = device.settings();
  others.profile = "iPad Air 2";
  others.orientation = 3;
  folder.write("phone/Settings.plist", settingsPropertyList(others).xml());
  device.reloadSettings();
  device.reloadSettings();
  EXPECT_EQ(told, 1) << "an unchanged file was reported";
  EXPECT_EQ(device.screenSize(), CGSizeMake(1024, 768));
  EXPECT_EQ(device.machine(), "iPad5,3");

  // A change made here must not undo what the other process wrote and this one has not seen.
  others.osVersion = "11.0";
  folder.write("phone/Settings.plist", settingsPropertyList(others).xml());
  device.changeSettings([](DeviceSettings& settings) { settings.languages = {"ja"}; });
  EXPECT_EQ(device.settings().osVersion, "11.0");
  std::string problem;
  const auto written = PropertyList::parse(folder.path() / "phone/Settings.plist");
  ASSERT_TRUE(written);
  EXPECT_EQ(settingsFromPropertyList(*written, problem), device.settings());
}

TEST(Device, SetsDamagedSettingsAside) {
  const ScratchFolder folder;
  folder.write("phone/Settings.plist", std::string("<plist><dict><key>Languages</key>"));
  CaptureStderr();
  Device& device = startIn(folder);
  const std::string line = GetCapturedStderr();
  EXPECT_NE(line.find("Settings.plist is damaged"), std::string::npos) << line;
  EXPECT_NE(line.find("Settings.plist.damaged"), std::string::npos) << line;
  EXPECT_EQ(folder.read("phone/Settings.plist.damaged"), "<plist><dict><key>Languages</key>");
  EXPECT_EQ(device.settings(), DeviceSettings());
  EXPECT_TRUE(PropertyList::parse(folder.path() / "phone/Settings.plist"));
}

TEST(Device, InvalidSettingsAreNamed) {
  struct Case {
    PropertyList list;
    const char* problem;
  };
  for (const auto& [list, expected] : {
           Case{"text", "not a dictionary"},
           Case{NSDictionary{{"Languages", "de"}}, "Languages"},
           Case{NSDictionary{{"Languages", NSArray{1}}}, "Languages"},
           Case{NSDictionary{{"Languages", NSArray{"de", ""}}}, "Languages"},
           Case{NSDictionary{{"Profile", "iPhone 99"}}, "Profile"},
           Case{NSDictionary{{"Orientation", 7}}, "Orientation"},
           Case{NSDictionary{{"Orientation", 1.0}}, "Orientation"},
           Case{NSDictionary{{"TextSize", "huge"}}, "TextSize"},
           Case{NSDictionary{{"Permissions", NSDictionary{{"a", NSDictionary{{"photos", "yes"}}}}}},
                "Permissions"},
       }) {
    std::string problem;
    EXPECT_FALSE(settingsFromPropertyList(list, problem)) << expected;
    EXPECT_NE(problem.find(expected), std::string::npos) << problem;
  }
}

TEST(Device, KnowsTheFormOfALanguageTag) {
  for (const char* tag : {"de", "de-AT", "ast", "zh-Hant-TW", "es-419", "sl-rozaj-biske", "de-CH-1996",
                          "en-a-myext-b-another", "ar-u-nu-latn", "zh-cmn-Hans-CN", "de-x-private"}) {
    EXPECT_TRUE(isLanguageTag(tag)) << tag;
  }
  for (const auto& text :
       std::vector<std::string>{"", "d", "de_AT", "de-", "-de", "de--AT", "de-AT-", "de-AT-DE", "en-u", "ä",
                                "de AT", "../de", std::string(2000, 'a')}) {
    EXPECT_FALSE(isLanguageTag(text)) << text;
  }
}

// By default the system silently kills a process that writes too long a file.
TEST(Device, AFileBeyondTheSizeLimitIsAReportedFailure) {
  const ScratchFolder folder;
  startIn(folder);
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  limit.rlim_cur = 1000;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  const auto problem = writeFileAtomically(folder.path() / "large", std::vector<std::uint8_t>(2000));
  limit.rlim_cur = limit.rlim_max;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  ASSERT_TRUE(problem);
  EXPECT_EQ(problem->code, ENOSPC);
}

TEST(Device, SurvivesAFailingDiskAndWritesEverythingOnceItWorks) {
  const ScratchFolder folder;
  setDiskFault([](const std::string&, const std::filesystem::path&) { return EROFS; });
  CaptureStderr();
  Device& device = startIn(folder);
  device.setPermission("photos", Permission::authorized);
  EXPECT_EQ(device.permission("photos"), Permission::authorized);
  EXPECT_EQ(device.home(), folder.path() / "phone/Containers/com.example.app");
  device.home();
  const std::string lines = GetCapturedStderr();
  EXPECT_NE(lines.find("tellvane-platform: could not create " + device.root().string()), std::string::npos)
      << lines;
  EXPECT_NE(lines.find("Read-only file system"), std::string::npos) << lines;
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "phone"));

  setDiskFault(nullptr);
  device.setPermission("microphone", Permission::denied);
  std::string problem;
  const auto written = PropertyList::parse(folder.path() / "phone/Settings.plist", &problem);
  ASSERT_TRUE(written) << problem;
  const auto settings = settingsFromPropertyList(*written, problem);
  ASSERT_TRUE(settings) << problem;
  EXPECT_EQ(settings->permissions.at("com.example.app"),
            (std::map<std::string, Permission>{{"microphone", Permission::denied},
                                               {"photos", Permission::authorized}}));
  EXPECT_TRUE(std::filesystem::is_directory(device.home() / "tmp"));
}

}  // namespace
