#include <gtest/gtest.h>

#include "Foundation/NSAttributedString.h"
#include "Foundation/NSLocale.h"

namespace {

using namespace ios;

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
