#include "CoreGraphics/CGContext.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>

#include "Canvas.h"

using namespace ios;

namespace {

constexpr std::uint32_t kLayout = kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Little;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// 2 × 2: red and green above, blue and white below.
CGImageRef fourColours(bool opaque = true) {
  Canvas canvas(2, 2);
  canvas.fill({{0, 0}, {1, 1}}, kRed);
  canvas.fill({{1, 0}, {1, 1}}, kGreen);
  canvas.fill({{0, 1}, {1, 1}}, kBlue);
  canvas.fill({{1, 1}, {1, 1}}, kWhite);
  return canvas.image(opaque);
}

}  // namespace

TEST(CGBitmapContext, RefusesWhatItCannotDrawInto) {
  std::vector<std::uint32_t> memory(16 * 16);
  struct Row {
    const char* name;
    void* data;
    std::size_t width, height, bits, stride;
    std::uint32_t info;
  };
  for (const Row& row : {Row{"rows of no memory", nullptr, 4, 4, 8, 16, kLayout},
                         Row{"own memory of another layout", nullptr, 4, 4, 8, 0, 1},
                         Row{"too much memory of its own", nullptr, 1 << 14, 1 << 14, 8, 0, kLayout},
                         Row{"no width", memory.data(), 0, 4, 8, 16, kLayout},
                         Row{"no height", memory.data(), 4, 0, 8, 16, kLayout},
                         Row{"16 bits", memory.data(), 4, 4, 16, 32, kLayout},
                         Row{"odd stride", memory.data(), 4, 4, 8, 18, kLayout},
                         Row{"short stride", memory.data(), 4, 4, 8, 12, kLayout},
                         Row{"other layout", memory.data(), 4, 4, 8, 16, 1},
                         Row{"too wide", memory.data(), 1 << 20, 1, 8, 4 << 20, kLayout}}) {
    SCOPED_TRACE(row.name);
    const auto context =
        CGBitmapContextCreate(row.data, row.width, row.height, row.bits, row.stride, {}, row.info);
    EXPECT_FALSE(context);
    CGContextSaveGState(context);
    CGContextFillRect(context, {{0, 0}, {1, 1}});
    CGContextRestoreGState(context);
  }
}

// An image taken without a copy must not change under its holder.
TEST(CGBitmapContext, GivesAnImageThatStaysAsItWasWhileDrawingGoesOn) {
  std::vector<std::uint32_t> memory(2 * 2);
  struct Row {
    const char* name;
    void* data;
    std::size_t stride;
    std::uint32_t info;
    Pixel untouched;
  };
  for (const Row& row : {Row{"memory of the caller's", memory.data(), 8, kLayout, kClear},
                         Row{"memory of its own", nullptr, 0, kLayout, kClear},
                         Row{"opaque", nullptr, 0, kCGImageAlphaNoneSkipFirst | kCGBitmapByteOrder32Little,
                             Pixel{0xFF000000}}}) {
    SCOPED_TRACE(row.name);
    const auto context =
        CGBitmapContextCreate(row.data, 2, 2, 8, row.stride, CGColorSpaceCreateDeviceRGB(), row.info);
    ASSERT_TRUE(context);
    CGContextSetFillColorWithColor(context, colorOf(kRed));
    CGContextFillRect(context, {{0, 1}, {1, 1}});
    const auto first = CGBitmapContextCreateImage(context);
    CGContextSetFillColorWithColor(context, colorOf(kGreen));
    CGContextFillRect(context, {{0, 1}, {2, 1}});
    const auto second = CGBitmapContextCreateImage(context);
    const auto topRow = [](const CGImage& image) {
      std::array<Pixel, 2> pixels;
      std::memcpy(pixels.data(), image.pixels(), sizeof pixels);
      return pixels;
    };
    ASSERT_TRUE(first && second);
    EXPECT_EQ((std::array{kRed, row.untouched}), topRow(*first));
    EXPECT_EQ((std::array{kGreen, kGreen}), topRow(*second));
    EXPECT_EQ(row.untouched == kClear, !first->isOpaque());
  }
  EXPECT_FALSE(CGBitmapContextCreateImage(nullptr));
}

