#include <gtest/gtest.h>

#include <cstdlib>

#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"
#include "platform/AVFoundation/playing/Playing.h"

namespace ios {
namespace {

using namespace testing_support;

TEST(Player, SeeksToThePictureOfThatTime) {
  Playing playing;
  playing.open(colouredMovie(playing.movies(), 3));
  for (const double seconds : {1.6, 0.3, 2.9, 0.0, 1.0}) {
    playing.player->seekToTime(CMTimeMakeWithSeconds(seconds, 600));
    playing.runFor(0.1);
    EXPECT_NEAR(seconds, playing.time(), 0.002);
    EXPECT_LE(playing.picture().distance(colourAt(seconds)), kLoss) << seconds;
  }
  playing.player->play();
  playing.runFor(0.5);
  playing.player->seekToTime(CMTimeMake(2, 1));
  playing.runFor(0.3);
  EXPECT_NEAR(2.3, playing.time(), 0.05) << "it plays on";
  EXPECT_LE(playing.picture().distance(colourAt(playing.time())), kLoss);
  playing.player->seekToTime(CMTimeMake(-5, 1));
  EXPECT_NEAR(0, playing.time(), 1e-9);
  playing.player->seekToTime(CMTimeMake(500, 1));
  playing.runFor(0.1);
  EXPECT_EQ(0, playing.player->rate());
  EXPECT_LE(playing.picture().distance(colourAt(2.99)), kLoss);
}

TEST(Player, PlayedBeforeItHasReadAnythingStartsAtTheBeginning) {
  Playing playing;
  const auto path = colouredMovie(playing.movies(), 1);
  const auto player = AVPlayer::playerWithURL(NSURL::fileURLWithPath(path));
  player->play();
  EXPECT_EQ(AVPlayerStatusUnknown, player->status());
  EXPECT_EQ(0, CMTimeGetSeconds(player->currentTime()));
  playing.runFor(0.5);
  EXPECT_EQ(AVPlayerStatusReadyToPlay, player->status());
  EXPECT_NEAR(0.5, CMTimeGetSeconds(player->currentTime()), 0.05);
}

// The first picture is decoded while the main thread has not heard of it yet.
TEST(Player, PausedBeforeItIsReadyBecomesReady) {
  Playing playing;
  const auto player = AVPlayer::playerWithURL(NSURL::fileURLWithPath(colouredMovie(playing.movies(), 1)));
  player->play();
  // A wait of the main thread ends when no other has anything to do.
  dispatch_semaphore_wait(dispatch_semaphore_create(0), dispatch_time(DISPATCH_TIME_NOW, 10'000'000));
  player->pause();
  EXPECT_EQ(AVPlayerStatusUnknown, player->status());
  playing.runFor(0.5);
  EXPECT_EQ(AVPlayerStatusReadyToPlay, player->status());
  EXPECT_TRUE(player->currentPicture());
  EXPECT_EQ(0, CMTimeGetSeconds(player->currentTime()));
}

// A player that assumes another colour coding than the movie's shows colours that are close, but wrong.
TEST(Player, ShowsColoursAsTheMovieSaysTheyAreCoded) {
  struct Row {
    const char *name, *size, *converted, *tags;
  };
  const Row rows[] = {
      {"of television", "96x64", "out_color_matrix=bt601:out_range=tv", "-colorspace smpte170m"},
      {"of television, large", "1280x720", "out_color_matrix=bt601:out_range=tv", "-colorspace smpte170m"},
      {"of high definition", "96x64", "out_color_matrix=bt709:out_range=tv", "-colorspace bt709"},
      {"of the whole range", "96x64", "out_color_matrix=bt601:out_range=pc",
       "-colorspace smpte170m -color_range pc"},
      {"of high definition, the whole range", "96x64", "out_color_matrix=bt709:out_range=pc",
       "-colorspace bt709 -color_range pc"},
      {"small, without a word", "96x64", "out_color_matrix=bt601:out_range=tv", ""},
      {"large, without a word", "1280x720", "out_color_matrix=bt709:out_range=tv", ""},
  };
  Playing playing;
  const auto path = playing.movies() / "coded.mov";
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string command = std::string("ffmpeg -v error -y -f lavfi -i color=0x28A03C:s=") + row.size +
                                ":d=0.1,format=bgra -vf scale=" + row.converted +
                                ",format=yuv420p -c:v libx264 -qp 1 " + row.tags + " '" + path.string() + "'";
    ASSERT_EQ(0, std::system(command.c_str()));
    playing.open(path);
    ASSERT_EQ(AVPlayerStatusReadyToPlay, playing.player->status());
    EXPECT_LE(playing.picture().distance({0x28, 0xA0, 0x3C}), 3);
  }
}

TEST(Player, PlaysOddSizes) {
  Playing playing;
  playing.open(colouredMovie(playing.movies(), 0.5, 97, 61));
  ASSERT_EQ(AVPlayerStatusReadyToPlay, playing.player->status());
  EXPECT_LE(playing.picture().distance(colourAt(0)), kLoss);
}

// The movie is opened once; deleting it meanwhile does not disturb playback.
TEST(Player, FinishesAMovieThatIsDeletedMeanwhile) {
  Playing playing;
  const auto path = colouredMovie(playing.movies(), 2);
  playing.open(path);
  playing.player->play();
  playing.runFor(0.5);
  std::filesystem::remove(path);
  playing.runFor(1);
  EXPECT_LE(playing.picture().distance(colourAt(playing.time())), kLoss);
}

TEST(Player, MayBeReleasedInAnyState) {
  Playing playing;
  const std::string kNothing = Clock::shared().pending();
  const auto url = NSURL::fileURLWithPath(colouredMovie(playing.movies(), 2));
  for (const double seconds : {0.0, 0.01, 0.5}) {
    auto player = AVPlayer::playerWithURL(url);
    const std::weak_ptr<AVPlayer> watched = player;
    player->play();
    playing.runFor(seconds);
    player = nullptr;
    EXPECT_TRUE(watched.expired()) << "its display link keeps it: it would play on unseen";
    playing.runFor(0.5);
  }
  // While it decodes: nobody has waited for it.
  for (const bool seeks : {false, true}) {
    auto player = AVPlayer::playerWithURL(url);
    if (seeks) playing.runFor(0.1);
    if (seeks) player->seekToTime(CMTimeMake(3, 2));
    const std::weak_ptr<AVPlayer> watched = player;
    player = nullptr;
    EXPECT_TRUE(watched.expired());
    playing.runFor(0.5);
  }
  EXPECT_EQ(kNothing, Clock::shared().pending()) << "something goes on without them";
}

}  // namespace
}  // namespace ios
