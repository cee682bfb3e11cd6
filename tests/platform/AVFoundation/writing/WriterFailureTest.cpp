#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <fstream>

#include "AVFoundation/CodecFault.h"
#include "Device/Files.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "platform/AVFoundation/Studio.h"

namespace ios {
namespace {

using namespace testing_support;

using Names = std::vector<std::string>;

constexpr Colour kColours[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};

/// A second of noise and a tone; what the recorder of a screen does, failures or not.
void record(const Movie& movie) {
  for (int frame = 0; frame < 30; ++frame) {
    const CMTime time = CMTimeMake(frame * 1470, 44100);
    movie.append(picture(64, 64, [&](auto x, auto y) { return kColours[(x * y + std::size_t(frame)) % 3]; }),
                 frame / 30.0);
    movie.append(tone(440, 1470), time);
  }
}

struct Fault {
  const char* name;
  bool disk;
  const char* operation;
  int nth;  // call that fails, the first being 1
  int code;
  long expectedCode;
  const char* text;  // what the error says was being done
};

const Fault kFaults[] = {
    {"no file can be made", true, "create", 1, EACCES, AVErrorUnknown, "create movie.mov: Permission denied"},
    {"the encoder does not open", false, "open the video encoder", 1, EIO, AVErrorUnknown,
     "open the video encoder"},
    {"the sound encoder does not open", false, "open the audio encoder", 1, ENOMEM, AVErrorOutOfMemory,
     "open the audio encoder"},
    {"the file's head", false, "start the movie file", 1, EIO, AVErrorUnknown, "start the movie file"},
    {"the first picture", false, "encode a picture", 1, EIO, AVErrorUnknown,
     "encode a picture: Input/output error (-5)"},
    {"the 20th picture", false, "encode a picture", 20, ENOMEM, AVErrorOutOfMemory, "encode a picture"},
    {"the 20th sound", false, "encode sound", 20, EIO, AVErrorUnknown, "encode sound"},
    {"the 20th packet", false, "write to the movie", 20, EIO, AVErrorUnknown, "write to the movie"},
    {"the disk is full at once", true, "write", 1, ENOSPC, AVErrorDiskFull,
     "write movie.mov: No space left on device (-28)"},
    {"no file can be made in the end", true, "create", 2, EACCES, AVErrorUnknown, "create movie.mov"},
    {"the disk is full in the end", true, "write", 5, ENOSPC, AVErrorDiskFull, "write movie.mov"},
    {"the disk is full later", true, "write", 2, ENOSPC, AVErrorDiskFull, "write movie.mov"},
    {"the encoder's rest", false, "flush the video encoder", 1, EIO, AVErrorUnknown,
     "flush the video encoder"},
    {"the sound encoder's rest", false, "flush the audio encoder", 1, EIO, AVErrorUnknown,
     "flush the audio encoder"},
    {"the file's end", false, "complete the movie file", 1, EIO, AVErrorUnknown, "complete the movie file"},
    {"the file's name", true, "rename", 1, EROFS, AVErrorUnknown, "rename movie.mov"},
};

TEST(MovieFailure, AtAnyCallEndsInFailedWithAReasonAndWithoutAFile) {
  Studio studio;
  for (const Fault& fault : kFaults) {
    SCOPED_TRACE(fault.name);
    auto calls = std::make_shared<int>(0);
    const auto ask = [=](const std::string& operation) {
      return operation == fault.operation && ++*calls == fault.nth ? fault.code : 0;
    };
    if (fault.disk) {
      setDiskFault([=](const std::string& operation, const std::filesystem::path& path) {
        return path.filename() == "movie.mov" ? ask(operation) : 0;
      });
    } else {
      setCodecFault(ask);
    }
    const Movie movie(studio, {.sound = true, .soundSettings = aacSettings(), .started = false});
    movie.writer->startWriting();
    movie.writer->startSessionAtSourceTime(kCMTimeZero);
    record(movie);
    EXPECT_EQ(movie.finish(), 1);
    EXPECT_EQ(*calls, fault.nth) << "the fault was not met, or the writer went on after it";
    EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusFailed);
    ASSERT_NE(movie.writer->error(), nullptr);
    EXPECT_EQ(movie.writer->error()->domain(), AVFoundationErrorDomain);
    EXPECT_EQ(movie.writer->error()->code(), fault.expectedCode) << movie.problem();
    EXPECT_NE(movie.problem().find(fault.text), std::string::npos) << movie.problem();
    EXPECT_EQ(studio.files(), Names()) << "a file was left behind";
    EXPECT_FALSE(movie.pictures->isReadyForMoreMediaData());
    EXPECT_FALSE(movie.append(plain(64, 64, kColours[0]), 100));
    setDiskFault(nullptr);
    setCodecFault(nullptr);
    // The next recording is unaffected.
    const Movie next(studio, {.sound = true, .soundSettings = aacSettings()});
    record(next);
    next.finish();
    EXPECT_EQ(next.probe().pictures().size(), 30u);
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieFailure, LeavesWhatReachedTheDiskWhenFragmentsAreAskedFor) {
  Studio studio;
  for (const int code : {ENOSPC, EFBIG}) {
    const Movie movie(studio, {.sound = true, .soundSettings = aacSettings(), .started = false});
    movie.writer->setMovieFragmentInterval(CMTimeMake(1, 1));
    movie.writer->startWriting();
    movie.writer->startSessionAtSourceTime(kCMTimeZero);
    // In the middle of a packet; there is room again by the time the movie is assembled.
    setDiskFault(
        [=, calls = std::make_shared<int>(0)](const std::string& operation, const std::filesystem::path&) {
          return operation == "write" && ++*calls == 2 ? code : 0;
        });
    record(movie);
    movie.finish();
    setDiskFault(nullptr);
    EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusFailed);
    EXPECT_EQ(movie.writer->error()->code(), AVErrorDiskFull) << movie.problem();
    const auto decoded = movie.probe().pictures().size();
    EXPECT_GT(decoded, 3u);
    EXPECT_LT(decoded, 30u);
    EXPECT_EQ(decoded, movie.probe().times('v').size());
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieFailure, BadTimesAndMediaFailTheWriter) {
  struct Row {
    const char* name;
    std::function<bool(const Movie&)> append;
    const char* text;
  };
  const auto at = [](const Movie& movie, const CMTime& time) {
    return movie.adaptor->appendPixelBuffer(plain(64, 64, kColours[0]), time);
  };
  const Row rows[] = {
      {"the same time", [&](auto& movie) { return at(movie, CMTimeMake(1, 2)); }, "not later"},
      {"an earlier time", [&](auto& movie) { return at(movie, CMTimeMake(1, 3)); }, "not later"},
      {"no time", [&](auto& movie) { return at(movie, kCMTimeInvalid); }, "not a number"},
      {"an endless time", [&](auto& movie) { return at(movie, kCMTimePositiveInfinity); }, "not a number"},
      {"a time beyond all files", [&](auto& movie) { return at(movie, CMTimeMake(INT64_MAX, 1)); },
       "out of range"},
      {"a picture that stands for a day", [&](auto& movie) { return at(movie, CMTimeMake(86400, 1)); },
       "too long"},
      {"sound where pictures are wanted",
       [](auto& movie) {
         return movie.pictures->appendSampleBuffer(
             std::make_shared<CMSampleBuffer>(CMAudioFormat{}, tone(440, 10), CMTimeMake(9, 1)));
       },
       "another kind"},
      {"sound without a rate",
       [](auto& movie) {
         return movie.append(tone(440, 10), CMTimeMake(9, 1), CMAudioFormat{0, 1});
       },
       "format"},
      {"sound without channels",
       [](auto& movie) {
         return movie.append(tone(440, 10), CMTimeMake(9, 1), CMAudioFormat{44100, 0});
       },
       "format"},
      {"sound after a gap of an hour",
       [](auto& movie) { return movie.append(tone(440, 10), CMTimeMake(3600, 1)); }, "gap"},
  };
  Studio studio;
  for (const Row& row : rows) {
    const Movie movie(studio, {.sound = true, .soundSettings = aacSettings()});
    ASSERT_TRUE(at(movie, CMTimeMake(1, 2)) && movie.append(tone(440, 1470), kCMTimeZero));
    EXPECT_FALSE(row.append(movie)) << row.name;
    EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusFailed) << row.name;
    EXPECT_NE(movie.problem().find(row.text), std::string::npos) << row.name << ": " << movie.problem();
    EXPECT_EQ(studio.files(), Names()) << row.name;
  }
}

TEST(MovieFailure, ASessionThatHasNotBegunTakesNothing) {
  Studio studio;
  const Movie movie(studio, {.started = false});
  EXPECT_FALSE(movie.pictures->isReadyForMoreMediaData());
  EXPECT_FALSE(movie.append(plain(64, 64, kColours[0]), 0));
  EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusUnknown) << "nothing had begun that could fail";
  ASSERT_TRUE(movie.writer->startWriting());
  EXPECT_FALSE(movie.append(plain(64, 64, kColours[0]), 0));
  EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusFailed);
  EXPECT_NE(movie.problem().find("session"), std::string::npos) << movie.problem();
}