TEST(CGContext, HasItsOriginAtTheBottomLeftUntilItIsFlipped) {
  Canvas plain(4, 4, false);
  plain.fill({{0, 0}, {2, 1}}, kRed);
  EXPECT_EQ(kRed, plain.at(0, 3));
  EXPECT_EQ(kRed, plain.at(1, 3));
  EXPECT_EQ(kClear, plain.at(2, 3));
  EXPECT_EQ(kClear, plain.at(0, 2));

  Canvas flipped(4, 4, true, 2);
  flipped.fill({{0, 0}, {1, 0.5}}, kRed);
  EXPECT_EQ(kRed, flipped.at(1, 0));
  EXPECT_EQ(kClear, flipped.at(1, 1));
  EXPECT_EQ(kClear, flipped.at(0, 3));
}

TEST(CGContext, KeepsPremultipliedPixelsAndLeavesPaddingAlone) {
  Canvas canvas(3, 2, true, 1, 2);
  CGContextSetFillColorWithColor(canvas.context, {1, 0.5, 0, 0.5});
  CGContextFillRect(canvas.context, {{0, 0}, {3, 2}});
  EXPECT_EQ(Pixel{0x80804000}, canvas.at(2, 1));
  EXPECT_EQ(kClear, canvas.at(3, 0));
  canvas.fill({{0, 0}, {3, 1}}, kWhite);
  CGContextSetFillColorWithColor(canvas.context, {0, 0, 0, 0.5});
  CGContextFillRect(canvas.context, {{0, 0}, {3, 1}});
  EXPECT_NEAR(0x7F, canvas.at(0, 0).argb & 255, 1);
  EXPECT_EQ(0xFFu, canvas.at(0, 0).argb >> 24);
  CGContextClearRect(canvas.context, {{0, 0}, {3, 1}});
  EXPECT_EQ(kClear, canvas.at(0, 0));
}

TEST(CGContext, RestoresClipColourAndTransformAndSurvivesTooManyRestores) {
  Canvas canvas(8, 8);
  canvas.fill({}, kGreen);
  CGContextSaveGState(canvas.context);
  CGContextClipToRect(canvas.context, {{0, 0}, {4, 8}});
  CGContextTranslateCTM(canvas.context, 2, 0);
  canvas.fill({{0, 0}, {8, 1}}, kRed);
  CGContextRestoreGState(canvas.context);
  CGContextRestoreGState(canvas.context);
  CGContextRestoreGState(canvas.context);
  CGContextFillRect(canvas.context, {{0, 1}, {8, 1}});
  EXPECT_EQ(kClear, canvas.at(1, 0));
  EXPECT_EQ(kRed, canvas.at(3, 0));
  EXPECT_EQ(kClear, canvas.at(4, 0));
  EXPECT_EQ(kGreen, canvas.at(7, 1));
}

// A view that is scaled to nothing in the middle of an animation must not take the rest of the frame with it.
TEST(CGContext, DrawsNothingWhileTheTransformIsFlatAndGoesOnAfterwards) {
  for (const double factor : {0.0, kNaN, std::numeric_limits<double>::infinity()}) {
    Canvas canvas(4, 4);
    CGContextSaveGState(canvas.context);
    CGContextScaleCTM(canvas.context, factor, 1);
    canvas.fill({{0, 0}, {4, 4}}, kRed);
    CGContextDrawImage(canvas.context, {{0, 0}, {4, 4}}, fourColours());
    CGContextDrawVerticalGradient(canvas.context, {{0, 0}, {4, 4}}, {}, {});
    CGContextClipToRect(canvas.context, {{0, 0}, {4, 4}});
    CGContextBeginTransparencyLayer(canvas.context);
    canvas.fill({{0, 0}, {4, 4}}, kRed);
    CGContextEndTransparencyLayer(canvas.context, 1);
    CGContextRestoreGState(canvas.context);
    EXPECT_TRUE(canvas.bands(kClear).empty()) << factor;
    canvas.fill({{0, 0}, {4, 4}}, kGreen);
    EXPECT_EQ(kGreen, canvas.at(3, 3)) << factor;
  }
}

