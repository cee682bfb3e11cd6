#include "CoreVideo/CVPixelBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "CoreGraphics/CGContext.h"
#include "CoreVideo/CVPixelBufferPool.h"

namespace ios {
namespace {

NSDictionary attributes(PropertyList width, PropertyList height, PropertyList alignment) {
  return {{kCVPixelBufferPixelFormatTypeKey, std::int64_t{kCVPixelFormatType_32BGRA}},
          {kCVPixelBufferCGBitmapContextCompatibilityKey, true},
          {kCVPixelBufferWidthKey, std::move(width)},
          {kCVPixelBufferHeightKey, std::move(height)},
          {kCVPixelBufferBytesPerRowAlignmentKey, std::move(alignment)}};
}

CVPixelBufferRef take(const CVPixelBufferPoolRef& pool) {
  CVPixelBufferRef buffer;
  EXPECT_EQ(CVPixelBufferPoolCreatePixelBuffer(pool, buffer), kCVReturnSuccess);
  return buffer;
}

TEST(CVPixelBufferPool, SizesAndRowsOfAnyNumberGiveBuffersToDrawInto) {
  struct Row {
    PropertyList width, height, alignment;
    std::size_t columns, rows, bytesPerRow;
  };
  const Row rows[] = {
      {750.0, 1334.0, 3000.0, 750, 1334, 3000},  // the whole row's length, not a power of two
      {750, 1334, 64, 750, 1334, 3008},
      {375.5, 667.49, 1502.0, 376, 667, 1504},
      {374.25, 10.0, 1497.0, 374, 10, 1500},  // not a whole number of pixels
      {3.0, 2.0, 0.5, 3, 2, 12},
      {0.5, 0.6, 2.0, 1, 1, 4},
  };
  for (const Row& row : rows) {
    CVPixelBufferPoolRef pool;
    ASSERT_EQ(CVPixelBufferPoolCreate(nullptr, attributes(row.width, row.height, row.alignment), pool),
              kCVReturnSuccess);
    const CVPixelBufferRef buffer = take(pool);
    EXPECT_EQ(CVPixelBufferGetWidth(buffer), row.columns);
    EXPECT_EQ(CVPixelBufferGetHeight(buffer), row.rows);
    ASSERT_EQ(CVPixelBufferGetBytesPerRow(buffer), row.bytesPerRow);
    CVPixelBufferLockBaseAddress(buffer, 0);
    const auto context = CGBitmapContextCreate(CVPixelBufferGetBaseAddress(buffer), row.columns, row.rows, 8,
                                               row.bytesPerRow, CGColorSpaceCreateDeviceRGB(), 0x2002);
    EXPECT_NE(context, nullptr) << row.columns << " pixels in " << row.bytesPerRow << " bytes";
    std::memset(CVPixelBufferGetBaseAddress(buffer), 0x55, row.bytesPerRow * row.rows);
  }
}

TEST(CVPixelBufferPool, RefusesWhatCannotBeMet) {
  struct Row {
    const char* name;
    NSDictionary attributes;
    CVReturn expected;
  };
  NSDictionary otherFormat = attributes(4, 4, 16), noFormat = otherFormat, noSize = otherFormat;
  otherFormat[kCVPixelBufferPixelFormatTypeKey] = std::int64_t{0x34323076};
  noFormat.erase(kCVPixelBufferPixelFormatTypeKey);
  noSize.erase(kCVPixelBufferHeightKey);
  const Row rows[] = {
      {"no width", attributes(0.4, 4, 16), kCVReturnInvalidSize},
      {"negative", attributes(4, -4.0, 16), kCVReturnInvalidSize},
      {"not a number", attributes(NAN, 4, 16), kCVReturnInvalidSize},
      {"infinite", attributes(INFINITY, 4, 16), kCVReturnInvalidSize},
      {"huge", attributes(1e9, 1e9, 16), kCVReturnInvalidSize},
      {"a text", attributes("4", 4, 16), kCVReturnInvalidSize},
      {"no height", noSize, kCVReturnInvalidSize},
      {"alignment 0", attributes(4, 4, 0), kCVReturnInvalidPixelBufferAttributes},
      {"alignment not a number", attributes(4, 4, NAN), kCVReturnInvalidPixelBufferAttributes},
      {"alignment huge", attributes(4, 4, 1e15), kCVReturnInvalidPixelBufferAttributes},
      {"other format", otherFormat, kCVReturnInvalidPixelFormat},
      {"no format", noFormat, kCVReturnInvalidPixelFormat},
  };
  for (const Row& row : rows) {
    CVPixelBufferPoolRef pool;
    EXPECT_EQ(CVPixelBufferPoolCreate(nullptr, row.attributes, pool), row.expected) << row.name;
    EXPECT_EQ(pool, nullptr) << row.name;
    CVPixelBufferRef buffer;
    EXPECT_EQ(CVPixelBufferPoolCreatePixelBuffer(pool, buffer), kCVReturnInvalidArgument) << row.name;
  }
}

TEST(CVPixelBufferPool, AllocatesNoMoreThanWereInUseAtOnce) {
  CVPixelBufferPoolRef pool;
  CVPixelBufferPoolCreate(nullptr, attributes(8, 8, 32), pool);
  for (int frame = 0; frame < 100; ++frame) {
    const CVPixelBufferRef rendering = take(pool), appending = take(pool);
    EXPECT_NE(rendering, appending);
    EXPECT_EQ(CVPixelBufferPoolGetUse(pool).inUse, 2u);
  }
  const auto use = CVPixelBufferPoolGetUse(pool);
  EXPECT_EQ(use.inUse, 0u);
  EXPECT_EQ(use.mostInUse, 2u);
  EXPECT_EQ(use.allocated, 2u);
}

TEST(CVPixelBufferPool, RecycledBuffersAreUnlocked) {
  CVPixelBufferPoolRef pool;
  CVPixelBufferPoolCreate(nullptr, attributes(8, 8, 32), pool);
  void* memory = nullptr;
  {
    const CVPixelBufferRef buffer = take(pool);
    CVPixelBufferLockBaseAddress(buffer, 0);
    memory = CVPixelBufferGetBaseAddress(buffer);
  }
  const CVPixelBufferRef again = take(pool);
  EXPECT_EQ(CVPixelBufferGetBaseAddress(again), nullptr);
  CVPixelBufferLockBaseAddress(again, 0);
  EXPECT_EQ(CVPixelBufferGetBaseAddress(again), memory);
}

TEST(CVPixelBufferPool, BuffersOutliveTheirPool) {
  CVPixelBufferPoolRef pool;
  CVPixelBufferPoolCreate(nullptr, attributes(8, 8, 32), pool);
  const CVPixelBufferRef buffer = take(pool);
  pool = nullptr;
  CVPixelBufferLockBaseAddress(buffer, 0);
  std::memset(CVPixelBufferGetBaseAddress(buffer), 1, 8 * 32);
}

TEST(CVPixelBufferPool, AFaultLeavesThePoolUsable) {
  CVPixelBufferPoolRef pool;
  CVPixelBufferPoolCreate(nullptr, attributes(8, 8, 32), pool);
  setPixelBufferFault([] { return kCVReturnAllocationFailed; });
  CVPixelBufferRef buffer;
  EXPECT_EQ(CVPixelBufferPoolCreatePixelBuffer(pool, buffer), kCVReturnAllocationFailed);
  EXPECT_EQ(buffer, nullptr);
  setPixelBufferFault(nullptr);
  EXPECT_NE(take(pool), nullptr);
}

TEST(CVPixelBuffer, PixelsAreReachableFromTheFirstLockToTheLastUnlock) {
  CVPixelBufferRef buffer;
  ASSERT_EQ(CVPixelBufferCreate(2, 2, kCVPixelFormatType_32BGRA, {}, buffer), kCVReturnSuccess);
  EXPECT_EQ(CVPixelBufferGetBaseAddress(buffer), nullptr);
  CVPixelBufferLockBaseAddress(buffer, 0);
  CVPixelBufferLockBaseAddress(buffer, 1);
  CVPixelBufferUnlockBaseAddress(buffer, 1);
  const auto* pixels = static_cast<const std::uint8_t*>(CVPixelBufferGetBaseAddress(buffer));
  ASSERT_NE(pixels, nullptr);
  EXPECT_TRUE(
      std::all_of(pixels, pixels + 2 * CVPixelBufferGetBytesPerRow(buffer), [](auto b) { return b == 0; }));
  EXPECT_EQ(CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnSuccess);
  EXPECT_EQ(CVPixelBufferGetBaseAddress(buffer), nullptr);
  EXPECT_EQ(CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnInvalidArgument);
  EXPECT_EQ(CVPixelBufferLockBaseAddress(nullptr, 0), kCVReturnInvalidArgument);
}

}  // namespace
}  // namespace ios
