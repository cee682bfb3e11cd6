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

TEST_F(BundleTest, TablesAreReadInEveryFormThatTranslatorsSave) {
  struct Case {
    std::string content;
    std::map<std::string, std::string> texts;
  };
  const std::string bigEndian("\xFE\xFF\0\"\0a\0\"\0=\0\"\xD8\x3D\xDE\x00\0\"\0;", 20);
  const std::string littleEndian("\xFF\xFE\"\0a\0\"\0=\0\"\0\xFC\0\"\0;\0", 18);
  const Case cases[] = {
      {"\"a\" = \"b\";\n\"c\"=\"d\";", {{"a", "b"}, {"c", "d"}}},
      {"\xEF\xBB\xBF\"a\" = \"ü\";", {{"a", "ü"}}},
      {bigEndian, {{"a", "😀"}}},
      {littleEndian, {{"a", "ü"}}},
      {"/* \"x\" = \"y\"; */ // \"z\"\nkey.1 = \"v\"; plain = word;",
       {{"key.1", "v"}, {"plain", "word"}, {"x", "missing"}, {"z", "missing"}}},
      {"alone;", {{"alone", "alone"}}},
      {R"("q" = "\"\\\n\t\U00e9\Ud83d\ude00\z";)", {{"q", "\"\\\n\té😀z"}}},
      {"\"two\" = \"lines\nlong\";", {{"two", "lines\nlong"}}},
      {"<?xml version=\"1.0\"?><plist><dict><key>a</key><string>b</string></dict></plist>", {{"a", "b"}}},
      {"", {{"a", "missing"}}},
  };
  CaptureStderr();
  for (const auto& [content, texts] : cases) {
    const std::string name = "Case" + std::to_string(&content - &cases[0].content);
    folder_.write("App/" + name + ".strings", content);
    for (const auto& [key, text] : texts)
      EXPECT_EQ(NSLocalizedString(key, name, NSBundle::mainBundle(), "missing"), text) << content;
  }
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST_F(BundleTest, ADamagedTableKeepsItsStartAndNamesTheLineOnce) {
  struct Case {
    std::string damage, problem;
  };
  int count = 0;
  for (const auto& [damage, problem] : {
           Case{"\"b\" = \"c\"", "2: expected \";\" after \"b\""},
           Case{"\"b\" \"c\";", "2: expected \";\" after \"b\""},
           Case{"\"b\" = ;", "2: expected a quoted string"},
           Case{"\"b\" = ", "2: the file ends where a string is expected"},
           Case{"\n\"b\" = \"never\n\nclosed;", "3: a string has no closing quote"},
           Case{"\"b\" = \"\\", "2: a string has no closing quote"},
           Case{"/* never closed", "2: a comment has no end"},
           Case{"\"b\" = \"\\U12\";", "2: \"\\U\" takes four hexadecimal digits"},
           Case{std::string("\0", 1), "2: expected a quoted string"},
           Case{"\"b\" = \"\xFF\";", "1: has bytes that are not UTF-8"},
       }) {
    const std::string name = "Case" + std::to_string(count++);
    const std::string file = folder_.write("App/" + name + ".strings", "\"a\" = \"kept\";\n" + damage);
    CaptureStderr();
    for (int again = 0; again < 2; ++again)
      EXPECT_EQ(NSLocalizedString("a", name, NSBundle::mainBundle(), ""), "kept") << damage;
    EXPECT_EQ(GetCapturedStderr(), "tellvane-platform: " + file + ":" + problem + "\n");
  }
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
