#include <gtest/gtest.h>

#include "AVKit/AVPlayerViewController.h"
#include "DeviceClock/Clock.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIImage.h"
#include "platform/AVFoundation/playing/ColouredMovie.h"
#include "support/TestPhone.h"

namespace ios {
namespace {

using namespace testing_support;

/// A phone that shows a player's controller over the whole screen.
class Screening : public TestPhone {
 public:
  void open(const NSURL& url) {
    controller = std::make_shared<AVPlayerViewController>();
    controller->setPlayer(AVPlayer::playerWithURL(url));
    show(controller);
    runFor(0.2);
  }
  void open(const std::filesystem::path& path) { open(NSURL::fileURLWithPath(path)); }
  AVPlayer& player() const { return *controller->player(); }
  double time() const { return CMTimeGetSeconds(player().currentTime()); }

  /// What the display shows at a point.
  static Colour at(CGPoint point) {
    const auto window = UIApplication::sharedApplication()->keyWindow();
    UIGraphicsBeginImageContextWithOptions(window->bounds().size, true, 1);
    window->drawViewHierarchyInRectAfterScreenUpdates(window->bounds(), true);
    const auto image = UIGraphicsGetImageFromCurrentImageContext()->CGImageValue();
    UIGraphicsEndImageContext();
    const std::uint8_t* pixel = image->pixels() + static_cast<std::size_t>(point.y) * image->bytesPerRow() +
                                4 * static_cast<std::size_t>(point.x);
    return {pixel[2], pixel[1], pixel[0]};
  }
  /// Where the movie shows, beside the button in the middle.
  static Colour picture() { return at({60, 320}); }

  std::shared_ptr<AVPlayerViewController> controller;
};

TEST(PlayerViewController, ShowsEachPictureAtItsTimeAndFitsItOnBlack) {
  Screening phone;
  const auto ends = Ends::counted();
  phone.open(colouredMovie(phone.folder(), 2));
  EXPECT_EQ(AVPlayerStatusReadyToPlay, phone.player().status());
  EXPECT_NEAR(2, CMTimeGetSeconds(phone.player().duration()), 0.05);
  EXPECT_LE(Screening::picture().distance(colourAt(0)), kLoss) << "the first picture, before it plays";
  EXPECT_LE(Screening::at({60, 60}).distance({0, 0, 0}), 0);
  EXPECT_TRUE(phone.shows("0:00"));
  phone.runFor(1);
  EXPECT_EQ(0, phone.time()) << "nothing plays by itself";

  ASSERT_TRUE(phone.tapText("Play"));
  EXPECT_EQ(1, phone.player().rate());
  for (int step = 0; step < 12; ++step) {
    phone.runFor(0.1);
    EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss) << "at " << phone.time();
  }
  ASSERT_TRUE(phone.tapText("Pause"));
  const double stopped = phone.time();
  EXPECT_NEAR(1.25, stopped, 0.1);
  phone.runFor(5);
  EXPECT_EQ(stopped, phone.time());
  EXPECT_LE(Screening::picture().distance(colourAt(stopped)), kLoss);
  EXPECT_TRUE(phone.shows("0:01"));

  ASSERT_TRUE(phone.tapText("Play"));
  phone.runFor(2);
  EXPECT_EQ(0, phone.player().rate());
  EXPECT_EQ(1, ends->count);
  EXPECT_LE(Screening::picture().distance(colourAt(1.99)), kLoss) << "the last picture stays";
  ASSERT_TRUE(phone.tapText("Play")) << "once more from the beginning";
  phone.runFor(0.1);
  EXPECT_LT(phone.time(), 0.3);
  EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss);
  phone.runFor(3);
  EXPECT_EQ(2, ends->count);
}

