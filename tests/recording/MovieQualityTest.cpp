#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "RecordingPhone.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIImage.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIScrollView.h"

namespace tellvane {
namespace {

using namespace testing_support;

/// A list of texts that fills the screen, and may scroll. Keeps what the display shows at every second refresh,
/// without loss.
class List : public Subclass<List, NSObject> {
 public:
  List(const std::shared_ptr<UIWindow>& window, bool scrolls) : window_(window), scrolls_(scrolls) {}
  static MethodList methods() { return {{"refresh", &List::refresh}}; }

  void begin() {
    constexpr int kRows = 120;
    constexpr CGFloat kHeight = 62;
    const CGSize size = window_->bounds().size;
    list_ = std::make_shared<UIScrollView>(window_->bounds());
    list_->setBackgroundColor(UIColor::whiteColor());
    list_->setContentSize({size.width, kRows * kHeight});
    for (int row = 0; row < kRows; ++row) {
      const auto add = [&](const std::shared_ptr<UIView>& view) { list_->addSubview(view); };
      const auto title = std::make_shared<UILabel>(CGRectMake(16, row * kHeight + 8, size.width - 32, 24));
      title->setText("Note " + std::to_string(row * 37) + ", written on the way to the coast");
      add(title);
      const auto text = std::make_shared<UILabel>(CGRectMake(16, row * kHeight + 32, size.width - 32, 20));
      text->setText("Leave before seven, bring the blue bag, call about the " + std::to_string(row) +
                    " tickets");
      text->setFont(UIFont::systemFontOfSize(14));
      text->setTextColor(UIColor::colorWithRedGreenBlueAlpha(0.4, 0.4, 0.45, 1));
      add(text);
      const auto line = std::make_shared<UIView>(CGRectMake(16, row * kHeight, size.width - 16, 0.5));
      line->setBackgroundColor(UIColor::colorWithRedGreenBlueAlpha(0.8, 0.8, 0.82, 1));
      add(line);
    }
    window_->rootViewController()->view()->addSubview(list_);
    link_ = CADisplayLink::displayLinkWithTarget(shared_from_this(), "refresh");
    link_->setFrameInterval(2);
    link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
  }
  void keepIn(const std::filesystem::path& movie) {
    const CGSize size = window_->bounds().size;
    const CGFloat scale = UIScreen::mainScreen()->scale();
    std::ostringstream command;
    command << "ffmpeg -v error -f rawvideo -pix_fmt bgra -s " << size.width * scale << "x"
            << size.height * scale
            << " -r 30 -i - -vf scale=out_color_matrix=bt601:out_range=tv:flags=accurate_rnd+full_chroma_inp,"
            << "format=yuv420p -c:v ffv1 '" << movie.string() << "'";
    keeper_ = popen(command.str().c_str(), "w");
  }
  void end() {
    link_->invalidate();
    EXPECT_EQ(0, pclose(keeper_));
  }

 private:
  void refresh() {
    // As a thumb does it: a rest, then up to four hundred points a second.
    seconds_ += 1 / 30.0;
    const double moving = std::max(seconds_ - 1.5, 0.0);
    if (scrolls_) list_->setContentOffset({0, 400 * (1 - std::cos(moving))});
    if (keeper_) keep();  // what the recorder, whose turn is next, finds
  }

  void keep() {
    UIGraphicsBeginImageContextWithOptions(window_->bounds().size, true, 0);
    window_->drawViewHierarchyInRectAfterScreenUpdates(window_->bounds(), false);
    const auto image = UIGraphicsGetImageFromCurrentImageContext()->CGImageValue();
    UIGraphicsEndImageContext();
    for (std::size_t row = 0; row < image->height(); ++row) {
      std::fwrite(image->pixels() + row * image->bytesPerRow(), 4, image->width(), keeper_);
    }
  }

  const std::shared_ptr<UIWindow> window_;
  const bool scrolls_;
  std::shared_ptr<UIScrollView> list_;
  std::shared_ptr<CADisplayLink> link_;
  FILE* keeper_ = nullptr;
  double seconds_ = 0;
};

struct Likeness {
  std::vector<double> psnr, ssim;  // of every picture
};

/// How similar `movie` is to `screen`, according to ffmpeg.
Likeness likenessOf(const std::filesystem::path& movie, const std::filesystem::path& screen) {
  const std::string output =
      outputOf("ffmpeg -v error -i '" + movie.string() + "' -i '" + screen.string() +
               "' -lavfi '[0:v]settb=1/30,setpts=N,split[a][b];[1:v]settb=1/30,setpts=N,split[c][d];"
               "[a][c]psnr=stats_file=-:shortest=1;[b][d]ssim=stats_file=-:shortest=1' -f null -");
  Likeness likeness;
  std::istringstream words(output);
  for (std::string word; words >> word;) {
    if (word.starts_with("psnr_avg:"))
      likeness.psnr.push_back(word == "psnr_avg:inf" ? 99 : std::stod(word.substr(9)));
    if (word.starts_with("All:")) likeness.ssim.push_back(std::stod(word.substr(4)));
  }
  return likeness;
}

struct Quality {
  const char* name;
  const char* profile;
  std::int64_t orientation;
  bool scrolls;
  double seconds, worst;  // decibels
};

class MovieQuality : public testing::TestWithParam<Quality> {};

// A movie's first picture is what the confirmation screen and the companion show of it.
TEST_P(MovieQuality, IsThatOfTheScreenFromTheFirstPictureOn) {
  const Quality& quality = GetParam();
  TestPhone phone({.profile = quality.profile});
  phone.device().setPermission("photos", Permission::authorized);
  phone.device().changeSettings(
      [&](DeviceSettings& settings) { settings.orientation = quality.orientation; });
  const auto list = std::make_shared<List>(phone.show(), quality.scrolls);
  list->begin();
  phone.runFor(0.5);
  const auto recorder = std::make_shared<TLVScreenRecorder>(0.6, 30, false);
  list->keepIn(phone.folder() / "screen.mkv");
  bool recording = false;
  recorder->startTLVScreenRecording([&](bool success) { recording = success; });
  ASSERT_TRUE(recording);
  phone.runFor(quality.seconds);
  recorder->stopTLVRecordingWithCompletion(nullptr);
  phone.runFor(1);
  list->end();

  const auto movie = phone.folder() / "Media" / "DCIM" / "100TLVNE" / "IMG_0001.MOV";
  const auto likeness = likenessOf(movie, phone.folder() / "screen.mkv");
  ASSERT_EQ(likeness.psnr.size(), MovieProbe(movie).times('v').size());
  ASSERT_EQ(likeness.ssim.size(), likeness.psnr.size());
  EXPECT_GE(likeness.psnr.front(), 38);
  EXPECT_GE(likeness.ssim.front(), 0.985);
  const auto worst = std::min_element(likeness.psnr.begin(), likeness.psnr.end());
  EXPECT_GE(*worst, quality.worst) << "picture " << worst - likeness.psnr.begin();
}

INSTANTIATE_TEST_SUITE_P(Of, MovieQuality,
                         testing::Values(Quality{"AStillScreen", "iPhone 6", 1, false, 2, 38},
                                         Quality{"AScrolledList", "iPhone 6", 1, true, 5, 36},
                                         Quality{"ASmallPhoneOnItsSide", "iPhone SE", 3, true, 4, 36},
                                         Quality{"ALargePhone", "iPhone 6 Plus", 1, true, 3, 36},
                                         Quality{"APadOnItsSide", "iPad Air 2", 3, true, 3, 36}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace tellvane
