#include "Foundation/NSBundle.h"

#include <gtest/gtest.h>

#include "Device/Device.h"
#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using testing_support::ScratchFolder;

class BundleTest : public testing::Test {
 protected:
  BundleTest() {
    Clock::shared().useVirtualTime();
    framework("App", "com.example.app");
    Device::start({.root = folder_.path() / "phone",
                   .mainBundle = folder_.path() / "App",
                   .bundleIdentifier = "com.example.app"});
  }
  /// A bundle folder of that identifier.
  void framework(const std::string& path, const std::string& identifier) {
    folder_.write(path + "/Info.plist", PropertyList(NSDictionary{{kCFBundleIdentifierKey, identifier},
                                                                  {"CFBundleDevelopmentRegion", "en"}})
                                            .xml());
  }
  void table(const std::string& language, const std::string& text) {
    folder_.write("App/" + language + "/Menu.strings", text);
  }
  std::string text(std::vector<std::string> languages, const std::string& key = "key",
                   const std::string& value = "") {
    Device::current().changeSettings(
        [&](DeviceSettings& settings) { settings.languages = std::move(languages); });
    return NSLocalizedString(key, "Menu", NSBundle::mainBundle(), value);
  }
  ScratchFolder folder_;
};

TEST_F(BundleTest, TextsComeFromTheClosestLanguageThatTheBundleHas) {
  for (const std::string language : {"de", "en", "zh-Hans", "zh_Hant_HK", "pt-BR", "fr"}) {
    table(language + ".lproj", "\"key\" = \"" + language + "\";");
  }
  folder_.write("App/ja.lproj/Other.strings", std::string("\"key\" = \"ja\";"));
  struct Case {
    std::vector<std::string> languages;
    const char* text;
  };
  for (const auto& [languages, expected] : {
           Case{{"de"}, "de"},
           Case{{"de-AT"}, "de"},
           Case{{"de-Latn-AT"}, "de"},
           Case{{"zh-Hans-CN"}, "zh-Hans"},
           Case{{"zh-CN"}, "zh-Hans"},
           Case{{"zh-Hant-HK"}, "zh_Hant_HK"},
           Case{{"pt-BR", "de"}, "pt-BR"},
           Case{{"pt", "de"}, "de"},
           Case{{"ja", "fr-CA", "de"}, "fr"},
           Case{{"sv"}, "en"},
           Case{{}, "en"},
           Case{{"../App/de"}, "en"},
       }) {
    EXPECT_EQ(text(languages), expected) << (languages.empty() ? "no language" : languages.front());
  }
  EXPECT_EQ(text({"de"}, "missing"), "missing");
  EXPECT_EQ(text({"de"}, "missing", "instead"), "instead");
  EXPECT_EQ(NSLocalizedString("key", "Menu", nullptr, ""), "key");
}

TEST_F(BundleTest, BaseAndUnlocalisedTablesComeLast) {
  table(".", "\"key\" = \"unlocalised\";");
  EXPECT_EQ(text({"de"}), "unlocalised");
  table("Base.lproj", "\"key\" = \"base\";");
  EXPECT_EQ(text({"de"}), "base");
  table("de.lproj", "\"key\" = \"de\";");
  EXPECT_EQ(text({"de"}), "de");
}

TEST_F(BundleTest, ADamagedTableSaysSoOnceAndKeepsItsStart) {
  table("de.lproj", "\"key\" = \"de\";\n\"other\" \"text\";");
  CaptureStderr();
  EXPECT_EQ(text({"de"}), "de");
  EXPECT_EQ(text({"de"}, "other"), "other");
  const std::string file = (folder_.path() / "App/de.lproj/Menu.strings").string();
  EXPECT_EQ(GetCapturedStderr(), "tellvane-platform: " + file + ":2: expected \";\" after \"other\"\n");
}

TEST_F(BundleTest, AreFoundByIdentifierWhereTheProcessCanLoadFrom) {
  framework("App/Frameworks/Inner.framework", "com.example.inner");
  framework("App/Plain.framework", "com.example.plain");
  framework("elsewhere/Outer.framework", "com.example.outer");
  framework("elsewhere/Outer.framework/Frameworks/Deep.framework", "com.example.deep");
  framework("elsewhere/NoFramework", "com.example.none");
  folder_.write("elsewhere/Damaged.framework/Info.plist", std::string("garbage"));
  setenv("IOS_FRAMEWORK_PATH", ("/nowhere::" + (folder_.path() / "elsewhere").string()).c_str(), 1);
  struct Case {
    const char *identifier, *path;
  };
  CaptureStderr();
  for (const auto& [identifier, path] : {
           Case{"com.example.app", "App"},
           Case{"com.example.inner", "App/Frameworks/Inner.framework"},
           Case{"com.example.plain", "App/Plain.framework"},
           Case{"com.example.outer", "elsewhere/Outer.framework"},
       }) {
    const auto bundle = NSBundle::bundleWithIdentifier(identifier);
    ASSERT_TRUE(bundle) << identifier;
    EXPECT_EQ(bundle->bundlePath(), folder_.path() / path);
    EXPECT_EQ(NSBundle::bundleWithPath(folder_.path() / path / "."), bundle) << "one bundle a folder";
  }
  EXPECT_FALSE(NSBundle::bundleWithIdentifier("com.example.none"));
  EXPECT_FALSE(NSBundle::bundleWithIdentifier("com.example.deep"));
  EXPECT_NE(GetCapturedStderr().find("Damaged.framework/Info.plist is neither"), std::string::npos);
}

}  // namespace