TEST(PlayerViewController, ControlsHideWhileItPlaysAndComeBackWithATap) {
  Screening phone;
  phone.open(colouredMovie(phone.folder(), 12));
  ASSERT_TRUE(phone.tapText("Play"));
  phone.runFor(2);
  EXPECT_TRUE(phone.shows("Pause"));
  phone.runFor(2);
  EXPECT_FALSE(phone.shows("Pause"));
  phone.tap({60, 200});
  phone.runFor(1);
  EXPECT_TRUE(phone.shows("Pause"));
  // Half of the bar.
  phone.runFor(1);
  phone.tap({188, 645});
  phone.runFor(0.2);
  EXPECT_NEAR(6, phone.time(), 1.5);
  phone.runFor(1.5);
  EXPECT_TRUE(phone.shows("Pause")) << "the bar was touched";
  phone.runFor(2.5);
  EXPECT_FALSE(phone.shows("Pause"));
}

TEST(PlayerViewController, ShowsASignInPlaceOfWhatItCannotPlay) {
  Screening phone;
  phone.open(phone.folder() / "none.mov");
  EXPECT_TRUE(phone.player().error());
  EXPECT_TRUE(phone.shows("Cannot Play"));
  EXPECT_FALSE(phone.shows("Play"));
}

TEST(PlayerViewController, ShowsTheSignOnceAMovieBreaksOff) {
  Screening phone;
  phone.open(brokenOff(colouredMovie(phone.folder(), 4), 2, 0.5));
  phone.player().play();
  phone.runFor(1);
  EXPECT_FALSE(phone.shows("Cannot Play"));
  phone.runFor(5);
  EXPECT_TRUE(phone.shows("Cannot Play"));
  EXPECT_FALSE(phone.shows("Play"));
}

TEST(PlayerViewController, PlaysSoundThatIsLongerThanThePictures) {
  Screening phone;
  const auto ends = Ends::counted();
  phone.open(
      rewritten(colouredMovie(phone.folder(), 1 / 30.0), "-f lavfi -i sine=duration=2 -c:v copy -c:a aac"));
  phone.player().play();
  phone.runFor(1.5);
  EXPECT_EQ(1, phone.player().rate());
  EXPECT_NEAR(1.5, phone.time(), 0.05);
  EXPECT_TRUE(phone.shows("0:01")) << "the times go on, though the picture is the same";
  phone.player().seekToTime(CMTimeMake(1, 1));
  phone.runFor(0.5);
  EXPECT_EQ(1, phone.player().rate());
  EXPECT_LE(Screening::picture().distance(colourAt(0)), kLoss) << "the one picture stays";
  phone.runFor(2);
  EXPECT_EQ(0, phone.player().rate());
  EXPECT_EQ(1, ends->count);
}

TEST(PlayerViewController, PausesWhenTheApplicationIsLeft) {
  Screening phone;
  phone.open(colouredMovie(phone.folder(), 3));
  phone.player().play();
  phone.runFor(0.5);
  UIApplication::sharedApplication()->moveToBackground("home");
  phone.runFor(10);
  UIApplication::sharedApplication()->moveToForeground();
  phone.runFor(0.5);
  EXPECT_EQ(0, phone.player().rate());
  EXPECT_NEAR(0.5, phone.time(), 0.1);
  ASSERT_TRUE(phone.tapText("Play"));
  phone.runFor(0.5);
  EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss);
}

TEST(PlayerViewController, RestsWhileItIsPausedAndLeavesItsScreenWhenItIsTakenAway) {
  Screening phone;
  const std::string kNothing = Clock::shared().pending();
  phone.open(colouredMovie(phone.folder(), 2));
  phone.player().play();
  phone.runFor(0.3);
  phone.player().pause();
  phone.runFor(4);
  EXPECT_EQ(kNothing, Clock::shared().pending()) << "it works though it is paused";
  phone.player().play();
  phone.runFor(0.3);
  phone.controller->setPlayer(nullptr);
  phone.runFor(0.5);
  EXPECT_FALSE(phone.shows("Pause"));
}

}  // namespace
}  // namespace ios
