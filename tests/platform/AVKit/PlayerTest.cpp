#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <fstream>

#include "AVFoundation/AVAssetWriter.h"
#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"
#include "AVKit/AVPlayerViewController.h"
#include "CoreVideo/CVPixelBuffer.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"
#include "Foundation/NSNotificationCenter.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIImage.h"
#include "support/TestPhone.h"

namespace ios {
namespace {

using testing_support::TestPhone;

struct Rgb {
  int red = 0, green = 0, blue = 0;
  int distance(const Rgb& other) const {
    return std::max({std::abs(red - other.red), std::abs(green - other.green), std::abs(blue - other.blue)});
  }
};

constexpr Rgb kColours[] = {{220, 30, 30}, {30, 200, 40}, {40, 60, 230}, {240, 220, 30}};
constexpr double kLoss = 6;

/// The colour of the test movie's picture at a time: of 30 pictures a second, another one every quarter of
/// it.
Rgb colourAt(double seconds) {
  const double ofPicture = std::floor(seconds * 30 + 1e-6) / 30;
  return kColours[static_cast<std::size_t>(std::floor(ofPicture * 4 + 1e-6)) % std::size(kColours)];
}

/// A movie of plain colours at 30 pictures a second.
std::filesystem::path makeMovie(const TestPhone& phone, double seconds, std::size_t width = 96,
                                std::size_t height = 64) {
  const auto path = phone.folder() / "movie.mov";
  std::shared_ptr<NSError> error;
  const auto writer =
      AVAssetWriter::initWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie, error);
  const auto input = AVAssetWriterInput::initWithMediaType(
      AVMediaTypeVideo, NSDictionary{{AVVideoCodecKey, AVVideoCodecH264},
                                     {AVVideoWidthKey, static_cast<double>(width)},
                                     {AVVideoHeightKey, static_cast<double>(height)}});
  const auto adaptor = AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(input, std::nullopt);
  writer->addInput(input);
  EXPECT_TRUE(writer->startWriting());
  writer->startSessionAtSourceTime(kCMTimeZero);
  for (int frame = 0; frame < std::lround(seconds * 30); ++frame) {
    CVPixelBufferRef buffer;
    EXPECT_EQ(kCVReturnSuccess, CVPixelBufferCreate(width, height, kCVPixelFormatType_32BGRA, {}, buffer));
    CVPixelBufferLockBaseAddress(buffer, 0);
    const Rgb colour = colourAt(frame / 30.0);
    auto* pixels = static_cast<std::uint8_t*>(CVPixelBufferGetBaseAddress(buffer));
    for (std::size_t y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < width; ++x) {
        std::uint8_t* pixel = pixels + y * CVPixelBufferGetBytesPerRow(buffer) + 4 * x;
        pixel[0] = static_cast<std::uint8_t>(colour.blue);
        pixel[1] = static_cast<std::uint8_t>(colour.green);
        pixel[2] = static_cast<std::uint8_t>(colour.red);
        pixel[3] = 255;
      }
    }
    CVPixelBufferUnlockBaseAddress(buffer, 0);
    EXPECT_TRUE(adaptor->appendPixelBuffer(buffer, CMTimeMake(frame * 20, 600)));
  }
  bool finished = false;
  writer->finishWritingWithCompletionHandler(
      [&] { dispatch_async(dispatch_get_main_queue(), [&] { finished = true; }); });
  EXPECT_TRUE(Clock::shared().runUntil([&] { return finished; }, std::chrono::seconds(1)));
  return path;
}

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
  static Rgb at(CGPoint point) {
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
  static Rgb picture() { return at({60, 320}); }

  std::shared_ptr<AVPlayerViewController> controller;
};

/// Counts ends of playing.
class Ends : public Subclass<Ends, NSObject> {
 public:
  static MethodList methods() { return {{"ended", &Ends::ended}}; }
  int count = 0;

 private:
  void ended() { ++count; }
};

TEST(Player, ShowsEachPictureAtItsTimeAndFitsItOnBlack) {
  Screening phone;
  const auto ends = std::make_shared<Ends>();
  NSNotificationCenter::defaultCenter()->addObserver(ends, "ended", AVPlayerItemDidPlayToEndTimeNotification,
                                                     nullptr);
  phone.open(makeMovie(phone, 2));
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

TEST(Player, SeeksToThePictureOfThatTime) {
  Screening phone;
  phone.open(makeMovie(phone, 3));
  for (const double seconds : {1.6, 0.3, 2.9, 0.0, 1.0}) {
    phone.player().seekToTime(CMTimeMakeWithSeconds(seconds, 600));
    phone.runFor(0.1);
    EXPECT_NEAR(seconds, phone.time(), 0.002);
    EXPECT_LE(Screening::picture().distance(colourAt(seconds)), kLoss) << seconds;
  }
  phone.player().play();
  phone.runFor(0.5);
  phone.player().seekToTime(CMTimeMake(2, 1));
  phone.runFor(0.3);
  EXPECT_NEAR(2.3, phone.time(), 0.05) << "it plays on";
  EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss);
  phone.player().seekToTime(CMTimeMake(-5, 1));
  EXPECT_NEAR(0, phone.time(), 1e-9);
  phone.player().seekToTime(CMTimeMake(500, 1));
  phone.runFor(0.1);
  EXPECT_EQ(0, phone.player().rate());
  EXPECT_LE(Screening::picture().distance(colourAt(2.99)), kLoss);
}

