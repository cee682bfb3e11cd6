#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "AVFoundation/CodecFault.h"
#include "CoreVideo/CVPixelBufferPool.h"
#include "Device/Files.h"
#include "Dispatch/Semaphore.h"
#include "RecordingPhone.h"
#include "UIKit/UIColor.h"

namespace tellvane {
namespace {

using namespace testing_support;

constexpr char kUnableToWrite[] = "<TLV Log> : TLVScreen Recording: Unable to write buffer to video : ";

void expectIncreasing(const std::vector<double>& times) {
  for (std::size_t i = 1; i < times.size(); ++i) EXPECT_LT(times[i - 1], times[i]) << "frame " << i;
}

double longestGap(const std::vector<double>& times) {
  double longest = 0;
  for (std::size_t i = 1; i < times.size(); ++i) longest = std::max(longest, times[i] - times[i - 1]);
  return longest;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(ScreenRecorder, MakesAMovieThatLooksLikeTheScreenDid) {
  RecordingPhone phone;
  ASSERT_TRUE(phone.start());
  EXPECT_TRUE(phone.recorder()->isRecording());
  phone.runFor(2);
  EXPECT_EQ(1, phone.stop());
  EXPECT_TRUE(phone.savedAs());
  EXPECT_TRUE(phone.movieWasThere()) << "it goes after the completion";
  EXPECT_FALSE(std::filesystem::exists(phone.temporaryMovie()));
  EXPECT_EQ(1, phone.recorder().use_count()) << "its display link keeps it alive for ever";

  const MovieProbe movie = phone.movie();
  EXPECT_EQ("h264", movie.fact('v', "codec_name"));
  EXPECT_EQ("750", movie.fact('v', "width"));
  EXPECT_EQ("1334", movie.fact('v', "height"));
  EXPECT_EQ("", movie.fact('a', "codec_name"));
  const auto times = movie.times('v');
  EXPECT_NEAR(60, times.size(), 1);
  EXPECT_EQ(0, times.front());
  expectIncreasing(times);
  EXPECT_NEAR(1 / 30.0, longestGap(times), 0.0011);

  const auto pictures = movie.pictures();
  ASSERT_EQ(times.size(), pictures.size());
  // The painter ticks with the recorder; its first time of a frame is that of the first frame.
  const auto offsets = phone.frames()->offsets();
  ASSERT_EQ(offsets.size(), pictures.size());
  double first = -1;
  for (const auto& [time, quarters] : phone.shown()) {
    bool all = true;
    for (std::size_t i = 0; i < 4; ++i)
      all = all && quarters[i].distance(RecordingPhone::quartersOf(pictures[0])[i]) <= 4;
    if (all && first < 0) first = time;
  }
  ASSERT_GE(first, 0) << "the first frame was never on the display";
  for (std::size_t frame = 0; frame < pictures.size(); ++frame) {
    const auto shown = phone.shown().lower_bound(first + offsets[frame] - 0.001);
    ASSERT_NE(shown, phone.shown().end());
    ASSERT_NEAR(shown->first, first + offsets[frame], 0.001);
    const auto recorded = RecordingPhone::quartersOf(pictures[frame]);
    for (std::size_t i = 0; i < 4; ++i)
      EXPECT_LE(recorded[i].distance(shown->second[i]), 4) << "frame " << frame << ", quarter " << i;
  }
}

TEST(ScreenRecorder, LeavesNoHoleForAPause) {
  RecordingPhone phone;
  Console console;
  send(*phone.recorder(), "handleAppBecameInActive");  // before the start: nothing to pause
  ASSERT_TRUE(phone.start());
  phone.runFor(1);
  for (const double seconds : {2.5, 1.0}) {
    send(*phone.recorder(), "handleAppBecameInActive");
    send(*phone.recorder(), "handleAppBecameInActive");
    phone.runFor(seconds);
    send(*phone.recorder(), "handleAppBecameActive");
    send(*phone.recorder(), "handleAppBecameActive");
    phone.runFor(1);
  }
  send(*phone.recorder(), "handleAppBecameInActive");
  EXPECT_EQ(1, phone.stop()) << "a stop while paused";
  const auto times = phone.movie().times('v');
  expectIncreasing(times);
  EXPECT_NEAR(90, times.size(), 3);
  // The frame period is added once, however many pauses there were: the second one leaves none.
  EXPECT_LE(longestGap(times), 2 / 30.0 + 0.0011);
  EXPECT_NEAR(3, times.back(), 0.1);
  EXPECT_EQ(3, console.count("<TLV Log> : Paused recording"));
  EXPECT_EQ(2, console.count("<TLV Log> : Resumed recording"));
}

TEST(ScreenRecorder, DropsTicksWhileAFrameIsBeingRendered) {
  RecordingPhone phone;
  const auto hold = dispatch_semaphore_create(0);
  phone.frames()->onBackground = [&, held = false](const CGContextRef&) mutable {
    if (!std::exchange(held, true)) dispatch_semaphore_wait(hold, DISPATCH_TIME_FOREVER);
  };
  ASSERT_TRUE(phone.start());
  phone.runFor(1);
  EXPECT_EQ(1u, phone.frames()->backgrounds());
  dispatch_semaphore_signal(hold);
  phone.runFor(1);
  EXPECT_EQ(1, phone.stop());
  const auto times = phone.movie().times('v');
  EXPECT_NEAR(31, times.size(), 1);
  EXPECT_NEAR(1, longestGap(times), 0.04);
  EXPECT_EQ(times.size(), phone.frames()->backgrounds());
}

TEST(ScreenRecorder, DiscardsFramesWhileOneIsBeingAppendedAndTellsTheDelegateAllTheSame) {
  RecordingPhone phone;
  const auto hold = dispatch_semaphore_create(0);
  std::atomic<int> encoded = 0;
  setCodecFault([&](const std::string& operation) {
    if (operation == "encode a picture" && ++encoded == 5)
      dispatch_semaphore_wait(hold, DISPATCH_TIME_FOREVER);
    return 0;
  });
  ASSERT_TRUE(phone.start());
  phone.runFor(1);
  EXPECT_NEAR(30, phone.frames()->backgrounds(), 1);
  EXPECT_NEAR(30, phone.frames()->offsets().size(), 1);
  dispatch_semaphore_signal(hold);
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  setCodecFault(nullptr);
  const auto times = phone.movie().times('v');
  expectIncreasing(times);
  EXPECT_NEAR(5 + 15, times.size(), 1);
  const auto use = CVPixelBufferPoolGetUse(phone.recorder()->outputBufferPool());
  EXPECT_EQ(2u, use.mostInUse) << "one frame rendering and one appending";
  EXPECT_EQ(0u, use.inUse);
  EXPECT_LE(use.allocated, 2u);
}

TEST(ScreenRecorder, KeepsTheFrameInWhichItIsStopped) {
  RecordingPhone phone;
  int completions = 0;
  phone.frames()->onFrame = [&](double seconds) {
    if (seconds < 0.5) return;
    phone.recorder()->stopTLVRecordingWithCompletion([&](std::optional<std::string>) { ++completions; });
    EXPECT_FALSE(phone.recorder()->isRecording());
  };
  ASSERT_TRUE(phone.start());
  phone.runFor(2);
  EXPECT_EQ(1, completions);
  EXPECT_EQ(0, phone.stop()) << "a second request does nothing";
  const auto times = phone.movie().times('v');
  EXPECT_EQ(phone.frames()->offsets().size(), times.size());
  EXPECT_NEAR(0.5, times.back(), 0.001);
}

TEST(ScreenRecorder, GoesOnAfterMemoryWasShort) {
  RecordingPhone phone;
  ASSERT_TRUE(phone.start());
  phone.runFor(0.5);
  const auto before = phone.frames()->backgrounds();
  setPixelBufferFault([] { return kCVReturnAllocationFailed; });
  phone.runFor(0.5);
  EXPECT_EQ(before, phone.frames()->backgrounds()) << "without a buffer there is no frame";
  setPixelBufferFault(nullptr);
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  EXPECT_NEAR(30, phone.movie().times('v').size(), 2);
}

TEST(ScreenRecorder, ASecondStartChangesNothing) {
  RecordingPhone phone;
  ASSERT_TRUE(phone.start());
  phone.runFor(0.5);
  const auto pool = phone.recorder()->outputBufferPool();
  EXPECT_TRUE(phone.start());
  EXPECT_EQ(pool, phone.recorder()->outputBufferPool());
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  EXPECT_NEAR(30, phone.movie().times('v').size(), 1) << "two display links would tick twice";
}

TEST(ScreenRecorder, KeepsTheSizeItWasMadeWith) {
  RecordingPhone phone;
  ASSERT_TRUE(phone.start());
  phone.runFor(0.3);
  phone.device().changeSettings([](DeviceSettings& settings) { settings.orientation = 3; });
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  EXPECT_EQ("750", phone.movie().fact('v', "width"));
  EXPECT_EQ("1334", phone.movie().fact('v', "height"));
}

TEST(ScreenRecorder, DrawsEveryWindowOverTheWholeOfEachFrame) {
  RecordingPhone phone;
  // Not the key window, far smaller than the screen; a quarter of it is green, the rest lets the others show.
  const auto small = std::make_shared<UIWindow>(CGRectMake(0, 0, 375 / 5.0, 667 / 5.0));
  small->setRootViewController(std::make_shared<UIViewController>());
  const auto green = std::make_shared<UIView>(CGRectMake(0, 0, 375 / 10.0, 667 / 10.0));
  green->setBackgroundColor(UIColor::colorWithRedGreenBlueAlpha(0, 1, 0, 1));
  small->rootViewController()->view()->addSubview(green);
  small->setHidden(false);
  std::string calls;
  phone.frames()->onBackground = [&](const CGContextRef&) { calls += "background "; };
  phone.frames()->onFrame = [&](double) { calls += "time "; };
  ASSERT_TRUE(phone.start());
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  std::string expected;
  for (std::size_t i = 0; i < phone.frames()->backgrounds(); ++i) expected += "background time ";
  EXPECT_EQ(expected, calls);
  const auto pictures = phone.movie().pictures();
  ASSERT_NEAR(15, pictures.size(), 1);
  for (const Picture& picture : pictures) {
    const auto quarters = RecordingPhone::quartersOf(picture);
    EXPECT_LE(quarters[0].distance({0, 255, 0}), 6);
    EXPECT_GT(quarters[3].distance({0, 255, 0}), 30) << "the key window's";
    EXPECT_GT(quarters[3].distance({0, 0, 0}), 30) << "the key window's";
  }
}

TEST(ScreenRecorder, MadeWithoutArgumentsRecordsHalfAMegabitAtEveryRefresh) {
  RecordingPhone phone;
  const auto recorder = std::make_shared<TLVScreenRecorder>();
  const auto frames = std::make_shared<FrameLog>();
  recorder->setDelegate(frames);
  EXPECT_EQ(524288.0, recorder->desiredBitRate());
  recorder->startTLVScreenRecording([](bool success) { EXPECT_TRUE(success); });
  phone.runFor(0.5);
  recorder->stopTLVRecordingWithCompletion(nullptr);
  phone.runFor(0.5);
  EXPECT_NEAR(30, frames->backgrounds(), 1);
  EXPECT_EQ("", phone.movie().fact('a', "codec_name"));
}

TEST(ScreenRecorder, DrawsTheBackgroundBelowTheWindowsAndNothingOfEarlierFrames) {
  RecordingPhone phone;
  // A window that leaves its lower half open.
  const auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
  const auto root = std::make_shared<UIViewController>();
  window->setRootViewController(root);
  const auto half = std::make_shared<UIView>(CGRectMake(0, 0, 375, 333));
  half->setBackgroundColor(UIColor::colorWithRedGreenBlueAlpha(0, 0, 1, 1));
  root->view()->addSubview(half);
  for (const auto& other : UIApplication::sharedApplication()->windows()) other->setHidden(true);
  window->makeKeyAndVisible();
  phone.frames()->onBackground = [&, frame = 0](const CGContextRef& context) mutable {
    if (++frame % 2 == 0) return;
    CGContextSetFillColorWithColor(context, CGColor{1, 0, 0, 1});
    CGContextFillRect(context, CGRectMake(0, 0, 375, 667));
  };
  ASSERT_TRUE(phone.start());
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  const auto pictures = phone.movie().pictures();
  ASSERT_GT(pictures.size(), 10u);
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const auto quarters = RecordingPhone::quartersOf(pictures[i]);
    EXPECT_LE(quarters[0].distance({0, 0, 255}), 6) << "frame " << i;
    EXPECT_LE(quarters[3].distance(i % 2 == 0 ? Colour{255, 0, 0} : Colour{0, 0, 0}), 6) << "frame " << i;
  }
}

TEST(ScreenRecorder, RemovesAMovieThatWasLeftBehind) {
  RecordingPhone phone;
  std::filesystem::create_directories(phone.temporaryMovie().parent_path());
  std::ofstream(phone.temporaryMovie()) << "half a movie";
  Console console;
  ASSERT_TRUE(phone.start());
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.stop());
  EXPECT_NEAR(15, phone.movie().times('v').size(), 1);
  EXPECT_EQ("", console.text());
}

TEST(ScreenRecorder, AMovieThatCannotBeRemovedEndsTheStart) {
  RecordingPhone phone;
  std::filesystem::create_directories(phone.temporaryMovie().parent_path());
  std::ofstream(phone.temporaryMovie()) << "somebody's file";
  setDiskFault([](const std::string& operation, const std::filesystem::path&) {
    return operation == "remove" ? EPERM : 0;
  });
  Console console;
  EXPECT_FALSE(phone.start());
  EXPECT_FALSE(phone.recorder()->isRecording());
  EXPECT_NE(console.text().find("<TLV Log> : Could not delete old recording: "), std::string::npos);
  phone.runFor(1);
  EXPECT_EQ(0u, phone.frames()->backgrounds());
  EXPECT_EQ(0, phone.stop());
  EXPECT_TRUE(std::filesystem::exists(phone.temporaryMovie()));
  EXPECT_EQ(1, phone.recorder().use_count()) << "its display link keeps it alive for ever";
  setDiskFault(nullptr);
}

TEST(ScreenRecorder, AWriterThatCannotBeMadeEndsTheStart) {
  RecordingPhone phone;
  std::filesystem::remove_all(phone.temporaryMovie().parent_path());
  Console console;
  EXPECT_FALSE(phone.start());
  EXPECT_EQ(console.text().find("<TLV Log> : Could not create video writer: "), 0u) << console.text();
  phone.runFor(1);
  EXPECT_EQ(0u, phone.frames()->backgrounds());
  EXPECT_EQ(0, phone.stop());
}

struct Failure {
  const char* name;
  const char* operation;  // of the codec, or of the disk
  bool disk;
  int nth;
  bool starts;
  int complaints;
};

class ScreenRecorderFailure : public testing::TestWithParam<Failure> {};

TEST_P(ScreenRecorderFailure, CostsTheMovieAndNothingElse) {
  const Failure& failure = GetParam();
  RecordingPhone phone;
  ASSERT_TRUE(std::filesystem::is_directory(phone.temporaryMovie().parent_path()));
  const auto fail = [&failure, calls = std::make_shared<std::atomic<int>>(0)](const std::string& operation) {
    return operation == failure.operation && ++*calls >= failure.nth ? (failure.disk ? ENOSPC : EIO) : 0;
  };
  if (failure.disk) {
    setDiskFault(
        [fail](const std::string& operation, const std::filesystem::path&) { return fail(operation); });
  } else {
    setCodecFault(fail);
  }
  Console console;
  EXPECT_EQ(failure.starts, phone.start());
  phone.runFor(2);
  EXPECT_EQ(failure.starts ? 1 : 0, phone.stop());
  EXPECT_FALSE(phone.savedAs());
  setDiskFault(nullptr);
  setCodecFault(nullptr);
  EXPECT_TRUE(phone.libraryIsEmpty());
  EXPECT_FALSE(std::filesystem::exists(phone.temporaryMovie()));
  // A writer that has failed is not ready for more: one frame complains, the rest are dropped in silence.
  EXPECT_EQ(static_cast<std::size_t>(failure.complaints),
            countOf(console.text(), std::string(kUnableToWrite) + "Optional("))
      << console.text();

  const auto next = std::make_shared<TLVScreenRecorder>(0.6, 30, false);
  next->startTLVScreenRecording([](bool success) { EXPECT_TRUE(success); });
  phone.runFor(0.5);
  bool saved = false;
  next->stopTLVRecordingWithCompletion(
      [&](std::optional<std::string> localIdentifier) { saved = localIdentifier.has_value(); });
  phone.runFor(0.5);
  EXPECT_TRUE(saved) << "the next recording";
}

INSTANTIATE_TEST_SUITE_P(
    AtAnyCall, ScreenRecorderFailure,
    testing::Values(Failure{"OpeningTheEncoder", "open the video encoder", false, 1, false, 0},
                    Failure{"CreatingTheFile", "create", true, 1, false, 0},
                    Failure{"TheFirstPicture", "encode a picture", false, 1, true, 1},
                    Failure{"TheFortiethPicture", "encode a picture", false, 40, true, 1},
                    Failure{"TheDiskIsFull", "write", true, 1, true, 0},
                    Failure{"FlushingTheEncoder", "flush the video encoder", false, 1, true, 0},
                    Failure{"CompletingTheFile", "complete the movie file", false, 1, true, 0},
                    Failure{"NamingTheFile", "rename", true, 1, true, 0}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace tellvane
