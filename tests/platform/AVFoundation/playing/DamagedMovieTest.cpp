#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>

#include "platform/AVFoundation/playing/Playing.h"

namespace ios {
namespace {

using namespace testing_support;

TEST(DamagedMovie, FailsWithAReasonAndStaysStill) {
  struct Row {
    const char* name;
    std::function<NSURL(const std::filesystem::path& folder)> url;
  };
  const auto file = [](const std::filesystem::path& path) { return NSURL::fileURLWithPath(path); };
  const auto link = [](const char* text) { return *NSURL::URLWithString(text); };
  const Row rows[] = {
      {"no file", [&](const auto& folder) { return file(folder / "none.mov"); }},
      {"a folder", [&](const auto& folder) { return file(folder); }},
      {"a pipe that nobody writes to",
       [&](const auto& folder) {
         EXPECT_EQ(0, ::mkfifo((folder / "pipe.mov").c_str(), 0600));
         return file(folder / "pipe.mov");
       }},
      {"no movie",
       [&](const auto& folder) {
         std::ofstream(folder / "text.mov") << "not a movie";
         return file(folder / "text.mov");
       }},
      {"half a movie",
       [&](const auto& folder) {
         const auto path = colouredMovie(folder, 1);
         std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
         return file(path);
       }},
      {"an asset that is gone",
       [&](const auto&) {
         return link("assets-library://asset/asset.MP4?id=4B73F4FE-3502-47C7-8BCF-AD540EDE98A1&ext=MP4");
       }},
      {"an asset that leads elsewhere",
       [&](const auto&) { return link("assets-library://asset/asset.MP4?id=../../../etc/passwd&ext=MP4"); }},
      {"somebody's server", [&](const auto&) { return link("https://example.com/a.mov"); }},
  };
  Playing playing;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    playing.open(row.url(playing.movies()));
    EXPECT_EQ(AVPlayerStatusFailed, playing.player->status());
    EXPECT_TRUE(playing.player->error());
    playing.player->play();
    playing.player->seekToTime(CMTimeMake(1, 1));
    playing.runFor(0.5);
    EXPECT_EQ(0, playing.player->rate());
  }
}

// Its index is whole, its pictures are not: it was copied from somewhere, and not to the end.
TEST(DamagedMovie, IsPlayedUntilItBreaksOff) {
  Playing playing;
  const auto movie = colouredMovie(playing.movies(), 4);
  for (const double share : {0.5, 0.0}) {  // in the middle of a picture; between two
    SCOPED_TRACE(share);
    playing.open(brokenOff(movie, 2, share));
    playing.player->play();
    playing.runFor(1);
    EXPECT_EQ(1, playing.player->rate());
    EXPECT_LE(playing.picture().distance(colourAt(playing.time())), kLoss);
    playing.runFor(5);
    EXPECT_EQ(0, playing.player->rate());
    EXPECT_EQ(AVPlayerStatusFailed, playing.player->status());
  }
}

/// Overwrites the length in a movie's header box: version and flags, two dates, the timescale, the length.
void sayHalfASecond(const std::filesystem::path& path, const std::string& header) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  const auto box = bytes.find(header);
  ASSERT_NE(box, std::string::npos) << header;
  ASSERT_EQ(0, bytes[box + 4]) << "of the short kind";
  std::uint32_t timescale = 0;
  for (std::size_t i = 0; i < 4; ++i)
    timescale = timescale << 8 | static_cast<std::uint8_t>(bytes[box + 16 + i]);
  file.seekp(static_cast<std::streamoff>(box + 20));
  for (const int shift : {24, 16, 8, 0}) file.put(static_cast<char>(timescale / 2 >> shift));
}

// A damaged movie may claim any length.
TEST(DamagedMovie, WithTooShortALengthInItsHeaderIsPlayedToItsEnd) {
  Playing playing;
  const auto ends = Ends::counted();
  const auto path = colouredMovie(playing.movies(), 2);
  for (const char* header : {"mvhd", "mdhd"}) sayHalfASecond(path, header);
  playing.open(path);
  ASSERT_EQ(AVPlayerStatusReadyToPlay, playing.player->status());
  playing.player->play();
  playing.runFor(1);
  EXPECT_EQ(1, playing.player->rate());
  EXPECT_LE(playing.picture().distance(colourAt(playing.time())), kLoss) << "at " << playing.time();
  playing.runFor(3);
  EXPECT_EQ(0, playing.player->rate());
  EXPECT_EQ(1, ends->count);
  EXPECT_LE(playing.picture().distance(colourAt(1.99)), kLoss);
}

}  // namespace
}  // namespace ios