TEST(CGContext, BlendsALayerAsOne) {
  Canvas canvas(4, 1);
  canvas.fill({{0, 0}, {4, 1}}, kWhite);
  CGContextBeginTransparencyLayer(canvas.context);
  canvas.fill({{0, 0}, {2, 1}}, kRed);
  canvas.fill({{1, 0}, {2, 1}}, kBlue);
  CGContextSaveGState(canvas.context);
  CGContextTranslateCTM(canvas.context, 100, 100);
  CGContextEndTransparencyLayer(canvas.context, 0.5);
  CGContextEndTransparencyLayer(canvas.context, 0.5);
  canvas.fill({{3, 0}, {1, 1}}, kGreen);
  EXPECT_NEAR(0x80, canvas.at(0, 0).argb >> 8 & 255, 1);
  // Where both overlap, nothing of the red below is seen.
  EXPECT_EQ(canvas.at(2, 0), canvas.at(1, 0));
  EXPECT_EQ(kGreen, canvas.at(3, 0));
}

TEST(CGContext, FillsStrokesAndClipsPaths) {
  Canvas canvas(20, 20);
  CGContextSetFillColorWithColor(canvas.context, colorOf(kRed));
  CGContextAddPath(canvas.context, CGPath::roundedRect({{0, 0}, {20, 20}}, 8));
  CGContextFillPath(canvas.context);
  EXPECT_EQ(kClear, canvas.at(0, 0));
  EXPECT_EQ(kClear, canvas.at(19, 19));
  EXPECT_EQ(kRed, canvas.at(10, 0));
  EXPECT_EQ(kRed, canvas.at(4, 4));

  CGContextSetStrokeColorWithColor(canvas.context, colorOf(kBlue));
  CGContextSetLineWidth(canvas.context, 2);
  CGContextAddPath(canvas.context, CGPath::lines({{0, 10}, {20, 10}}));
  CGContextStrokePath(canvas.context);
  EXPECT_EQ(kBlue, canvas.at(5, 9));
  EXPECT_EQ(kBlue, canvas.at(5, 10));
  EXPECT_EQ(kRed, canvas.at(5, 11));

  CGContextAddPath(canvas.context, CGPath::ellipse({{0, 0}, {20, 20}}));
  CGContextClip(canvas.context);
  CGContextDrawVerticalGradient(canvas.context, {{0, 0}, {20, 20}}, colorOf(kWhite), colorOf(kBlack));
  EXPECT_EQ(kClear, canvas.at(0, 0));
  EXPECT_GT(canvas.at(10, 2).argb & 255, 200u);
  EXPECT_LT(canvas.at(10, 18).argb & 255, 50u);
}

TEST(CGContext, DrawsImagesUprightByCopyAndByStretching) {
  for (const bool opaque : {true, false}) {
    const CGImageRef image = fourColours(opaque);
    Canvas copied(6, 6);
    CGContextDrawImage(copied.context, {{1, 2}, {2, 2}}, image);
    EXPECT_EQ(kRed, copied.at(1, 2));
    EXPECT_EQ(kGreen, copied.at(2, 2));
    EXPECT_EQ(kBlue, copied.at(1, 3));
    EXPECT_EQ(kWhite, copied.at(2, 3));
    EXPECT_EQ(kClear, copied.at(3, 3));

    Canvas stretched(6, 6);
    CGContextDrawImage(stretched.context, {{0, 0}, {6, 6}}, image);
    EXPECT_EQ(kRed, stretched.at(0, 0));
    EXPECT_EQ(kGreen, stretched.at(5, 0));
    EXPECT_EQ(kBlue, stretched.at(0, 5));
    EXPECT_EQ(kWhite, stretched.at(5, 5));
  }
}

