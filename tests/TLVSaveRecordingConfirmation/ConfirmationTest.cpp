#include <gtest/gtest.h>

#include "Foundation/NSNotificationCenter.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "UIKit/UIControl.h"
#include "info/TLVConstants.h"
#include "info/TLVNotifications.h"
#include "media/TLVPhotoAlbum.h"
#include "support/SampleMovie.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::outputOf;
using testing_support::sampleMovie;
using testing_support::TestPhone;

namespace {

constexpr char kInterfaceFile[] = "TLVSaveRecordingViewController";

/// Keeps what is posted, and whether the screen was still up then.
class Posts : public Subclass<Posts, NSObject> {
 public:
  static MethodList methods() { return {{"posted:", &Posts::posted}}; }
  static std::shared_ptr<Posts> ofEverything() {
    auto posts = std::make_shared<Posts>();
    NSNotificationCenter::defaultCenter()->addObserver(posts, "posted:", std::nullopt, nullptr);
    return posts;
  }
  std::vector<std::shared_ptr<NSNotification>> all;
  std::function<void()> onPost;

 private:
  void posted(const std::shared_ptr<NSNotification>& notification) {
    all.push_back(notification);
    if (onPost) onPost();
  }
};

/// A phone that shows the confirmation of a recording.
class Confirming : public TestPhone {
 public:
  explicit Confirming(Options options = {}) : TestPhone(std::move(options)) {
    device().setPermission("photos", Permission::authorized);
    window = show();
  }
  /// Saves a movie into the album; its identifier.
  std::string record() {
    std::optional<std::string> saved;
    TLVPhotoAlbum::saveToPhotosAlbum(NSURL::fileURLWithPath(sampleMovie(folder() / "movie.mov")),
                                     [&](std::optional<std::string> identifier) { saved = identifier; });
    runFor(1);
    EXPECT_TRUE(saved);
    return saved.value_or("");
  }
  void confirm(const std::string& identifier) {
    present(std::make_shared<TLVSaveRecordingViewController>(identifier, kInterfaceFile, TLV_BUNDLE()));
  }
  void present(std::shared_ptr<TLVSaveRecordingViewController> confirmation) {
    screen = std::move(confirmation);
    window->rootViewController()->presentViewController(screen, true);
    runFor(1);
  }
  bool isUp() const { return window->rootViewController()->presentedViewController() == screen; }
  std::string assets() const {
    return outputOf("sqlite3 '" + (folder() / "Media" / "Photos.sqlite").string() +
                    "' 'SELECT count(*) FROM asset'");
  }

  std::shared_ptr<UIWindow> window;
  std::shared_ptr<TLVSaveRecordingViewController> screen;
};

}  // namespace

TEST(Confirmation, SavingPostsOneIdentifierAndThenGoesAway) {
  Confirming phone;
  const auto posts = Posts::ofEverything();
  bool upAtThePost = false;
  posts->onPost = [&] { upAtThePost = phone.isUp() && !phone.screen->isBeingDismissed(); };
  phone.confirm("A1/L0/001");
  ASSERT_TRUE(phone.isUp());
  EXPECT_TRUE(phone.tapText("Save"));
  phone.runFor(1);
  ASSERT_EQ(1u, posts->all.size());
  EXPECT_TRUE(upAtThePost);
  EXPECT_EQ(nullptr, posts->all[0]->object());
  EXPECT_EQ((NSDictionary{{"assetId", "A1/L0/001"}}), posts->all[0]->userInfo());
  EXPECT_FALSE(phone.isUp());
}

TEST(Confirmation, DeletingTakesTheRecordingOutOfTheLibraryAndTellsNobody) {
  Confirming phone;
  const auto posts = Posts::ofEverything();
  const std::string identifier = phone.record();
  phone.record();
  ASSERT_EQ("2\n", phone.assets());
  phone.confirm(identifier);
  EXPECT_TRUE(phone.tapText("Delete"));
  phone.runFor(1);
  EXPECT_EQ("1\n", phone.assets());
  EXPECT_TRUE(posts->all.empty());
  EXPECT_FALSE(phone.isUp());
}

TEST(Confirmation, TheNamesStandOutInTheQuestion) {
  TestPhone::Options options;
  options.info = {{"CFBundleName", "video"}};
  Confirming phone(options);
  phone.confirm("A1/L0/001");
  const auto& label = phone.screen->infoLabel();
  ASSERT_TRUE(label);
  std::string marked;
  for (const auto& run : label->attributedText()->runs()) {
    const auto& font = dynamic_cast<const UIFont&>(*run.attributes.at(NSFontAttributeName));
    EXPECT_EQ(17, font.pointSize());
    const bool strong =
        font.description() == UIFont::fontWithNameSize("HelveticaNeue-Medium", 17)->description();
    EXPECT_TRUE(strong || font.description() == UIFont::fontWithNameSize("HelveticaNeue", 17)->description());
    const std::string text = label->text().substr(run.range.location, run.range.length);
    marked += strong ? "[" + text + "]" : text;
  }
  EXPECT_EQ("Save this [video] to [Tellvane] with AppName \"video\"?", marked);
}

TEST(Confirmation, WorksWithoutItsInterfaceFile) {
  Confirming phone;
  const auto posts = Posts::ofEverything();
  const std::shared_ptr<NSBundle> others = std::make_shared<NSBundle>(phone.folder());
  for (const auto& [name, bundle] : {std::pair(std::optional<std::string>(kInterfaceFile), others),
                                     std::pair(std::optional<std::string>(), TLV_BUNDLE())}) {
    phone.present(std::make_shared<TLVSaveRecordingViewController>(name, bundle));
    ASSERT_TRUE(phone.isUp());
    phone.screen->saveVideo(nullptr);
    phone.runFor(1);
    EXPECT_FALSE(phone.isUp());
  }
  ASSERT_EQ(2u, posts->all.size());
  EXPECT_EQ((NSDictionary{{"assetId", ""}}), posts->all[0]->userInfo());
}

TEST(ConfirmationDeathTest, IsNotMadeFromAnArchive) {
  EXPECT_DEATH(TLVSaveRecordingViewController{NSKeyedUnarchiver()},
               "init\\(coder:\\) has not been implemented");
}
