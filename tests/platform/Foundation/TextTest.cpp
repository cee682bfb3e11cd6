#include <gtest/gtest.h>

#include "Foundation/NSAttributedString.h"
#include "Foundation/NSLocale.h"
#include "Foundation/StringsTable+Private.h"

namespace {

using namespace ios;

std::string shown(const StringsTable& table) {
  std::string text;
  for (const auto& [key, value] : table.texts) text += key + "=" + value + "|";
  return text + table.problem;
}

StringsTable read(const std::string& text) {
  return readStringsTable({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

TEST(StringsTable, IsReadInEveryFormThatTranslatorsSave) {
  struct Case {
    std::string text, shown;
  };
  const std::string bigEndian("\xFE\xFF\0\"\0a\0\"\0=\0\"\xD8\x3D\xDE\x00\0\"\0;", 20);
  const std::string littleEndian("\xFF\xFE\"\0a\0\"\0=\0\"\0\xFC\0\"\0;\0", 18);
  for (const auto& [text, expected] : {
           Case{"\"a\" = \"b\";\n\"c\"=\"d\";", "a=b|c=d|"},
           Case{"\xEF\xBB\xBF\"a\" = \"ü\";", "a=ü|"},
           Case{bigEndian, "a=😀|"},
           Case{littleEndian, "a=ü|"},
           Case{"/* \"x\" = \"y\"; */ // \"z\"\nkey.1 = \"v\"; plain = word; alone;",
                "alone=alone|key.1=v|plain=word|"},
           Case{R"("q" = "\"\\\n\t\U00e9\Ud83d\ude00\z";)", "q=\"\\\n\té😀z|"},
           Case{"\"two\" = \"lines\nlong\";", "two=lines\nlong|"},
           Case{"<?xml version=\"1.0\"?><plist><dict><key>a</key><string>b</string></dict></plist>", "a=b|"},
           Case{"", ""},
       }) {
    EXPECT_EQ(shown(read(text)), expected);
  }
}

TEST(StringsTable, KeepsWhatStandsBeforeTheDamageAndNamesItsLine) {
  struct Case {
    std::string damage, problem;
  };
  for (const auto& [damage, problem] : {
           Case{"\"b\" = \"c\"", "2: expected \";\" after \"b\""},
           Case{"\"b\" \"c\";", "2: expected \";\" after \"b\""},
           Case{"\"b\" = ;", "2: expected a text in quotes"},
           Case{"\"b\" = ", "2: the file ends where a text is expected"},
           Case{"\n\"b\" = \"never\n\nclosed;", "3: a text has no closing quote"},
           Case{"\"b\" = \"\\", "2: a text has no closing quote"},
           Case{"/* never closed", "2: a comment has no end"},
           Case{"\"b\" = \"\\U12\";", "2: \"\\U\" takes four hexadecimal digits"},
           Case{std::string("\0", 1), "2: expected a text in quotes"},
           Case{"\"b\" = \"\xFF\";", "1: has bytes that are not UTF-8"},
       }) {
    const StringsTable table = read("\"a\" = \"kept\";\n" + damage);
    EXPECT_EQ(table.problem, problem);
    EXPECT_EQ(table.texts.count("a"), 1u) << damage;
  }
}

TEST(AttributedString, AttributesCutRunsAndEqualNeighboursJoin) {
  const id font = std::make_shared<NSObject>(), bold = std::make_shared<NSObject>(),
           red = std::make_shared<NSObject>();
  NSMutableAttributedString text("0123456789", {{"font", font}});
  text.addAttributes({{"font", bold}}, {2, 3});
  text.addAttributes({{"font", bold}, {"color", red}}, {4, 2});
  text.addAttributes({{"font", bold}}, {8, 100});
  text.addAttributes({{"font", bold}}, {100, 1});
  text.addAttributes({{"font", bold}}, {6, static_cast<std::size_t>(-1)});
  const NSAttributes plain{{"font", font}}, heavy{{"font", bold}}, both{{"font", bold}, {"color", red}};
  const std::vector<std::pair<NSRange, NSAttributes>> expected = {
      {{0, 2}, plain}, {{2, 2}, heavy}, {{4, 2}, both}, {{6, 4}, heavy}};
  ASSERT_EQ(text.runs().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(text.runs()[i].range, expected[i].first) << i;
    EXPECT_EQ(text.runs()[i].attributes, expected[i].second) << i;
  }
  EXPECT_EQ(rangeOfString("Tellvane in Tellvane", "Tellvane"), (NSRange{0, 8}));
  EXPECT_FALSE(rangeOfString("text", ""));
}

TEST(Locale, DirectionFollowsTheScriptWhereOneIsNamed) {
  for (const char* language : {"ar", "ar-EG", "he-IL", "fa", "ur-PK", "az-Arab", "uz-Arab-AF", "ckb"}) {
    EXPECT_TRUE(NSLocale::isRightToLeft(language)) << language;
  }
  for (const char* language : {"en-US", "de", "ja", "", "ur-Latn", "arn", "zh-Hans", "ug-Cyrl"}) {
    EXPECT_FALSE(NSLocale::isRightToLeft(language)) << language;
  }
}

}  // namespace