TEST(CGContext, ShrinksAndEnlargesAsFinelyAsTheStateSays) {
  // One white column in four: at a quarter of the size it shows only if every pixel is read.
  Canvas striped(32, 8);
  striped.fill({{0, 0}, {32, 8}}, kBlack);
  for (int x = 0; x < 32; x += 4) striped.fill({{x * 1.0, 0}, {1, 8}}, kWhite);
  const CGImageRef fine = striped.image(true);
  const auto shrunk = [&](CGInterpolationQuality quality) {
    Canvas canvas(8, 2);
    CGContextSetInterpolationQuality(canvas.context, quality);
    CGContextDrawImage(canvas.context, {{0, 0}, {8, 2}}, fine);
    return canvas.at(4, 1).argb & 255;
  };
  EXPECT_EQ(0u, shrunk(kCGInterpolationLow));
  EXPECT_EQ(0u, shrunk(kCGInterpolationNone));
  EXPECT_NEAR(64, static_cast<int>(shrunk(kCGInterpolationHigh)), 20);
  EXPECT_EQ(shrunk(kCGInterpolationHigh), shrunk(kCGInterpolationDefault));

  Canvas enlarged(12, 6);
  CGContextSaveGState(enlarged.context);
  CGContextSetInterpolationQuality(enlarged.context, kCGInterpolationNone);
  CGContextDrawImage(enlarged.context, {{0, 0}, {6, 6}}, fourColours(true));
  CGContextRestoreGState(enlarged.context);
  CGContextDrawImage(enlarged.context, {{6, 0}, {6, 6}}, fourColours(true));
  EXPECT_EQ(kRed, enlarged.at(2, 0));
  EXPECT_EQ(kGreen, enlarged.at(3, 0));
  EXPECT_FALSE(enlarged.at(8, 0) == kRed) << "the quality outlives its state";
}

// Copying rows must not differ from drawing in where it puts pixels, what it cuts off, or what shows through.
TEST(CGContext, CopiesRowsExactlyAsItWouldDrawThem) {
  Canvas source(7, 5);
  for (int i = 0; i < 35; ++i)
    source.fill({{i % 7 * 1.0, i / 7 * 1.0}, {1, 1}},
                Pixel{0xFF000000u | static_cast<unsigned>(i) * 0x050301u});
  const CGRect clips[] = {{{0, 0}, {10, 10}}, {{2, 1}, {3, 6}}, {{9, 9}, {5, 5}}, {{4, 4}, {0, 0}}};
  const CGPoint places[] = {{0, 0}, {3, 4}, {-2, -3}, {8, 8}, {30, 0}, {-1e9, 0}};
  for (const CGRect& clip : clips) {
    for (const CGPoint place : places) {
      Canvas copied(10, 10, true, 1, 3), drawn(10, 10, true, 1, 3);
      for (const Canvas* canvas : {&copied, &drawn}) {
        CGContextClipToRect(canvas->context, clip);
        CGContextDrawImage(canvas->context, {place, {7, 5}}, source.image(canvas == &copied));
      }
      EXPECT_EQ(drawn.pixels(), copied.pixels())
          << place.x << "," << place.y << " in a clip at " << clip.minX();
    }
  }
  Canvas turned(5, 7);
  CGContextConcatCTM(turned.context, {0, 1, 1, 0, 0, 0});
  CGContextDrawImage(turned.context, {{0, 0}, {7, 5}}, source.image(true));
  EXPECT_EQ(source.at(6, 0), turned.at(0, 6));
}
