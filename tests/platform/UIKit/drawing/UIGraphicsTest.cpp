#include "UIKit/UIGraphics.h"

#include <gtest/gtest.h>

#include <limits>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "platform/UIKit/Picture.h"

using namespace ios;

namespace {

constexpr std::uint32_t kRed = 0xFFFF0000, kBlue = 0xFF0000FF;

void fill(const CGRect& rect, CGColor color) {
  CGContextSetFillColorWithColor(UIGraphicsGetCurrentContext(), color);
  CGContextFillRect(UIGraphicsGetCurrentContext(), rect);
}

Picture taken() {
  return {UIGraphicsGetImageFromCurrentImageContext()};
}

}  // namespace

TEST(UIGraphics, ImageKeepsWhatWasTakenWhileDrawingGoesOn) {
  UIGraphicsBeginImageContextWithOptions({4, 4}, false, 1);
  const CGContextRef context = UIGraphicsGetCurrentContext();
  CGContextSaveGState(context);
  CGContextClipToRect(context, {{0, 0}, {2, 4}});
  CGContextSaveGState(context);
  CGContextTranslateCTM(context, 0, 1);
  fill({{0, 0}, {4, 1}}, {1, 0, 0, 1});
  CGContextAddPath(context, CGPath::rect({{0, 1}, {4, 1}}));

  const Picture first = taken();
  EXPECT_EQ(first.image->CGImageValue()->pixels(), taken().image->CGImageValue()->pixels())
      << "taking must not copy";
  CGContextFillPath(context);
  const Picture second = taken();
  EXPECT_EQ(kRed, first.at(1, 1));
  EXPECT_EQ(0u, first.at(1, 2));
  // What was drawn, the path begun, the clip, the transform and the saved states all live on in the copy.
  EXPECT_EQ(kRed, second.at(1, 1));
  EXPECT_EQ(kRed, second.at(1, 2));
  EXPECT_EQ(0u, second.at(2, 2));
  CGContextRestoreGState(context);
  fill({{0, 0}, {4, 1}}, {0, 0, 1, 1});
  CGContextRestoreGState(context);
  fill({{3, 3}, {1, 1}}, {0, 0, 1, 1});
  const Picture third = taken();
  EXPECT_EQ(kBlue, third.at(1, 0));
  EXPECT_EQ(0u, third.at(2, 0));
  EXPECT_EQ(kBlue, third.at(3, 3));
  EXPECT_EQ(0u, second.at(1, 0));

  CGContextBeginTransparencyLayer(context);
  fill({{0, 0}, {4, 4}}, {1, 0, 0, 1});
  const Picture inside = taken();
  CGContextEndTransparencyLayer(context, 1);
  EXPECT_EQ(0u, inside.at(2, 2));
  EXPECT_EQ(0u, third.at(2, 2));
  EXPECT_EQ(kRed, taken().at(2, 2));
  UIGraphicsEndImageContext();
  EXPECT_EQ(kRed, first.at(1, 1)) << "the image outlives its context";
}

TEST(UIGraphics, StaysOpaqueWhateverIsDrawn) {
  UIGraphicsBeginImageContextWithOptions({4, 4}, true, 1);
  const CGContextRef context = UIGraphicsGetCurrentContext();
  EXPECT_EQ(0xFF000000, taken().at(3, 3));
  CGContextClearRect(context, {{0, 0}, {2, 2}});
  CGContextBeginTransparencyLayer(context);
  CGContextClearRect(context, {{0, 0}, {4, 4}});
  fill({{0.5, 0.5}, {2.2, 2.2}}, {1, 1, 1, 0.3});
  CGContextEndTransparencyLayer(context, 0.7);
  const Picture picture = taken();
  EXPECT_TRUE(picture.image->CGImageValue()->isOpaque());
  for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(0xFFu, picture.at(i % 4, i / 4) >> 24) << i;
}

TEST(UIGraphics, MakesContextsOfWholePixelsOrNone) {
  struct Row {
    CGSize size;
    double scale;
    std::size_t width, height;
  };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const Row& row :
       {Row{{375, 667}, 2, 750, 1334}, Row{{10.2, 0.1}, 1, 11, 1}, Row{{33.3, 0.7}, 10, 333, 7},
        Row{{0, 10}, 2, 0, 0}, Row{{-5, 10}, 2, 0, 0}, Row{{kInfinity, 10}, 1, 0, 0},
        Row{{std::nan(""), 10}, 1, 0, 0}, Row{{1e6, 1e6}, 1, 0, 0}}) {
    UIGraphicsBeginImageContextWithOptions(row.size, false, row.scale);
    const auto image = UIGraphicsGetImageFromCurrentImageContext();
    ASSERT_EQ(row.width > 0, image != nullptr) << row.size.width;
    EXPECT_EQ(row.width > 0, UIGraphicsGetCurrentContext() != nullptr);
    UIGraphicsEndImageContext();
    if (!image) continue;
    EXPECT_EQ(row.width, image->CGImageValue()->width());
    EXPECT_EQ(row.height, image->CGImageValue()->height());
    EXPECT_EQ(row.scale, image->scale());
    EXPECT_NEAR(row.size.width, image->size().width, 1 / row.scale);
  }
}

TEST(UIGraphics, KeepsAStackForEachThread) {
  Clock::shared().useVirtualTime();
  UIGraphicsEndImageContext();
  UIGraphicsPopContext();
  EXPECT_FALSE(UIGraphicsGetCurrentContext());
  UIGraphicsBeginImageContextWithOptions({2, 2}, false, 1);
  const CGContextRef outer = UIGraphicsGetCurrentContext();
  UIGraphicsBeginImageContextWithOptions({0, 0}, false, 1);
  EXPECT_FALSE(UIGraphicsGetCurrentContext());
  UIGraphicsPushContext(outer);
  EXPECT_EQ(outer, UIGraphicsGetCurrentContext());
  EXPECT_FALSE(UIGraphicsGetImageFromCurrentImageContext()) << "only of a context begun for an image";
  UIGraphicsEndImageContext();
  EXPECT_EQ(outer, UIGraphicsGetCurrentContext());
  const auto looked = dispatch_semaphore_create(0);
  dispatch_async(dispatch_queue_create("elsewhere"), [&] {
    EXPECT_FALSE(UIGraphicsGetCurrentContext());
    dispatch_semaphore_signal(looked);
  });
  dispatch_semaphore_wait(looked, DISPATCH_TIME_FOREVER);
  UIGraphicsPopContext();
  EXPECT_FALSE(UIGraphicsGetCurrentContext());
  UIGraphicsEndImageContext();
  EXPECT_EQ(outer, UIGraphicsGetCurrentContext());
  UIGraphicsEndImageContext();
  EXPECT_FALSE(UIGraphicsGetCurrentContext());
}

TEST(UIImage, HasNoDataWithoutPixels) {
  for (const auto& image : {std::shared_ptr<UIImage>(), std::make_shared<UIImage>(nullptr, 2)}) {
    EXPECT_FALSE(UIImageJPEGRepresentation(image, 0.5));
    EXPECT_FALSE(UIImagePNGRepresentation(image));
  }
  EXPECT_EQ((CGSize{}), UIImage(nullptr, 2).size());
}