TEST(MovieFailure, WhatComesAfterTheEndIsRefusedAndHarmless) {
  Studio studio;
  const Movie movie(studio, {.sound = true, .soundSettings = aacSettings()});
  ASSERT_TRUE(movie.append(plain(64, 64, kColours[0]), 0));
  movie.pictures->markAsFinished();
  EXPECT_FALSE(movie.pictures->isReadyForMoreMediaData());
  EXPECT_FALSE(movie.append(plain(64, 64, kColours[1]), 1));
  EXPECT_TRUE(movie.append(tone(440, 1470), kCMTimeZero)) << "the other input goes on";
  EXPECT_EQ(movie.finish(), 1);
  EXPECT_FALSE(movie.append(tone(440, 1470), CMTimeMake(1, 1)));
  EXPECT_EQ(movie.finish(), 1);  // the handler is called again, and that is all
  movie.writer->cancelWriting();
  EXPECT_FALSE(movie.writer->startWriting());
  EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusCompleted);
  EXPECT_EQ(movie.problem(), "");
  EXPECT_EQ(movie.probe().pictures().size(), 1u);
}

TEST(MovieFailure, AMovieWithoutMediaFails) {
  Studio studio;
  const Movie movie(studio);
  EXPECT_EQ(movie.finish(), 1);
  EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusFailed);
  EXPECT_NE(movie.problem().find("nothing was appended"), std::string::npos) << movie.problem();
  EXPECT_EQ(studio.files(), Names());
}

