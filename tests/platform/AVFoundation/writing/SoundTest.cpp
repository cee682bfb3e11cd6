#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "platform/AVFoundation/Studio.h"

namespace ios {
namespace {

using namespace testing_support;

constexpr Colour kWhite{255, 255, 255}, kBlack{0, 0, 0};
const CMTime kStart = CMTimeMake(220507, 44100);

CMTime after(const CMTime& start, std::int64_t frames, int rate = 44100) {
  return CMTimeAdd(start, CMTimeMake(frames, rate));
}

MovieOptions withSound(std::optional<NSDictionary> settings = aacSettings()) {
  return {.sound = true, .soundSettings = std::move(settings), .start = kStart};
}

/// Silence up to frame 44100 of the movie, then a tone; as a microphone gives it, `position` frames
/// from the start.
std::vector<std::int16_t> silenceThenTone(std::int64_t position) {
  auto samples = tone(1000, 1024, static_cast<std::size_t>(std::max<std::int64_t>(position, 0)));
  for (std::int64_t i = 0; i < 1024; ++i) {
    if (position + i < 44100) samples[static_cast<std::size_t>(i)] = 0;
  }
  return samples;
}

TEST(MovieSound, SharesItsOriginWithThePicture) {
  struct Row {
    const char* name;
    std::optional<NSDictionary> settings;
    std::int64_t first;  // where the sound begins, in frames from the movie's start
    const char* codec;
  };
  const Row rows[] = {
      {"AAC from the start", aacSettings(), 0, "aac"},
      {"AAC later", aacSettings(), 22050, "aac"},
      {"AAC from before the start", aacSettings(), -1500, "aac"},
      {"PCM from the start", std::nullopt, 0, "pcm_s16le"},
      {"PCM later", std::nullopt, 11025, "pcm_s16le"},
      {"PCM from before the start", std::nullopt, -700, "pcm_s16le"},
  };
  Studio studio;
  for (const Row& row : rows) {
    const Movie movie(studio, withSound(row.settings));
    std::int64_t position = row.first;
    for (int frame = 0; frame < 60; ++frame) {
      for (; position < (frame + 1) * 1470; position += 1024) {
        ASSERT_TRUE(movie.append(silenceThenTone(position), after(kStart, position))) << movie.problem();
      }
      ASSERT_TRUE(movie.append(plain(64, 64, frame < 30 ? kBlack : kWhite), frame / 30.0));
    }
    movie.finish();
    const MovieProbe probe = movie.probe();
    EXPECT_EQ(probe.fact('a', "codec_name"), row.codec) << row.name;
    EXPECT_NEAR(onset(probe.sound()), 1.0, 0.002) << row.name;
    EXPECT_NEAR(frequency(probe.sound(), 1.1, 1.9), 1000, 5) << row.name;
    EXPECT_NEAR(probe.number('a', "start_time"), std::max(0.0, static_cast<double>(row.first) / 44100), 0.024)
        << row.name;
    const auto pictures = probe.pictures();
    ASSERT_EQ(pictures.size(), 60u);
    EXPECT_LE(pictures[29].at(32, 32).distance(kBlack), 8);
    EXPECT_LE(pictures[30].at(32, 32).distance(kWhite), 8);
    EXPECT_NEAR(probe.times('v')[30], 1.0, 1e-6);
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieSound, PlainSamplesAreWrittenAsTheyCome) {
  Studio studio;
  MovieOptions options = withSound(std::nullopt);
  options.pictures = false;
  const Movie movie(studio, options);
  const CMAudioFormat format{48000, 2};
  std::vector<std::int16_t> all;
  std::mt19937 random(3);
  for (int i = 0; i < 20; ++i) {
    std::vector<std::int16_t> samples(2 * 1000);
    for (auto& sample : samples) sample = static_cast<std::int16_t>(random());
    all.insert(all.end(), samples.begin(), samples.end());
    ASSERT_TRUE(movie.append(samples, after(kStart, i * 1000, 48000), format));
  }
  movie.finish();
  EXPECT_EQ(movie.probe().fact('a', "sample_rate"), "48000");
  EXPECT_EQ(movie.probe().sound(48000, 2), all);
}

TEST(MovieSound, OtherFormatsAreConvertedToTheTracks) {
  struct Row {
    const char* name;
    std::optional<NSDictionary> settings;
    CMAudioFormat before, then;
    const char* rate;
    const char* channels;
  };
  const Row rows[] = {
      {"half the rate, stereo", aacSettings(), {22050, 2}, {22050, 2}, "44100", "1"},
      {"a change on the way", aacSettings(48000, 2), {44100, 1}, {16000, 2}, "48000", "2"},
      {"a change of plain sound", std::nullopt, {32000, 1}, {44100, 2}, "32000", "1"},
  };
  Studio studio;
  for (const Row& row : rows) {
    MovieOptions options = withSound(row.settings);
    options.pictures = false;
    const Movie movie(studio, options);
    CMTime time = kStart;
    for (int i = 0; i < 40; ++i) {
      const CMAudioFormat format = i < 20 ? row.before : row.then;
      const int rate = static_cast<int>(format.sampleRate), count = rate / 20;
      ASSERT_TRUE(movie.append(tone(500, static_cast<std::size_t>(count), static_cast<std::size_t>(i * count),
                                    rate, static_cast<int>(format.channels)),
                               time, format))
          << row.name << ": " << movie.problem();
      time = after(time, count, rate);
    }
    movie.finish();
    EXPECT_EQ(movie.probe().fact('a', "sample_rate"), row.rate) << row.name;
    EXPECT_EQ(movie.probe().fact('a', "channels"), row.channels) << row.name;
    const auto sound = movie.probe().sound();
    EXPECT_NEAR(static_cast<double>(sound.size()) / 44100, 2.0, 0.03) << row.name;
    EXPECT_NEAR(frequency(sound, 0.1, 0.9), 500, 5) << row.name;
    EXPECT_NEAR(frequency(sound, 1.1, 1.9), 500, 5) << row.name;
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieSound, GapsAreSilentAndOverlapsAreCut) {
  Studio studio;
  for (const auto& settings : {std::optional(aacSettings()), std::optional<NSDictionary>()}) {
    MovieOptions options = withSound(settings);
    options.pictures = false;
    const Movie movie(studio, options);
    const auto half = static_cast<std::size_t>(22050);
    ASSERT_TRUE(movie.append(tone(1000, half), kStart));
    ASSERT_TRUE(movie.append(tone(1000, half), after(kStart, 11025)));  // half of it again
    ASSERT_TRUE(movie.append(tone(1000, 2000), after(kStart, 11500)));  // all of it again
    ASSERT_TRUE(
        movie.append(std::vector<std::int16_t>(half), after(kStart, 33075 + 50)));  // a clock's jitter
    ASSERT_TRUE(movie.append(tone(400, half), after(kStart, 132300)));              // after a gap of 1.75 s
    movie.finish();
    const auto sound = movie.probe().sound();
    EXPECT_NEAR(static_cast<double>(sound.size()), 154350, 2048);
    EXPECT_NEAR(frequency(sound, 0.05, 0.70), 1000, 5);
    EXPECT_LT(onset({sound.begin() + 34000, sound.begin() + 131000}), 0) << "the gap is not silent";
    EXPECT_NEAR(onset({sound.begin() + 130000, sound.end()}), 2300.0 / 44100, 0.002);
    EXPECT_NEAR(frequency(sound, 3.05, 3.45), 400, 5);
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieSound, AnInputThatHearsNothingLeavesNoTrack) {
  Studio studio;
  for (const auto& settings : {std::optional(aacSettings()), std::optional<NSDictionary>()}) {
    const Movie movie(studio, withSound(settings));
    for (int frame = 0; frame < 10; ++frame) ASSERT_TRUE(movie.append(plain(64, 64, kWhite), frame / 30.0));
    movie.finish();
    EXPECT_EQ(movie.writer->status(), AVAssetWriterStatusCompleted) << movie.problem();
    EXPECT_EQ(movie.probe().fact('a', "codec_name"), "");
    EXPECT_EQ(movie.probe().pictures().size(), 10u);
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieSound, PlainSoundMayComeLate) {
  // The file's head names the sound's format, which is not known until then.
  Studio studio;
  MovieOptions options = withSound(std::nullopt);
  options.width = options.height = 320;
  options.bitRate = 60e6;
  const Movie movie(studio, options);
  std::mt19937 random(5);
  for (int frame = 0; frame < 40; ++frame) {  // some megabytes
    ASSERT_TRUE(movie.append(picture(320, 320,
                                     [&](auto, auto) {
                                       return Colour{int(random() % 256), int(random() % 256), 0};
                                     }),
                             frame / 30.0));
  }
  const CMAudioFormat format{48000, 2};
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(movie.append(tone(800, 4800, static_cast<std::size_t>(i * 4800), 48000, 2),
                             CMTimeAdd(kStart, CMTimeMake(15 + i, 10)), format))
        << movie.problem();
  }
  movie.finish();
  EXPECT_EQ(movie.probe().fact('a', "sample_rate"), "48000");
  const auto sound = movie.probe().sound();
  EXPECT_NEAR(onset(sound), 1.5, 0.005);
  EXPECT_NEAR(frequency(sound, 1.6, 2.4), 800, 5);
}

TEST(MovieSound, PicturesAndSoundComeFromTwoQueuesAndTheEndFromAThird) {
  Studio studio;
  const Movie movie(studio, withSound());
  const auto pictures = dispatch_queue_create("pictures"), sounds = dispatch_queue_create("sounds");
  std::atomic<int> refused = 0;
  for (int i = 0; i < 90; ++i) {
    dispatch_async(pictures, [&, i] {
      if (movie.pictures->isReadyForMoreMediaData() &&
          !movie.append(plain(64, 64, i % 2 ? kWhite : kBlack), i / 30.0))
        ++refused;
    });
    dispatch_async(sounds, [&, i] {
      const auto samples = tone(440, 1470, static_cast<std::size_t>(i * 1470));
      if (movie.sound->isReadyForMoreMediaData() && !movie.append(samples, after(kStart, i * 1470)))
        ++refused;
    });
  }
  dispatch_sync(pictures, [] {});
  dispatch_sync(sounds, [] {});
  EXPECT_EQ(refused, 0);
  // What still comes while the movie is being finished is taken or refused, and breaks nothing.
  for (int i = 90; i < 120; ++i) {
    dispatch_async(pictures, [&, i] { movie.append(plain(64, 64, kWhite), i / 30.0); });
    dispatch_async(sounds, [&, i] { movie.append(tone(440, 1470), after(kStart, i * 1470)); });
  }
  EXPECT_EQ(movie.finish(), 1);
  ASSERT_EQ(movie.writer->status(), AVAssetWriterStatusCompleted) << movie.problem();
  EXPECT_GE(movie.probe().pictures().size(), 90u);
  EXPECT_NEAR(frequency(movie.probe().sound(), 0.1, 2.9), 440, 3);
}

}  // namespace
}  // namespace ios