TEST(Player, ControlsGoWhileItPlaysAndComeBackWithATap) {
  Screening phone;
  phone.open(makeMovie(phone, 12));
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

TEST(Player, ThatIsAskedBeforeItHasReadAnythingBeginsAtTheBeginning) {
  Screening phone;
  const auto path = makeMovie(phone, 1);
  const auto player = AVPlayer::playerWithURL(NSURL::fileURLWithPath(path));
  player->play();
  EXPECT_EQ(AVPlayerStatusUnknown, player->status());
  EXPECT_EQ(0, CMTimeGetSeconds(player->currentTime()));
  phone.runFor(0.5);
  EXPECT_EQ(AVPlayerStatusReadyToPlay, player->status());
  EXPECT_NEAR(0.5, CMTimeGetSeconds(player->currentTime()), 0.05);
}

// The first picture is decoded while the main thread has not heard of it yet.
TEST(Player, ThatIsPausedBeforeItIsReadyBecomesReady) {
  Screening phone;
  const auto player = AVPlayer::playerWithURL(NSURL::fileURLWithPath(makeMovie(phone, 1)));
  player->play();
  // A wait of the main thread ends when no other has anything to do.
  dispatch_semaphore_wait(dispatch_semaphore_create(0), dispatch_time(DISPATCH_TIME_NOW, 10'000'000));
  player->pause();
  EXPECT_EQ(AVPlayerStatusUnknown, player->status());
  phone.runFor(0.5);
  EXPECT_EQ(AVPlayerStatusReadyToPlay, player->status());
  EXPECT_TRUE(player->currentPicture());
  EXPECT_EQ(0, CMTimeGetSeconds(player->currentTime()));
}

// Whoever takes another way of coding colours than the movie's shows them near, but not right.
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
  Screening phone;
  const auto path = phone.folder() / "coded.mov";
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string command = std::string("ffmpeg -v error -y -f lavfi -i color=0x28A03C:s=") + row.size +
                                ":d=0.1,format=bgra -vf scale=" + row.converted +
                                ",format=yuv420p -c:v libx264 -qp 1 " + row.tags + " '" + path.string() + "'";
    ASSERT_EQ(0, std::system(command.c_str()));
    phone.open(path);
    ASSERT_EQ(AVPlayerStatusReadyToPlay, phone.player().status());
    EXPECT_LE(Screening::picture().distance({0x28, 0xA0, 0x3C}), 3);
  }
}

TEST(Player, PlaysOddSizes) {
  Screening phone;
  phone.open(makeMovie(phone, 0.5, 97, 61));
  ASSERT_EQ(AVPlayerStatusReadyToPlay, phone.player().status());
  EXPECT_LE(Screening::picture().distance(colourAt(0)), kLoss);
}

TEST(Player, SaysWhatItCannotPlay) {
  struct Row {
    const char* name;
    std::function<NSURL(Screening&)> url;
  };
  const Row rows[] = {
      {"no file", [](Screening& phone) { return NSURL::fileURLWithPath(phone.folder() / "none.mov"); }},
      {"a folder", [](Screening& phone) { return NSURL::fileURLWithPath(phone.folder()); }},
      {"a pipe that nobody writes to",
       [](Screening& phone) {
         EXPECT_EQ(0, ::mkfifo((phone.folder() / "pipe.mov").c_str(), 0600));
         return NSURL::fileURLWithPath(phone.folder() / "pipe.mov");
       }},
      {"no movie",
       [](Screening& phone) {
         std::ofstream(phone.folder() / "text.mov") << "not a movie";
         return NSURL::fileURLWithPath(phone.folder() / "text.mov");
       }},
      {"half a movie",
       [](Screening& phone) {
         const auto path = makeMovie(phone, 1);
         std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
         return NSURL::fileURLWithPath(path);
       }},
      {"an asset that is gone",
       [](Screening&) {
         return *NSURL::URLWithString(
             "assets-library://asset/asset.MP4?id=4B73F4FE-3502-47C7-8BCF-AD540EDE98A1&ext=MP4");
       }},
      {"an asset that leads elsewhere",
       [](Screening&) {
         return *NSURL::URLWithString("assets-library://asset/asset.MP4?id=../../../etc/passwd&ext=MP4");
       }},
      {"somebody's server", [](Screening&) { return *NSURL::URLWithString("https://example.com/a.mov"); }},
  };
  Screening phone;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    phone.open(row.url(phone));
    EXPECT_EQ(AVPlayerStatusFailed, phone.player().status());
    EXPECT_TRUE(phone.player().error());
    EXPECT_TRUE(phone.shows("Cannot Play"));
    EXPECT_FALSE(phone.shows("Play"));
    phone.player().play();
    phone.player().seekToTime(CMTimeMake(1, 1));
    phone.runFor(0.5);
    EXPECT_EQ(0, phone.player().rate());
  }
}