TEST(MovieFailure, OtherFilesAreLeftAlone) {
  Studio studio;
  std::ofstream(studio.path()) << "mine";
  const Movie refused(studio, {.started = false});
  EXPECT_FALSE(refused.writer->startWriting());
  EXPECT_EQ(refused.writer->error()->code(), AVErrorFileAlreadyExists);
  std::filesystem::remove(studio.path());

  const Movie late(studio);
  record(late);
  std::ofstream(studio.path()) << "mine";
  late.finish();
  EXPECT_EQ(late.writer->status(), AVAssetWriterStatusFailed);
  EXPECT_EQ(late.writer->error()->code(), AVErrorFileAlreadyExists);
  EXPECT_EQ(studio.folder().read("movies/movie.mov"), "mine");
  EXPECT_EQ(studio.files(), Names{"movie.mov"});
}

TEST(MovieFailure, NothingRemainsOfAMovieThatWasGivenUp) {
  Studio studio;
  const Movie cancelled(studio);
  record(cancelled);
  EXPECT_EQ(studio.files(), Names()) << "a process that is killed now leaves something behind";
  cancelled.writer->cancelWriting();
  EXPECT_EQ(cancelled.writer->status(), AVAssetWriterStatusCancelled);
  EXPECT_EQ(studio.files(), Names());
  EXPECT_EQ(cancelled.finish(), 1);

  auto dropped = std::make_unique<Movie>(studio);
  record(*dropped);
  const auto input = dropped->pictures;
  dropped.reset();
  EXPECT_EQ(studio.files(), Names());
  EXPECT_FALSE(input->isReadyForMoreMediaData());

  // A process that was killed while it completed a movie left this; no process has that id.
  std::ofstream(studio.path(".movie.mov.999999999.1.tmp")) << "half a movie";
  const Movie next(studio);
  record(next);
  next.finish();
  EXPECT_EQ(studio.files(), Names{"movie.mov"});
}

TEST(MovieFailure, AWriterWhoseOwnerIsGoneFinishes) {
  Studio studio;
  auto movie = std::make_unique<Movie>(studio);
  record(*movie);
  bool finished = false;
  movie->writer->finishWritingWithCompletionHandler(
      [&finished] { dispatch_async(dispatch_get_main_queue(), [&finished] { finished = true; }); });
  movie.reset();
  ASSERT_TRUE(Clock::shared().runUntil([&] { return finished; }, std::chrono::seconds(1)));
  EXPECT_EQ(MovieProbe(studio.path()).pictures().size(), 30u);
}

