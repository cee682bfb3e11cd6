#include "CoreGraphics/Text.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Canvas.h"

using namespace ios;

namespace {

const std::string kLong = "A sentence that is long enough to need several lines in a narrow column of text";

TextRun run(std::string text, double size = 17, Pixel color = kBlack) {
  return {std::move(text), {kSystemFontFamily, 400, size}, colorOf(color)};
}

TextLayout layoutOf(const std::string& text, double width = 0,
                    TextAlignment alignment = TextAlignment::natural, int lines = 0) {
  return TextLayout({run(text)}, width, alignment, lines);
}

// What the layout looks like on white, at two pixels a point.
Canvas drawn(const TextLayout& layout, double width, double height) {
  Canvas canvas(static_cast<std::size_t>(width * 2), static_cast<std::size_t>(height * 2), true, 2);
  canvas.fill({{0, 0}, {width, height}}, kWhite);
  layout.draw(canvas.context, {0, 0});
  return canvas;
}

struct Span {
  std::size_t first = ~std::size_t{0}, last = 0;
  void add(std::size_t value) {
    first = std::min(first, value);
    last = std::max(last, value);
  }
};

Span rowsOf(const Canvas& canvas, Pixel color) {
  Span span;
  for (std::size_t i = 0; i < canvas.width * canvas.height; ++i) {
    if (canvas.at(i % canvas.width, i / canvas.width) == color) span.add(i / canvas.width);
  }
  return span;
}

Span columnsOf(const Canvas& canvas, Pixel color) {
  Span span;
  for (std::size_t i = 0; i < canvas.width * canvas.height; ++i) {
    if (canvas.at(i % canvas.width, i / canvas.width) == color) span.add(i % canvas.width);
  }
  return span;
}

// Whether the ink is framed by a line at each side, as the box of a character that no font has.
bool isMissingGlyph(const std::string& character) {
  const Canvas canvas = drawn(TextLayout({run(character, 40)}, 0, TextAlignment::left, 0), 80, 80);
  const auto bands = canvas.bands(kWhite);
  const auto [left, right] = canvas.columns(kWhite);
  if (bands.empty() || left > right) return true;
  const auto inkOfColumn = [&](std::size_t from, std::size_t to) {
    std::size_t most = 0;
    for (std::size_t x = from; x <= to; ++x) {
      std::size_t ink = 0;
      for (std::size_t y = 0; y < canvas.height; ++y) ink += canvas.at(x, y) != kWhite;
      most = std::max(most, ink);
    }
    return most;
  };
  const std::size_t tall = bands.back().second - bands.front().first + 1;
  return inkOfColumn(left, left + 3) * 10 >= tall * 9 && inkOfColumn(right - 3, right) * 10 >= tall * 9;
}

}  // namespace

TEST(TextLayout, GrowsWithItsTextAndFont) {
  const CGSize small = layoutOf("Notes").size();
  EXPECT_GT(small.width, 30);
  EXPECT_LT(small.width, 70);
  EXPECT_EQ(small.width, std::round(small.width));
  EXPECT_GT(layoutOf("Notes and more").size().width, small.width);
  EXPECT_EQ(layoutOf("Notes and more").size().height, small.height);
  const CGSize large = TextLayout({run("Notes", 34)}, 0, TextAlignment::natural, 0).size();
  EXPECT_NEAR(small.width * 2, large.width, 2);
  EXPECT_NEAR(small.height * 2, large.height, 2);
  EXPECT_EQ((CGSize{}), layoutOf("").size());
  EXPECT_EQ(0, layoutOf("").lineCount());
}

TEST(TextLayout, WrapsIntoItsWidthWithoutOverlap) {
  for (const std::string& text :
       {kLong, std::string("Oneverylongwordthathasnospaceatallandmustbebrokensomewhere"),
        std::string("録画した画面をテキストとともに開発者へ送ることができます。ご意見をお寄せください。")}) {
    const TextLayout layout = layoutOf(text, 120);
    EXPECT_GT(layout.lineCount(), 2) << text;
    EXPECT_LE(layout.size().width, 120) << text;
    EXPECT_FALSE(layout.truncated());
  }
  // Descenders above, rings and dots below: they must not meet.
  const TextLayout tight({run("gjpqy\n", 17, kRed), run("ÅÄÖÉ", 17, kBlue)}, 0, TextAlignment::left, 0);
  const Canvas canvas = drawn(tight, 100, 60);
  const Span red = rowsOf(canvas, kRed), blue = rowsOf(canvas, kBlue);
  EXPECT_LT(red.last, blue.first);
  EXPECT_LE(static_cast<double>(blue.last) / 2, tight.size().height);
}

TEST(TextLayout, CutsWhatDoesNotFitWithAnEllipsis) {
  struct Row {
    const char* name;
    std::string text;
    double width;
    int lines;
    bool cut;
    int count;
  };
  for (const Row& row :
       {Row{"one of many lines", kLong, 120, 1, true, 1}, Row{"two of many lines", kLong, 120, 2, true, 2},
        Row{"all lines", kLong, 120, 20, false, 7}, Row{"paragraphs", "a\nb\nc", 0, 2, true, 2},
        Row{"right to left", "تسجيل الشاشة وإرسال ملاحظة إلى المطور", 120, 1, true, 1},
        Row{"no room at all", kLong, 1, 1, true, 1}}) {
    SCOPED_TRACE(row.name);
    const TextLayout layout = layoutOf(row.text, row.width, TextAlignment::natural, row.lines);
    EXPECT_EQ(row.cut, layout.truncated());
    if (row.cut) {
      EXPECT_EQ(row.count, layout.lineCount());
    }
    if (row.width <= 20) continue;
    EXPECT_LE(layout.size().width, row.width);
    if (row.cut) {
      EXPECT_GT(layout.size().width, row.width * 0.6) << "more would have fitted";
    }
  }
  // A paragraph that was left out shows, though the line itself had room.
  EXPECT_EQ(layoutOf("a…").size(), layoutOf("a\nb", 0, TextAlignment::natural, 1).size());
}

