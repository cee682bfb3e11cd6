#include "media/CaptureScreenshot.h"

#include <gtest/gtest.h>

#include <random>

#include "CoreGraphics/CGImage.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIImageView.h"
#include "UIKit/UINavigationController.h"
#include "UIKit/UITabBarController.h"
#include "ground/Switches.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::Console;
using testing_support::TestPhone;

namespace {

std::shared_ptr<NSData> dataOf(std::size_t size) {
  return std::make_shared<NSData>(Bytes(size));
}

/// As large as the screen.
std::shared_ptr<UIImage> noiseImage() {
  constexpr std::size_t kWidth = 750, kHeight = 1334;
  const std::shared_ptr<std::uint8_t[]> pixels(new std::uint8_t[kWidth * kHeight * 4]);
  std::mt19937 random(1);
  for (std::size_t i = 0; i < kWidth * kHeight * 4; ++i) {
    pixels[i] = i % 4 == 3 ? 0xFF : static_cast<std::uint8_t>(random());
  }
  return std::make_shared<UIImage>(std::make_shared<CGImage>(pixels, kWidth, kHeight, kWidth * 4, true), 2);
}

/// The qualities asked for when every encoding is too large.
template <class Number>
std::vector<Number> qualitiesTried() {
  std::vector<Number> tried;
  encodeWithin<Number>(10, [&](Number quality) {
    tried.push_back(quality);
    return dataOf(11);
  });
  return tried;
}

}  // namespace

TEST(ScreenshotQuality, FallsByRepeatedSubtractionInThePrecisionOfTheNumber) {
  EXPECT_EQ((std::vector<double>{1.0, 0.9, 0.8, 0.7000000000000001, 0.6000000000000001, 0.5000000000000001,
                                 0.40000000000000013, 0.30000000000000016, 0.20000000000000015,
                                 0.10000000000000014, 1.3877787807814457e-16}),
            qualitiesTried<double>());
  EXPECT_EQ((std::vector<float>{1.0f, 0.8999999761581421f, 0.7999999523162842f, 0.6999999284744263f,
                                0.5999999046325684f, 0.49999991059303284f, 0.3999999165534973f,
                                0.2999999225139618f, 0.19999992847442627f, 0.09999992698431015f}),
            qualitiesTried<float>());
}

TEST(ScreenshotQuality, StopsAtTheFirstEncodingThatFitsAndKeepsTheLastThatDoesNot) {
  const struct {
    const char* what;
    std::vector<std::size_t> sizes;  // of the encodings, one after the other
    std::size_t encodings, kept;
  } rows[] = {
      {"fits at once", {999}, 1, 999},
      {"exactly the limit", {1000}, 1, 1000},
      {"one byte more", {1001, 700}, 2, 700},
      {"never fits", {2000, 1900, 1800, 1700, 1600, 1500, 1400, 1300, 1200, 1100, 1050}, 11, 1050},
  };
  for (const auto& row : rows) {
    std::size_t encodings = 0;
    const auto kept = encodeWithin<CGFloat>(1000, [&](CGFloat) { return dataOf(row.sizes.at(encodings++)); });
    EXPECT_EQ(row.encodings, encodings) << row.what;
    EXPECT_EQ(row.kept, kept->length()) << row.what;
  }
  int encodings = 0;
  EXPECT_EQ(nullptr,
            encodeWithin<CGFloat>(1000, [&](CGFloat) { return ++encodings == 1 ? dataOf(2000) : nullptr; }));
  EXPECT_EQ(2, encodings);
}

TEST(Screenshot, ShowsThePixelsOfTheScreenToAnyJpegReader) {
  TestPhone phone;
  const auto window = phone.show();
  window->rootViewController()->view()->setBackgroundColor(UIColor::colorWithHex(0x3366CC));
  const auto corner = std::make_shared<UIView>(CGRectMake(0, 0, 100, 100));
  corner->setBackgroundColor(UIColor::colorWithHex(0xEE2211));
  window->rootViewController()->view()->addSubview(corner);

  Console console;
  setDebugMode(false);  // the line with the size is written all the same
  const auto grabber = CaptureScreenshot::shared();
  EXPECT_EQ(nullptr, grabber->getSavedScreenshot());
  grabber->saveCurrentScreenshot();
  const auto image = grabber->getSavedScreenshot();
  ASSERT_TRUE(image);
  EXPECT_EQ(image, send<std::shared_ptr<NSData>>(*grabber, "getSavedScreenshot"));
  EXPECT_EQ("newImage: " + std::to_string(image->length() / 1024) + "\n", console.text());

  const auto jpeg = testing_support::fileWith(phone.folder(), "screen.jpg", image->bytes());
  const std::string ppm = testing_support::outputOf("djpeg -ppm " + jpeg.string());
  ASSERT_TRUE(ppm.starts_with("P6\n750 1334\n255\n")) << ppm.substr(0, 20);
  const auto pixel = [&](std::size_t x, std::size_t y) {
    const std::size_t at = ppm.size() - 750 * 1334 * 3 + (y * 750 + x) * 3;
    return std::array<int, 3>{static_cast<unsigned char>(ppm[at]), static_cast<unsigned char>(ppm[at + 1]),
                              static_cast<unsigned char>(ppm[at + 2])};
  };
  const auto near = [](std::array<int, 3> a, std::array<int, 3> b) {
    return std::abs(a[0] - b[0]) <= 3 && std::abs(a[1] - b[1]) <= 3 && std::abs(a[2] - b[2]) <= 3;
  };
  EXPECT_TRUE(near({0xEE, 0x22, 0x11}, pixel(50, 50))) << "upright, in the screen's full resolution";
  EXPECT_TRUE(near({0x33, 0x66, 0xCC}, pixel(500, 1000)));
}