TEST(MovieFailure, WritersNeedAFileAndATypeTheyKnow) {
  Studio studio;
  struct Row {
    const char* name;
    NSURL url;
    AVFileType type;
  };
  const NSURL good = NSURL::fileURLWithPath(studio.path());
  const Row rows[] = {
      {"a page of the web", *NSURL::URLWithString("https://example.com/movie.mov"), AVFileTypeQuickTimeMovie},
      {"a folder that does not exist", NSURL::fileURLWithPath(studio.path("no/movie.mov")),
       AVFileTypeQuickTimeMovie},
      {"a folder that is a file", NSURL::fileURLWithPath("/dev/null/movie.mov"), AVFileTypeQuickTimeMovie},
      {"another type", good, "public.avi"},
  };
  for (const Row& row : rows) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(AVAssetWriter::initWithURL(row.url, row.type, error), nullptr) << row.name;
    ASSERT_NE(error, nullptr) << row.name;
    EXPECT_FALSE(error->localizedDescription().empty());
  }
}

TEST(MovieFailure, InputsThatCannotBeMetAreRefusedBeforeAnythingIsWritten) {
  Studio studio;
  const auto video = [](PropertyList width, PropertyList height, PropertyList bitRate) {
    return NSDictionary{
        {AVVideoCodecKey, AVVideoCodecH264},
        {AVVideoWidthKey, std::move(width)},
        {AVVideoHeightKey, std::move(height)},
        {AVVideoCompressionPropertiesKey, NSDictionary{{AVVideoAverageBitRateKey, std::move(bitRate)}}}};
  };
  NSDictionary otherCodec = video(64, 64, 1e6), otherSound = aacSettings();
  otherCodec[AVVideoCodecKey] = "jpeg";
  otherSound[AVFormatIDKey] = 1819304813;
  struct Row {
    const char* name;
    AVMediaType type;
    std::optional<NSDictionary> settings;
  };
  const Row rows[] = {
      {"pictures without settings", AVMediaTypeVideo, std::nullopt},
      {"another codec", AVMediaTypeVideo, otherCodec},
      {"no width", AVMediaTypeVideo, video(0, 64, 1e6)},
      {"a width that is not a number", AVMediaTypeVideo, video(NAN, 64, 1e6)},
      {"a height beyond all screens", AVMediaTypeVideo, video(64, 1e9, 1e6)},
      {"no bits", AVMediaTypeVideo, video(64, 64, 0)},
      {"bits that are a text", AVMediaTypeVideo, video(64, 64, "many")},
      {"endless bits", AVMediaTypeVideo, video(64, 64, INFINITY)},
      {"another kind of sound", AVMediaTypeAudio, otherSound},
      {"sound without settings in settings", AVMediaTypeAudio, NSDictionary{}},
      {"sound of an odd rate", AVMediaTypeAudio, aacSettings(12345)},
      {"sound of eleven channels", AVMediaTypeAudio, aacSettings(44100, 11)},
      {"another medium", "text", NSDictionary{}},
  };
  for (const Row& row : rows) {
    const Movie movie(studio, {.pictures = false, .started = false});
    const auto input = AVAssetWriterInput::initWithMediaType(row.type, row.settings);
    EXPECT_FALSE(movie.writer->canAddInput(input)) << row.name;
    movie.writer->addInput(input);
    EXPECT_FALSE(movie.writer->startWriting()) << row.name;
    EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusFailed) << row.name;
    EXPECT_NE(movie.problem().find("settings"), std::string::npos) << row.name << ": " << movie.problem();
    EXPECT_EQ(studio.files(), Names()) << row.name;
  }
  const Movie movie(studio, {.started = false});
  EXPECT_FALSE(movie.writer->canAddInput(movie.pictures)) << "it was added before";
  EXPECT_FALSE(movie.writer->canAddInput(
      AVAssetWriterInput::initWithMediaType(AVMediaTypeVideo, pictureSettings(64, 64))));
  EXPECT_FALSE(movie.writer->canAddInput(nullptr));
  EXPECT_TRUE(movie.writer->canAddInput(movie.sound));
  EXPECT_TRUE(movie.writer->startWriting());
  EXPECT_FALSE(movie.writer->canAddInput(movie.sound)) << "writing has started";
}

}  // namespace
}  // namespace ios