TEST(TextLayout, AlignsByTheDirectionOfTheText) {
  struct Row {
    const char* text;
    TextAlignment alignment;
    double share;  // of the free room that is left of the text
  };
  const char *latin = "Screen", *arabic = "تسجيل الشاشة", *hebrew = "הקלטת מסך";
  for (const Row& row : {Row{latin, TextAlignment::natural, 0}, Row{latin, TextAlignment::right, 1},
                         Row{latin, TextAlignment::center, 0.5}, Row{arabic, TextAlignment::natural, 1},
                         Row{hebrew, TextAlignment::natural, 1}, Row{arabic, TextAlignment::left, 0},
                         Row{arabic, TextAlignment::right, 1}, Row{arabic, TextAlignment::center, 0.5}}) {
    const TextLayout layout = layoutOf(row.text, 200, row.alignment);
    const auto [left, right] = drawn(layout, 200, 40).columns(kWhite);
    ASSERT_LT(left, right) << row.text;
    const double room = 400 - static_cast<double>(right - left);
    EXPECT_NEAR(row.share, static_cast<double>(left) / room, 0.03)
        << row.text << static_cast<int>(row.alignment);
  }
  const Canvas justified = drawn(layoutOf(kLong, 200, TextAlignment::justified), 200, 100);
  EXPECT_GT(justified.columns(kWhite).second, 393u);
  EXPECT_LT(justified.columns(kWhite).first, 6u);
}

TEST(TextLayout, HasGlyphsForTheLanguagesItIsShownIn) {
  EXPECT_TRUE(isMissingGlyph("\U0010FFFD")) << "the detector must know a missing glyph";
  for (const char* character :
       {"ß", "é", "ñ", "あ", "ア", "撮", "影", "录", "制", "幕", "ت", "ش", "한", "ש", "ж"}) {
    EXPECT_FALSE(isMissingGlyph(character)) << character;
  }
}

TEST(TextLayout, DrawsEachRunInItsOwnColourAndFont) {
  const TextLayout layout({run("Wide ", 17, kRed), run("Large", 40, kBlue)}, 0, TextAlignment::left, 0);
  const Canvas canvas = drawn(layout, 200, 60);
  const Span red = columnsOf(canvas, kRed), blue = columnsOf(canvas, kBlue);
  ASSERT_LT(red.first, red.last);
  EXPECT_LT(red.last, blue.first);
  EXPECT_GT(blue.last - blue.first, red.last - red.first);
}

TEST(TextLayout, ShowsBrokenTextInsteadOfFailing) {
  using namespace std::string_literals;
  for (const std::string& text :
       {"\xff\xfe"s, "a\0b"s, "\xed\xa0\x80"s, "cut \xe2\x82"s, "\u202e\u2066\u200f"s,
        std::string(5000, '\n'), "e" + std::string(2000, '\xcc')}) {
    const TextLayout layout = layoutOf(text, 100, TextAlignment::natural, 3);
    EXPECT_GT(layout.size().height, 0);
    EXPECT_LE(layout.lineCount(), 3);
    layout.draw(Canvas(10, 10).context, {0, 0});
  }
  EXPECT_EQ(layoutOf("\ufffd\ufffd").size(), layoutOf("\xff\xfe").size());
  for (const double size : {0.0, -5.0, std::nan(""), 1e12}) {
    EXPECT_GE(TextLayout({run("text", size)}, 100, TextAlignment::left, 1).size().height, 0) << size;
  }
}

// A layout is measured once and drawn at any scale: its glyphs must stay where it put them.
TEST(TextLayout, CoversTheSameWidthAtEachScale) {
  const TextLayout layout = layoutOf("Größenänderung 12345");
  for (const double scale : {1.0, 2.0, 3.0}) {
    Canvas canvas(static_cast<std::size_t>(300 * scale), static_cast<std::size_t>(40 * scale), true, scale);
    canvas.fill({{0, 0}, {300, 40}}, kWhite);
    layout.draw(canvas.context, {0, 0});
    EXPECT_NEAR(layout.size().width, static_cast<double>(canvas.columns(kWhite).second) / scale, 2.5)
        << scale;
  }
}

TEST(FontNamed, KnowsThePlatformsNamesOnly) {
  FontDescription font;
  for (const char* known :
       {"HelveticaNeue", "HelveticaNeue-Medium", "HelveticaNeue-Light", "HelveticaNeue-BoldItalic"}) {
    EXPECT_TRUE(fontNamed(known, 12, font)) << known;
  }
  for (const char* unknown : {"", "-", "-Bold", "Comic", "HelveticaNeue-", "HelveticaNeue-Wide",
                              "helveticaneue", "Liberation Sans"}) {
    EXPECT_FALSE(fontNamed(unknown, 12, font)) << unknown;
  }
  FontDescription regular, medium;
  ASSERT_TRUE(fontNamed("HelveticaNeue", 20, regular) && fontNamed("HelveticaNeue-Medium", 20, medium));
  const auto width = [](const FontDescription& f) {
    return TextLayout({{"Emphasis", f, {}}}, 0, TextAlignment::left, 1).size().width;
  };
  EXPECT_GT(width(medium), width(regular)) << "emphasis must show";
}