// Its index is whole, its pictures are not: it was copied from somewhere, and not to the end.
TEST(Player, PlaysAMovieThatBreaksOffUntilThereAndThenSaysSo) {
  Screening phone;
  const auto path = makeMovie(phone, 4), streamed = phone.folder() / "streamed.mov";
  const std::string command =
      "ffmpeg -v error -i '" + path.string() + "' -c copy -movflags +faststart '" + streamed.string() + "'";
  ASSERT_EQ(0, std::system(command.c_str()));
  std::filesystem::resize_file(streamed, std::filesystem::file_size(streamed) * 4 / 5);
  phone.open(streamed);
  phone.player().play();
  phone.runFor(1);
  EXPECT_EQ(1, phone.player().rate());
  EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss);
  phone.runFor(5);
  EXPECT_EQ(0, phone.player().rate());
  EXPECT_EQ(AVPlayerStatusFailed, phone.player().status());
  EXPECT_TRUE(phone.shows("Cannot Play"));
  EXPECT_FALSE(phone.shows("Play"));
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

// A damaged movie may say anything of its length.
TEST(Player, PlaysAMovieThatSaysTooLittleOfItsLengthToItsEnd) {
  Screening phone;
  const auto ends = std::make_shared<Ends>();
  NSNotificationCenter::defaultCenter()->addObserver(ends, "ended", AVPlayerItemDidPlayToEndTimeNotification,
                                                     nullptr);
  const auto path = makeMovie(phone, 2);
  for (const char* header : {"mvhd", "mdhd"}) sayHalfASecond(path, header);
  phone.open(path);
  ASSERT_EQ(AVPlayerStatusReadyToPlay, phone.player().status());
  phone.player().play();
  phone.runFor(1);
  EXPECT_EQ(1, phone.player().rate());
  EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss) << "at " << phone.time();
  phone.runFor(3);
  EXPECT_EQ(0, phone.player().rate());
  EXPECT_EQ(1, ends->count);
  EXPECT_LE(Screening::picture().distance(colourAt(1.99)), kLoss);
}

TEST(Player, PlaysSoundThatIsLongerThanThePictures) {
  Screening phone;
  const auto ends = std::make_shared<Ends>();
  NSNotificationCenter::defaultCenter()->addObserver(ends, "ended", AVPlayerItemDidPlayToEndTimeNotification,
                                                     nullptr);
  const auto path = makeMovie(phone, 1 / 30.0), longer = phone.folder() / "longer.mov";
  const std::string command = "ffmpeg -v error -i '" + path.string() +
                              "' -f lavfi -i sine=duration=2 -c:v copy -c:a aac '" + longer.string() + "'";
  ASSERT_EQ(0, std::system(command.c_str()));
  phone.open(longer);
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

// The movie is opened once; who deletes it meanwhile does not disturb who watches it.
TEST(Player, FinishesAMovieThatIsDeletedMeanwhile) {
  Screening phone;
  const auto path = makeMovie(phone, 2);
  phone.open(path);
  phone.player().play();
  phone.runFor(0.5);
  std::filesystem::remove(path);
  phone.runFor(1);
  EXPECT_LE(Screening::picture().distance(colourAt(phone.time())), kLoss);
}

TEST(Player, PausesWhenTheApplicationIsLeft) {
  Screening phone;
  phone.open(makeMovie(phone, 3));
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

TEST(Player, IsLetGoInAnyState) {
  Screening phone;
  const std::string kNothing = Clock::shared().pending();
  const auto url = NSURL::fileURLWithPath(makeMovie(phone, 2));
  for (const double seconds : {0.0, 0.01, 0.5}) {
    auto player = AVPlayer::playerWithURL(url);
    const std::weak_ptr<AVPlayer> watched = player;
    player->play();
    phone.runFor(seconds);
    player = nullptr;
    EXPECT_TRUE(watched.expired()) << "its display link keeps it: it would play on unseen";
    phone.runFor(0.5);
  }
  // While it decodes: nobody has waited for it.
  for (const bool seeks : {false, true}) {
    auto player = AVPlayer::playerWithURL(url);
    if (seeks) phone.runFor(0.1);
    if (seeks) player->seekToTime(CMTimeMake(3, 2));
    const std::weak_ptr<AVPlayer> watched = player;
    player = nullptr;
    EXPECT_TRUE(watched.expired());
    phone.runFor(0.5);
  }
  EXPECT_EQ(kNothing, Clock::shared().pending()) << "something goes on without them";
  phone.open(url);
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