// Noise hardly compresses: a screen full of it exceeds the limit at full quality, part of a screen does not.
TEST(Screenshot, IsSharpAsLongAsItHasNoMoreThanTwoMebibytes) {
  const struct {
    const char* what;
    CGFloat height;
    std::size_t least;
  } rows[] = {{"within the limit at full quality", 300, 1 << 20}, {"beyond it", 667, 1 << 19}};
  TestPhone phone;
  for (const auto& row : rows) {
    const auto window = phone.show();
    const auto noise = std::make_shared<UIImageView>(noiseImage());
    noise->setFrame(CGRectMake(0, 0, 375, 667));
    window->rootViewController()->view()->addSubview(noise);
    const auto cover = std::make_shared<UIView>(CGRectMake(0, row.height, 375, 667));
    cover->setBackgroundColor(UIColor::whiteColor());
    window->rootViewController()->view()->addSubview(cover);
    CaptureScreenshot::shared()->saveCurrentScreenshot();
    const auto size = CaptureScreenshot::shared()->getSavedScreenshot()->length();
    EXPECT_GT(size, row.least) << row.what;
    EXPECT_LE(size, std::size_t{2 << 20}) << row.what;
  }
}

TEST(Screenshot, WaitsForPendingChangesAndReplacesTheEarlierImage) {
  TestPhone phone;
  const auto grabber = CaptureScreenshot::shared();
  const auto window = phone.show();
  phone.runFor(1.005);  // between two refreshes of the display
  grabber->saveCurrentScreenshot();
  const auto first = grabber->getSavedScreenshot();
  phone.runFor(0.005);  // the display has yet to show what comes
  window->rootViewController()->view()->setBackgroundColor(UIColor::blackColor());
  grabber->saveCurrentScreenshot();
  const auto second = grabber->getSavedScreenshot();
  EXPECT_NE(first->bytes(), second->bytes()) << "a change of this very turn is in the image";
}

// A phone that has just been turned has yet to lay out its screens.
TEST(Screenshot, OfATurnedScreenIsLaidOutForIt) {
  TestPhone phone;
  const auto tabs = std::make_shared<UITabBarController>();
  const auto screen = std::make_shared<UIViewController>();
  screen->view()->setBackgroundColor(UIColor::colorWithHex(0x3366CC));
  tabs->setViewControllers({UINavigationController::withRootViewController(screen)});
  phone.show(tabs);
  phone.runFor(1);
  phone.device().changeSettings([](DeviceSettings& settings) { settings.orientation = 3; });

  CaptureScreenshot::shared()->saveCurrentScreenshot();
  const auto turned = CaptureScreenshot::shared()->getSavedScreenshot();
  phone.runFor(1);
  CaptureScreenshot::shared()->saveCurrentScreenshot();
  ASSERT_TRUE(turned);
  EXPECT_TRUE(CaptureScreenshot::shared()->getSavedScreenshot()->bytes() == turned->bytes());
}

TEST(Screenshot, StaysWhenThereIsNothingToCapture) {
  TestPhone phone;
  const auto grabber = CaptureScreenshot::shared();
  grabber->saveCurrentScreenshot();
  EXPECT_EQ(nullptr, grabber->getSavedScreenshot()) << "no key window";
  const auto window = phone.show();
  grabber->saveCurrentScreenshot();
  const auto kept = grabber->getSavedScreenshot();
  ASSERT_TRUE(kept);
  Console console;
  window->setFrame(CGRectMake(0, 0, 0, 0));
  grabber->saveCurrentScreenshot();
  EXPECT_EQ(kept, grabber->getSavedScreenshot()) << "a window without a size gives no image";
  EXPECT_EQ("", console.text());
}
