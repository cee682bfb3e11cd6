#include "UIKit/UILabel.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/UIKit/Picture.h"
#include "support/TestPhone.h"

using namespace ios;

namespace {

Picture drawn(UILabel& label) {
  return Picture::of(label.bounds().size, [&] { label.drawRect(label.bounds()); });
}

bool isBlue(std::uint32_t pixel) {
  return (pixel >> 24) > 40 && (pixel & 255) > 30 && (pixel >> 16 & 255) < 10;
}
bool isRed(std::uint32_t pixel) {
  return (pixel >> 24) > 40 && (pixel >> 16 & 255) > 30 && (pixel & 255) < 10;
}

// Black text with a blue end, so that it shows whether the end is there.
std::shared_ptr<NSAttributedString> withBlueEnd(const std::string& text, const std::string& end) {
  auto whole = std::make_shared<NSMutableAttributedString>(text + end);
  whole->addAttributes({{NSForegroundColorAttributeName, UIColor::colorWithHex(0x0000FF)}},
                       {text.size(), end.size()});
  return whole;
}

}  // namespace

TEST(UILabel, CentresItsTextVertically) {
  for (const double height : {20.0, 40.0, 100.0}) {
    UILabel label({{0, 0}, {100, height}});
    label.setText("xzoxzo");  // from the base line up to the height of an x
    const CGRect ink = drawn(label).ink();
    ASSERT_GT(ink.height(), 5) << height;
    EXPECT_NEAR(height / 2, ink.midY(), 3) << height;
  }
}

TEST(UILabel, ShrinksItsTextNoFurtherThanAllowedBeforeCuttingIt) {
  UILabel label({{0, 0}, {120, 30}});
  label.setAttributedText(withBlueEnd("A title that is longer th", "an"));
  EXPECT_EQ(CGRectZero, drawn(label).extent(isBlue)) << "cut";
  const double full = drawn(label).ink().height();
  label.setMinimumScaleFactor(0.4);
  const Picture shrunk = drawn(label);
  EXPECT_NE(CGRectZero, shrunk.extent(isBlue));
  EXPECT_LT(shrunk.ink().height(), full);
  EXPECT_GT(shrunk.ink().width(), 100) << "no smaller than it has to be";
  label.setMinimumScaleFactor(0.9);
  EXPECT_EQ(CGRectZero, drawn(label).extent(isBlue));
}

TEST(UILabel, ShowsAsManyLinesAsAreAllowedAndFit) {
  const std::string text = "Several words that need three lines of a narrow labe";
  struct Row {
    int lines;
    double height;
    bool whole;
  };
  for (const Row& row : {Row{0, 120, true}, Row{0, 45, false}, Row{1, 120, false}, Row{2, 120, false},
                         Row{9, 120, true}, Row{9, 10, false}}) {
    UILabel label({{0, 0}, {150, row.height}});
    label.setAttributedText(withBlueEnd(text, "l"));
    label.setNumberOfLines(row.lines);
    const Picture picture = drawn(label);
    EXPECT_EQ(row.whole, picture.extent(isBlue) != CGRectZero) << row.lines << " lines in " << row.height;
    EXPECT_FALSE(CGRectIsEmpty(picture.ink()));
  }
}

TEST(UILabel, DrawsAttributesAndForgetsThemWithANewText) {
  UILabel label({{0, 0}, {200, 60}});
  label.setTextColor(UIColor::colorWithHex(0xFF0000));
  auto text = std::make_shared<NSMutableAttributedString>("Small LARGE");
  text->addAttributes({{NSFontAttributeName, UIFont::systemFontOfSize(30)},
                       {NSForegroundColorAttributeName, UIColor::colorWithHex(0x0000FF)}},
                      {6, 5});
  label.setAttributedText(text);
  const Picture picture = drawn(label);
  const CGRect red = picture.extent(isRed), blue = picture.extent(isBlue);
  EXPECT_GT(red.width(), 20);
  EXPECT_LT(red.maxX(), blue.minX());
  EXPECT_GT(blue.height(), red.height() * 1.3);
  EXPECT_EQ("Small LARGE", label.text());

  label.setText("Plain");
  EXPECT_FALSE(label.attributedText());
  EXPECT_EQ(CGRectZero, drawn(label).extent(isBlue));
  label.setFont(nullptr);
  label.setTextColor(nullptr);
  EXPECT_FALSE(CGRectIsEmpty(drawn(label).ink()));
}

TEST(UILabel, AsksForTheRoomItsTextNeeds) {
  const std::string text = "A sentence that would like to have some room for itself";
  UILabel label;
  EXPECT_EQ((CGSize{}), label.sizeThatFits({100, 100}));
  label.setText(text);
  const CGSize line = label.sizeThatFits({100, 0});
  EXPECT_GT(line.width, 300) << "one line grows to the width of its text";
  label.setNumberOfLines(0);
  const CGSize column = label.sizeThatFits({100, 0});
  EXPECT_LE(column.width, 100);
  EXPECT_GT(column.height, 3 * line.height);
  label.setNumberOfLines(2);
  EXPECT_LT(label.sizeThatFits({100, 0}).height, 2.5 * line.height);
  // What it asked for is enough for it.
  label.setNumberOfLines(0);
  label.setAttributedText(withBlueEnd(text, "!"));
  label.setFrame({{0, 0}, label.sizeThatFits({100, 0})});
  EXPECT_NE(CGRectZero, drawn(label).extent(isBlue));
}

TEST(UILabel, IsCalledByItsTextUnlessItWasGivenAName) {
  UILabel label;
  label.setText("Capture Screen");
  EXPECT_EQ("Capture Screen", label.accessibilityLabel());
  label.setAccessibilityLabel("Camera");
  EXPECT_EQ("Camera", label.accessibilityLabel());
}

// Chinese and Japanese share characters and write some of them differently.
TEST(UILabel, WritesSharedCharactersAsTheUsersFirstLanguageDoes) {
  testing_support::TestPhone phone({.languages = {"ja-JP", "en-US"}});
  const auto pixels = [](const char* text) {
    UILabel label({{0, 0}, {200, 50}});
    label.setFont(UIFont::systemFontOfSize(40));
    label.setText(text);
    const Picture picture = drawn(label);
    std::vector<std::uint32_t> all;
    for (std::size_t i = 0; i < picture.width() * picture.height(); ++i)
      all.push_back(picture.at(i % picture.width(), i / picture.width()));
    return all;
  };
  const char* const shared = "\u76F4\u9AA8\u8FD4";
  const auto japanese = pixels(shared), latin = pixels("Notes");
  std::map<std::string, std::vector<std::uint32_t>> forms;
  for (const char* language : {"zh-Hans-CN", "zh-Hant-TW", "ja"}) {
    phone.device().changeSettings([&](DeviceSettings& settings) { settings.languages = {language, "ja"}; });
    forms[language] = pixels(shared);
    EXPECT_EQ(latin, pixels("Notes")) << language;
  }
  EXPECT_EQ(japanese, forms["ja"]);
  EXPECT_NE(japanese, forms["zh-Hans-CN"]);
  EXPECT_NE(japanese, forms["zh-Hant-TW"]);
  EXPECT_NE(forms["zh-Hans-CN"], forms["zh-Hant-TW"]);
}
