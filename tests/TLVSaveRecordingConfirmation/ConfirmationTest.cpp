#include <gtest/gtest.h>

#include "AVKit/AVPlayerViewController.h"
#include "Foundation/NSNotificationCenter.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "Tellvane/TLVNotifications.h"
#include "UIKit/UIControl.h"
#include "info/TLVConstants.h"
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
  /// Saves a movie into the album; returns its identifier.
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

TEST(Confirmation, DeletingTakesTheRecordingOutOfTheLibraryAndPostsNothing) {
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

TEST(Confirmation, EveryAppearanceAddsAPlayerOnTopOfTheLast) {
  Confirming phone;
  phone.confirm(phone.record());
  const auto area = phone.screen->playerView();
  ASSERT_TRUE(area);
  ASSERT_EQ(1u, phone.screen->childViewControllers().size());
  // Something full-screen comes and goes, as the player's own full-screen mode does.
  phone.screen->presentViewController(std::make_shared<UIViewController>(), true);
  phone.runFor(1);
  phone.screen->dismissViewControllerAnimated(true);
  phone.runFor(1);
  const auto& players = phone.screen->childViewControllers();
  ASSERT_EQ(2u, players.size());
  ASSERT_EQ(2u, area->subviews().size());
  for (std::size_t i = 0; i < players.size(); ++i) {
    EXPECT_EQ(players[i]->view(), area->subviews()[i]);
    EXPECT_EQ(CGRectMake(0, 0, area->bounds().width(), area->bounds().height()), players[i]->view()->frame());
    const auto& player = dynamic_cast<const AVPlayerViewController&>(*players[i]).player();
    EXPECT_EQ(AVPlayerStatusReadyToPlay, player->status());
    EXPECT_EQ(0, player->rate());  // the user starts it
  }
  EXPECT_NE(dynamic_cast<const AVPlayerViewController&>(*players[0]).player(),
            dynamic_cast<const AVPlayerViewController&>(*players[1]).player());

  phone.device().changeSettings([](DeviceSettings& settings) { settings.orientation = 3; });
  phone.runFor(1);
  EXPECT_EQ(area->bounds().size, players[1]->view()->frame().size);
}

TEST(Confirmation, LeavesNothingBehind) {
  Confirming phone;
  phone.confirm(phone.record());
  const std::weak_ptr<UIViewController> screen = phone.screen,
                                        player = phone.screen->childViewControllers().at(0);
  EXPECT_TRUE(phone.tapText("Save"));
  phone.screen = nullptr;
  phone.runFor(1);
  EXPECT_TRUE(screen.expired());
  EXPECT_TRUE(player.expired());
}

TEST(Confirmation, FindsThePlayersMovieByTheFirstPieceOfTheIdentifier) {
  Confirming phone;
  const std::string identifier = phone.record(), piece = identifier.substr(0, identifier.find('/'));
  ASSERT_NE(identifier, piece);
  struct Row {
    std::string identifier;
    std::optional<AVPlayerStatus> status;  // none: no player
  };
  const std::vector<Row> rows{
      {identifier, AVPlayerStatusReadyToPlay},
      {piece, AVPlayerStatusReadyToPlay},
      {piece + "/L0/002", AVPlayerStatusReadyToPlay},
      {"/" + identifier, AVPlayerStatusFailed},
      {"", AVPlayerStatusFailed},
      {"no such movie", std::nullopt},
      {"50%", std::nullopt},
      {"café", std::nullopt},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.identifier);
    phone.confirm(row.identifier);
    const auto players = phone.screen->childViewControllers();
    ASSERT_EQ(row.status ? 1u : 0u, players.size());
    EXPECT_EQ(players.size(), phone.screen->playerView()->subviews().size());
    if (row.status) {
      EXPECT_EQ(*row.status, dynamic_cast<const AVPlayerViewController&>(*players[0]).player()->status());
    }
    phone.screen->dismissViewControllerAnimated(true);
    phone.runFor(1);
  }
}

TEST(ConfirmationDeathTest, IsNotMadeFromAnArchive) {
  EXPECT_DEATH(TLVSaveRecordingViewController{NSKeyedUnarchiver()},
               "init\\(coder:\\) has not been implemented");
}
