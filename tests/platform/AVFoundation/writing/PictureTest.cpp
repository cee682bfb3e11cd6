#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <random>
#include <set>

#include "platform/AVFoundation/Studio.h"

namespace ios {
namespace {

using namespace testing_support;

constexpr Colour kColours[] = {{255, 255, 255}, {0, 0, 0},     {255, 0, 0},   {0, 255, 0},
                               {0, 0, 255},     {255, 255, 0}, {0, 255, 255}, {255, 0, 255},
                               {128, 128, 128}, {200, 90, 30}, {17, 34, 51},  {240, 248, 255}};
constexpr std::size_t kCount = std::size(kColours);

/// Squares of 32 pixels in all colours, each frame beginning with another one.
Colour square(std::size_t x, std::size_t y, std::size_t frame) {
  return kColours[(x / 32 + y / 32 * 4 + frame) % kCount];
}

TEST(MovieWriter, AnotherPlayerShowsTheColoursThatWereDrawn) {
  Studio studio;
  const Movie movie(studio, {.width = 128, .height = 96, .bitRate = 4e6});
  for (std::size_t frame = 0; frame < kCount; ++frame) {
    ASSERT_TRUE(
        movie.append(picture(128, 96, [&](auto x, auto y) { return square(x, y, frame); }), frame / 30.0));
  }
  ASSERT_EQ(movie.finish(), 1);
  ASSERT_EQ(movie.writer->status(), AVAssetWriterStatusCompleted) << movie.problem();

  const auto pictures = movie.probe().pictures();
  ASSERT_EQ(pictures.size(), kCount);
  for (std::size_t frame = 0; frame < kCount; ++frame) {
    for (std::size_t y = 16; y < 96; y += 32) {
      for (std::size_t x = 16; x < 128; x += 32) {
        EXPECT_LE(pictures[frame].at(x, y).distance(square(x, y, frame)), 8)
            << "frame " << frame << " at " << x << ", " << y;
      }
    }
  }
  // Players that do not guess need to be told.
  const MovieProbe probe = movie.probe();
  EXPECT_EQ(probe.fact('v', "codec_name"), "h264");
  EXPECT_EQ(probe.fact('v', "color_range"), "tv");
  EXPECT_EQ(probe.fact('v', "color_space"), "smpte170m");
  EXPECT_EQ(probe.fact('v', "color_primaries"), "bt709");
  EXPECT_EQ(probe.fact('v', "color_transfer"), "iec61966-2-1");
  EXPECT_EQ(probe.fact('v', "chroma_location"), "center");
}

TEST(MovieWriter, AnySizeGivesAMovieThatPlays) {
  struct Row {
    double width, height;
    std::size_t columns, rows;
  };
  const Row rows[] = {{750, 1334, 750, 1334}, {375.4, 667.5, 376, 668},
                      {101, 55, 102, 56},     {100, 55, 100, 56},
                      {1, 1, 2, 2},           {17.5, 2.4, 18, 2}};
  Studio studio;
  const Colour grey{90, 90, 90}, orange{250, 140, 10};
  for (const Row& row : rows) {
    const auto size = CVPixelSize::rounded(row.width, row.height);
    const Movie movie(studio, {.width = row.width, .height = row.height, .bitRate = 4e6});
    for (int frame = 0; frame < 3; ++frame) {
      ASSERT_TRUE(movie.append(plain(size->width, size->height, frame == 1 ? grey : orange), frame / 30.0))
          << movie.problem();
    }
    movie.finish();
    const auto pictures = movie.probe().pictures();
    ASSERT_EQ(pictures.size(), 3u) << row.width << " x " << row.height;
    EXPECT_EQ(pictures[0].width, row.columns) << row.width;
    EXPECT_EQ(pictures[0].height, row.rows) << row.height;
    // A column or row that only makes the size even has the colour of its neighbours.
    EXPECT_LE(pictures[1].at(row.columns - 1, row.rows - 1).distance(grey), 8)
        << row.width << " x " << row.height;
    EXPECT_LE(pictures[2].at(row.columns - 1, row.rows - 1).distance(orange), 8)
        << row.width << " x " << row.height;
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieWriter, StretchesPicturesOfAnotherSize) {
  Studio studio;
  const Movie movie(studio, {.width = 128, .height = 96, .bitRate = 4e6});
  ASSERT_TRUE(
      movie.append(picture(64, 32, [](auto x, auto) { return x < 32 ? kColours[2] : kColours[4]; }), 0));
  movie.finish();
  const auto pictures = movie.probe().pictures();
  ASSERT_EQ(pictures.size(), 1u);
  EXPECT_LE(pictures[0].at(32, 80).distance(kColours[2]), 8);
  EXPECT_LE(pictures[0].at(96, 8).distance(kColours[4]), 8);
}

TEST(MovieWriter, TimesAreKeptToTheMillisecondFromTheSessionsStart) {
  Studio studio;
  const CMTime start = CMTimeMake(220507, 44100);  // such as a microphone's: no whole millisecond
  const Movie movie(studio, {.start = start});
  const std::vector<double> times = {0, 0.033, 0.066, 0.1, 0.101, 1.5, 1.533, 31.007};
  std::vector<Colour> drawn;
  ASSERT_TRUE(
      movie.adaptor->appendPixelBuffer(plain(64, 64, {1, 1, 1}), CMTimeSubtract(start, CMTimeMake(5, 1000))));
  for (const double time : times) {
    drawn.push_back(kColours[drawn.size()]);
    ASSERT_TRUE(movie.append(plain(64, 64, drawn.back()), time));
  }
  movie.finish();
  const auto written = movie.probe().times('v');
  ASSERT_EQ(written.size(), times.size());  // the picture from before the start is not among them
  for (std::size_t i = 0; i < times.size(); ++i) EXPECT_NEAR(written[i], times[i], 1e-6);
  EXPECT_NEAR(movie.probe().number('v', "duration"), 31.007 + (31.007 - 1.533), 0.001);
  EXPECT_LE(movie.probe().pictures()[0].at(32, 32).distance(drawn[0]), 8);
}

TEST(MovieWriter, TimesTooCloseForTheFileStayInOrder) {
  Studio studio;
  const Movie movie(studio);
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(movie.adaptor->appendPixelBuffer(plain(64, 64, kColours[i]), CMTimeMake(i, 1'000'000'000)));
  }
  movie.finish();
  const auto times = movie.probe().times('v');
  ASSERT_EQ(times.size(), 4u);
  EXPECT_TRUE(std::is_sorted(times.begin(), times.end(), std::less_equal<>())) << "two frames at one time";
}

// Which frames of a long movie differ from the one before: single changes, bursts, long rests.
bool changesAt(int frame) {
  return frame % 97 < 3 || (frame > 300 && frame < 330) || frame == 601;
}

TEST(MovieWriter, StillPicturesCostNextToNothingAndEveryFrameIsRight) {
  Studio studio;
  const Movie movie(studio, {.width = 128, .height = 96, .bitRate = 2e6});
  constexpr int kFrames = 900;
  std::vector<std::size_t> shown;
  for (int frame = 0; frame < kFrames; ++frame) {
    shown.push_back((shown.empty() ? 0 : shown.back()) + (changesAt(frame) ? 1 : 0));
    const auto drawn = picture(128, 96, [&](auto x, auto y) { return square(x, y, shown.back()); });
    ASSERT_TRUE(movie.append(drawn, frame / 30.0)) << movie.problem();
  }
  movie.finish();
  const MovieProbe probe = movie.probe();
  const auto pictures = probe.pictures();
  ASSERT_EQ(pictures.size(), static_cast<std::size_t>(kFrames));
  int wrong = 0;
  for (int frame = 0; frame < kFrames; ++frame) {
    for (std::size_t x = 16; x < 128; x += 32) {
      const auto& decoded = pictures[static_cast<std::size_t>(frame)];
      if (decoded.at(x, 48).distance(square(x, 48, shown[static_cast<std::size_t>(frame)])) > 12) ++wrong;
    }
  }
  EXPECT_EQ(wrong, 0);
  const auto sizes = probe.sizes('v');
  const auto small = std::count_if(sizes.begin(), sizes.end(), [](long size) { return size < 20; });
  EXPECT_GT(small, kFrames * 3 / 4) << "still pictures were encoded";
  EXPECT_LE(probe.longestKeyInterval(), 450u) << "a player could not jump into the movie";
}

// Pictures that have nothing in common with the ones before need more than any rate gives.
TEST(MovieWriter, KeepsTheBitRateOverThirtySecondsWhateverIsShown) {
  Studio studio;
  const struct {
    const char* name;
    std::size_t grain;  // pixels that have a colour in common, across and down
    double pace;        // pictures a second
    double rate;        // asked for
  } rows[] = {{"coarse", 8, 15, 629145.6}, {"coarse, quick", 8, 60, 629145.6}, {"noise", 1, 30, 100000}};
  for (const auto& row : rows) {
    const Movie movie(studio, {.width = 320, .height = 240, .bitRate = row.rate});
    std::mt19937 random(1);
    const int frames = static_cast<int>(30 * row.pace);
    const std::size_t columns = 320 / row.grain;
    std::vector<Colour> grains(columns * (240 / row.grain));
    for (int frame = 0; frame < frames; ++frame) {
      for (auto& colour : grains) {
        const auto value = random();
        colour = {int(value & 255), int(value >> 8 & 255), int(value >> 16 & 255)};
      }
      const auto colourAt = [&](auto x, auto y) { return grains[y / row.grain * columns + x / row.grain]; };
      ASSERT_TRUE(movie.append(picture(320, 240, colourAt), frame / row.pace));
    }
    movie.finish();
    const double rate = movie.probe().number('v', "bit_rate");
    EXPECT_LE(rate, row.rate * 1.05) << row.name;
    EXPECT_GE(rate, row.rate * 0.85) << row.name;
    std::filesystem::remove(studio.path());
  }
}

TEST(MovieWriter, TheSamePicturesAndSoundGiveTheSameBytes) {
  Studio studio;
  std::set<std::string> contents;
  for (int run = 0; run < 2; ++run) {
    const Movie movie(studio, {.width = 128, .height = 96, .sound = true, .soundSettings = aacSettings()});
    for (std::size_t frame = 0; frame < 40; ++frame) {
      ASSERT_TRUE(movie.append(picture(128, 96, [&](auto x, auto y) { return square(x, y, frame / 9); }),
                               frame / 30.0));
      ASSERT_TRUE(movie.append(tone(440, 1470, frame * 1470),
                               CMTimeMake(static_cast<CMTimeValue>(frame * 1470), 44100)));
    }
    movie.finish();
    std::ifstream file(studio.path(), std::ios::binary);
    contents.insert(std::string(std::istreambuf_iterator<char>(file), {}));
    std::filesystem::remove(studio.path());
  }
  EXPECT_EQ(contents.size(), 1u);
  EXPECT_GT(contents.begin()->size(), 1000u);
}

}  // namespace
}  // namespace ios
