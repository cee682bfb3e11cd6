#include "recording/FrameTiming.h"

#include <gtest/gtest.h>

#include "CoreVideo/CVPixelBuffer.h"
#include "recording/WriterSettings.h"

namespace tellvane {
namespace {

TEST(FrameTiming, LeavesOutPausesAndAddsOneFramePeriod) {
  const struct {
    const char* name;
    double timestamp;
    std::vector<double> pauses;
    long milliseconds;
  } rows[] = {
      {"the first frame", 5.0, {}, 0},
      {"no pause", 13.0, {}, 8000},
      {"one pause", 13.0, {10.0, 12.5}, 5533},
      {"the first frame after a pause", 12.5, {10.0, 12.5}, 5033},
      {"two pauses", 22.0, {10.0, 12.5, 20.0, 21.0}, 13533},
      {"thousandths are cut, not rounded", 5.0019, {}, 1},
  };
  for (const auto& row : rows) {
    const double elapsed = elapsedTime(row.timestamp, 5.0, row.pauses, 30);
    const CMTime time = presentationTime(kCMTimeZero, elapsed);
    EXPECT_EQ(0, CMTimeCompare(time, CMTimeMake(row.milliseconds, 1000))) << row.name << ": " << elapsed;
    EXPECT_EQ(1000, time.timescale) << row.name;
  }
  // Sound counts in its own units, and the sum is exact.
  const CMTime sound = CMTimeMake(441001, 44100);
  const CMTime time = presentationTime(sound, 0.5);
  EXPECT_EQ(0, CMTimeCompare(time, CMTimeMake(441001 + 22050, 44100)));
}

TEST(FrameTiming, CutsTheRefreshesOfOneFrameToAWholeNumber) {
  const struct {
    long fps, interval;
  } rows[] = {{60, 1}, {45, 1}, {30, 2}, {25, 2}, {20, 3}, {1, 60}, {0, 60}, {-5, 60}, {61, 1}, {240, 1}};
  for (const auto& row : rows) EXPECT_EQ(row.interval, displayLinkInterval(row.fps)) << row.fps;
}

TEST(WriterSettings, AskForDoublesAndNothingElse) {
  const NSDictionary movie = videoOutputSettings({375.0 * 2, 667.0 * 2}, 0.6 * 1024 * 1024);
  EXPECT_EQ((NSDictionary{
                {"AVVideoCodecKey", "avc1"},
                {"AVVideoWidthKey", 750.0},
                {"AVVideoHeightKey", 1334.0},
                {"AVVideoCompressionPropertiesKey", NSDictionary{{"AverageBitRate", 629145.6}}},
            }),
            movie);
  const NSDictionary buffers = pixelBufferAttributes({375.0 * 2, 667.0 * 2});
  EXPECT_EQ(5u, buffers.size());
  EXPECT_EQ(PropertyList(3000.0), buffers.at(kCVPixelBufferBytesPerRowAlignmentKey));
  EXPECT_EQ(PropertyList(std::int64_t{1111970369}), buffers.at(kCVPixelBufferPixelFormatTypeKey));
}

}  // namespace
}  // namespace tellvane
