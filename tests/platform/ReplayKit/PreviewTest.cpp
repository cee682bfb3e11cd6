#include <gtest/gtest.h>

#include <cerrno>
#include <set>

#include "Device/Files.h"
#include "UIKit/UIPasteboard.h"
#include "platform/ReplayKit/RecordedPhone.h"

namespace ios {
namespace {

using testing_support::MovieProbe;
using testing_support::RecordedPhone;

/// What a preview reported; it dismisses the screen, as applications do.
class Listener : public NSObject, public RPPreviewViewControllerDelegate {
 public:
  void previewControllerDidFinishWithActivityTypes(
      const std::shared_ptr<RPPreviewViewController>& previewController,
      const std::set<std::string>& activityTypes) override {
    EXPECT_TRUE(isMainThread());
    finished.push_back(activityTypes);
    previewController->dismissViewControllerAnimated(true);
  }
  std::vector<std::set<std::string>> finished;
};

struct Previewed : RecordedPhone {
  explicit Previewed(const Options& options = {}) : RecordedPhone(options) {
    EXPECT_FALSE(start());
    runFor(1);
    preview = stop().preview;
    preview->setPreviewControllerDelegate(listener);
  }
  std::shared_ptr<Listener> listener = std::make_shared<Listener>();
  std::shared_ptr<RPPreviewViewController> preview;
};

TEST(Preview, PlaysTheMovie) {
  Previewed phone;
  phone.tapOnPreview(phone.preview, {"Play"});
  EXPECT_TRUE(phone.shows("-0:00"));
  EXPECT_FALSE(phone.shows("Cannot Play"));
  phone.paint(0, 0, 1);
  phone.runFor(0.1);
  const auto picture = UIApplication::sharedApplication()->displayImage()->CGImageValue();
  const std::uint8_t* middle =
      picture->pixels() + picture->height() / 3 * picture->bytesPerRow() + picture->width() / 2 * 4;
  EXPECT_GT(middle[2], 240) << "the red of the recorded screen";
  EXPECT_LT(middle[0], 15);
}

TEST(Preview, SavesWithoutThePermissionOfTheApplication) {
  Previewed phone;
  phone.device().setPermission("photos", Permission::denied);
  phone.tapOnPreview(phone.preview, {"Save"});
  EXPECT_EQ((std::vector<std::set<std::string>>{{"com.apple.UIKit.activity.SaveToCameraRoll"}}),
            phone.listener->finished);
  EXPECT_FALSE(phone.preview->presentingViewController());
  EXPECT_NEAR(1, MovieProbe(phone.savedMovie()).times('v').back(), 0.05);
  EXPECT_EQ("1\n", testing_support::outputOf("sqlite3 '" + (phone.folder() / "Media/Photos.sqlite").string() +
                                             "' 'SELECT count(*) FROM asset'"));
}

TEST(Preview, SaysThatTheDiskIsFullAndCanTryAgain) {
  Previewed phone;
  setDiskFault([](const std::string& operation, const std::filesystem::path&) {
    return operation == "write" ? ENOSPC : 0;
  });
  phone.tapOnPreview(phone.preview, {"Save"});
  EXPECT_TRUE(phone.shows("The Recording Was Not Saved"));
  EXPECT_TRUE(phone.tapText("OK"));
  phone.runFor(1);
  for (const char* choice : {"Share", "Copy"}) {
    EXPECT_TRUE(phone.tapText(choice));
    phone.runFor(1);
  }
  EXPECT_TRUE(phone.shows("The Recording Was Not Copied"));
  EXPECT_TRUE(phone.listener->finished.empty());
  setDiskFault(nullptr);
  EXPECT_TRUE(phone.tapText("OK"));
  phone.runFor(1);
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  EXPECT_EQ(1u, phone.listener->finished.size());
  EXPECT_TRUE(std::filesystem::exists(phone.savedMovie()));
}

TEST(Preview, CopiesAMovieThatOthersCanRead) {
  Previewed phone({.profile = "iPad Air 2"});  // the sheet is a popover there
  phone.tapOnPreview(phone.preview, {"Share", "Copy"});
  EXPECT_EQ((std::vector<std::set<std::string>>{{"com.apple.UIKit.activity.CopyToPasteboard"}}),
            phone.listener->finished);
  const auto items = UIPasteboard::generalPasteboard()->items();
  ASSERT_EQ(1u, items.size());
  const auto movie = testing_support::fileWith(phone.folder(), "pasted.mov",
                                               items[0].at("com.apple.quicktime-movie")->bytes());
  EXPECT_NEAR(1, MovieProbe(movie).times('v').back(), 0.05);
}

TEST(Preview, LeavesNothingOfARecordingThatIsCancelled) {
  Previewed phone;
  phone.tapOnPreview(phone.preview, {"Cancel"});
  EXPECT_EQ((std::vector<std::set<std::string>>{{}}), phone.listener->finished);
  const auto openMovies = [] {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      count += std::filesystem::read_symlink(entry.path(), gone).string().find("Recording.mov") !=
               std::string::npos;
    }
    return count;
  };
  EXPECT_GT(openMovies(), 0);
  phone.preview = nullptr;
  phone.runFor(1);
  EXPECT_EQ(0, openMovies());
  EXPECT_EQ((std::vector<std::string>{}), RecordedPhone::namesOfRecordings(phone.folder()));
  EXPECT_FALSE(std::filesystem::exists(phone.savedMovie()));
}

}  // namespace
}  // namespace ios
