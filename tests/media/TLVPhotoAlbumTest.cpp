#include "media/TLVPhotoAlbum.h"

#include <gtest/gtest.h>

#include "Device/PermissionPrompt.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"
#include "Photos/PHAsset.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHPhotoLibrary.h"
#include "Tellvane/TLVManager.h"
#include "support/SampleMovie.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::Console;
using testing_support::outputOf;
using testing_support::sampleMovie;
using testing_support::TestPhone;

namespace {

/// A phone with a movie to save, and what became of the saves.
class Album : public TestPhone {
 public:
  Album() { movie = sampleMovie(folder() / "movie.mov"); }

  void allow(Permission permission) const { device().setPermission("photos", permission); }
  /// The user answers like this, a second after being asked, on another thread.
  void answer(bool granted) {
    setPermissionPresenter([this, granted](const PermissionQuestion& question, auto reply) {
      questions.push_back(question.service);
      const auto later = dispatch_time(DISPATCH_TIME_NOW, std::int64_t{1'000'000'000});
      dispatch_after(later, dispatch_queue_create("user"), [reply, granted] { reply(granted); });
    });
  }
  void save() {
    TLVPhotoAlbum::saveToPhotosAlbum(NSURL::fileURLWithPath(movie),
                                     [this](std::optional<std::string> identifier) {
                                       onMainThread.push_back(isMainThread());
                                       alertWasUp.push_back(shows("Access to Photos"));
                                       saved.push_back(std::move(identifier));
                                     });
  }
  void makeAlbum(const std::string& title) const {
    PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
        [title] { PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle(title); },
        [](bool success, const std::shared_ptr<NSError>&) { EXPECT_TRUE(success); });
    runFor(0);
  }
  /// What another program reads in the library.
  std::string query(const std::string& statement) const {
    return outputOf("sqlite3 '" + (folder() / "Media" / "Photos.sqlite").string() + "' \"" + statement +
                    "\"");
  }
  std::string movies() const {
    return outputOf("ls '" + (folder() / "Media" / "DCIM" / "100TLVNE").string() + "'");
  }

  std::filesystem::path movie;
  std::vector<std::string> questions;
  std::vector<std::optional<std::string>> saved;
  std::vector<bool> onMainThread, alertWasUp;
};

constexpr char kMembers[] =
    "SELECT album.title, asset.file FROM membership JOIN album ON album.id = album"
    " JOIN asset ON asset.id = asset ORDER BY membership.id";

}  // namespace

TEST(PhotoAlbum, TheFirstSaveAsksAndMakesTheAlbumAndLaterOnesFindIt) {
  Album phone;
  phone.show();
  phone.answer(true);
  phone.save();
  EXPECT_TRUE(phone.saved.empty());
  phone.runFor(2);
  EXPECT_EQ(std::vector<std::string>{"photos"}, phone.questions);
  ASSERT_EQ(1u, phone.saved.size());
  ASSERT_TRUE(phone.saved[0]);
  EXPECT_EQ(std::vector<bool>{true}, phone.onMainThread);
  EXPECT_EQ("Tellvane|DCIM/100TLVNE/IMG_0001.MOV\n", phone.query(kMembers));
  EXPECT_EQ(phone.saved[0]->substr(0, 36) + "\n", phone.query("SELECT uuid FROM asset"));
  outputOf("cmp '" + phone.movie.string() + "' '" +
           (phone.folder() / "Media/DCIM/100TLVNE/IMG_0001.MOV").string() + "'");
  ASSERT_TRUE(TLVPhotoAlbum::collection());
  EXPECT_EQ("Tellvane", TLVPhotoAlbum::collection()->localizedTitle());

  // Whatever another set there is replaced by what the search finds.
  TLVPhotoAlbum::setCollection(std::make_shared<PHAssetCollection>("elsewhere", "elsewhere"));
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(2u, phone.saved.size());
  ASSERT_TRUE(phone.saved[1]);
  EXPECT_NE(phone.saved[0], phone.saved[1]);
  EXPECT_EQ("1\n", phone.query("SELECT count(*) FROM album"));
  EXPECT_EQ("Tellvane|DCIM/100TLVNE/IMG_0001.MOV\nTellvane|DCIM/100TLVNE/IMG_0002.MOV\n",
            phone.query(kMembers));
}

TEST(PhotoAlbum, TheTitleIsMatchedExactlyAndTheFirstOfTwoIsUsed) {
  Album phone;
  phone.allow(Permission::authorized);
  for (const char* title : {"tellvane", "Tellvane ", "TELLVANE", "Tellvane", "Tellvane"})
    phone.makeAlbum(title);
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(1u, phone.saved.size());
  EXPECT_EQ("5\n", phone.query("SELECT count(*) FROM album"));
  EXPECT_EQ("4\n", phone.query("SELECT album FROM membership"));
}

TEST(PhotoAlbum, TwoSavesAtOnceBothComeThrough) {
  Album phone;
  phone.allow(Permission::authorized);
  phone.makeAlbum("Tellvane");
  phone.save();
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(2u, phone.saved.size());
  EXPECT_TRUE(phone.saved[0] && phone.saved[1] && phone.saved[0] != phone.saved[1]);
  EXPECT_EQ("2\n", phone.query("SELECT count(*) FROM membership WHERE album = 1"));
}

// Neither finds an album, and the second must not make another.
TEST(PhotoAlbum, TheFirstTwoSavesAtOnceMakeOneAlbum) {
  Album phone;
  phone.answer(true);
  phone.save();
  phone.save();
  phone.runFor(2);
  ASSERT_EQ(2u, phone.saved.size());
  EXPECT_TRUE(phone.saved[0] && phone.saved[1] && phone.saved[0] != phone.saved[1]);
  EXPECT_EQ("Tellvane|DCIM/100TLVNE/IMG_0001.MOV\nTellvane|DCIM/100TLVNE/IMG_0002.MOV\n",
            phone.query(kMembers));
  EXPECT_EQ("1\n", phone.query("SELECT count(*) FROM album"));
}

TEST(PhotoAlbum, ARefusalIsReportedFirstAndThenExplained) {
  const struct {
    const char* what;
    Permission known;
    bool atOnce;
  } rows[] = {
      {"refused before", Permission::denied, true},
      {"restricted", Permission::restricted, true},
      {"refuses now", Permission::notDetermined, false},
  };
  Album phone;
  phone.answer(false);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    phone.allow(row.known);
    phone.saved.clear();
    const auto window = phone.show();
    phone.save();
    EXPECT_EQ(row.atOnce, phone.saved.size() == 1);
    phone.runFor(3);
    EXPECT_EQ(std::vector{std::optional<std::string>()}, phone.saved);
    EXPECT_TRUE(phone.onMainThread.back());
    EXPECT_FALSE(phone.alertWasUp.back());
    EXPECT_TRUE(phone.shows("Access to Photos"));
    EXPECT_TRUE(
        phone.shows("Recordings are saved in the album “Tellvane” in your photo library. "
                    "Please allow access to Photos in Settings."));
    ASSERT_TRUE(phone.tapText("OK"));
    phone.runFor(1);
    EXPECT_EQ("settings", UIApplication::sharedApplication()->front());
    UIApplication::sharedApplication()->moveToForeground();
  }
  EXPECT_FALSE(std::filesystem::exists(phone.folder() / "Media"));
}

TEST(PhotoAlbum, ARefusalWithNothingOnTheScreenIsNotReportedAtAll) {
  Album phone;
  phone.allow(Permission::denied);
  phone.save();
  phone.runFor(1);
  phone.answer(false);
  phone.allow(Permission::notDetermined);
  phone.save();
  phone.runFor(3);
  EXPECT_EQ(1u, phone.questions.size());
  EXPECT_TRUE(phone.saved.empty());
}

TEST(PhotoAlbum, AFailureIsLoggedAndReportedWithoutAnIdentifier) {
  Album phone;
  phone.allow(Permission::authorized);
  const Console console;
  const auto full = [](const std::string&, const std::filesystem::path&) { return ENOSPC; };

  setDiskFault(full);  // so that not even the album can be made
  phone.save();
  phone.runFor(0);
  setDiskFault(nullptr);
  EXPECT_EQ(std::vector{std::optional<std::string>()}, phone.saved);
  EXPECT_EQ(std::vector<bool>{false}, phone.onMainThread);
  EXPECT_EQ(
      1, console.count("<TLV Log> : Error creating album : could not create Media: No space left on device"));

  phone.makeAlbum("Tellvane");
  setDiskFault(full);
  phone.save();
  phone.runFor(0);
  setDiskFault(nullptr);
  EXPECT_EQ(2u, phone.saved.size());
  EXPECT_FALSE(phone.saved.back());
  EXPECT_TRUE(phone.onMainThread.back());
  EXPECT_NE(std::string::npos, console.text().find("<TLV Log> : Error saving to photo Album: could not "));

  // A missing file is not a failure of the transaction, and so is not logged.
  const std::string before = console.text();
  std::filesystem::rename(phone.movie, phone.folder() / "elsewhere.mov");
  phone.save();
  phone.runFor(0);
  EXPECT_EQ(3u, phone.saved.size());
  EXPECT_FALSE(phone.saved.back());
  EXPECT_EQ(before, console.text());
  EXPECT_EQ("0\n", phone.query("SELECT count(*) FROM asset"));

  // In production mode the log is silent.
  TLVManager::shared()->setIsDebugMode(false);
  std::filesystem::rename(phone.folder() / "elsewhere.mov", phone.movie);
  setDiskFault(full);
  phone.save();
  phone.runFor(0);
  setDiskFault(nullptr);
  EXPECT_EQ(4u, phone.saved.size());
  EXPECT_EQ(before, console.text());
}

TEST(PhotoAlbum, AnAlbumThatIsGoneFailsTheSaveAndTheNextOneMakesANewOne) {
  Album phone;
  phone.allow(Permission::authorized);
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(1u, phone.saved.size());
  phone.query("DELETE FROM album");
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(2u, phone.saved.size());
  EXPECT_TRUE(phone.saved[1]);
  EXPECT_EQ("1\n", phone.query("SELECT count(*) FROM album"));
}

// The album may be forgotten, and the movie gone, between the order and its turn in the library.
TEST(PhotoAlbum, ASaveWithAPartMissingLeavesNothingHalfDone) {
  Album phone;
  phone.allow(Permission::authorized);
  phone.makeAlbum("Tellvane");
  const auto lose = [&](const std::function<void()>& loss) {
    const auto ordered = dispatch_semaphore_create(0);
    PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
        [&] {
          dispatch_semaphore_wait(ordered, DISPATCH_TIME_FOREVER);
          loss();
        },
        nullptr);
    phone.save();
    dispatch_semaphore_signal(ordered);
    phone.runFor(1);
  };
  lose([] { TLVPhotoAlbum::setCollection(nullptr); });
  lose([&] { std::filesystem::remove(phone.movie); });
  EXPECT_EQ((std::vector<std::optional<std::string>>{std::nullopt, std::nullopt}), phone.saved);
  EXPECT_EQ("0\n", phone.query("SELECT count(*) FROM asset"));
}

TEST(PhotoAlbum, DeletesTheAssetAndItsMovieAndNothingElse) {
  Album phone;
  phone.allow(Permission::authorized);
  phone.save();
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(2u, phone.saved.size());
  const Console console;
  for (const std::string& stranger :
       {std::string(), std::string("%"), std::string("9F983DBA-EC35-42B8-8773-B597CF782EDD/L0/001"),
        phone.saved[0]->substr(0, 36)}) {
    TLVPhotoAlbum::deleteFromPhotoAlbum(stranger);
  }
  phone.runFor(0);
  EXPECT_EQ("IMG_0001.MOV\nIMG_0002.MOV\n", phone.movies());

  send(*std::make_shared<TLVPhotoAlbum>(), "deleteFromPhotoAlbum:", *phone.saved[0]);
  phone.runFor(0);
  EXPECT_EQ("IMG_0002.MOV\n", phone.movies());
  EXPECT_EQ(phone.saved[1]->substr(0, 36) + "\n", phone.query("SELECT uuid FROM asset"));
  EXPECT_EQ("", console.text());

  setDiskFault([](const std::string&, const std::filesystem::path&) { return EIO; });
  TLVPhotoAlbum::deleteFromPhotoAlbum(*phone.saved[1]);
  phone.runFor(0);
  setDiskFault(nullptr);
  EXPECT_EQ(0u, console.text().find("<TLV Log> : Error deleting video from photo Album: could not "));
  EXPECT_EQ("IMG_0002.MOV\n", phone.movies());
}

TEST(PhotoAlbum, ADeletionAsksForUndecidedAccessAndShowsNoAlert) {
  Album phone;
  phone.show();
  phone.allow(Permission::authorized);
  phone.save();
  phone.runFor(0);
  ASSERT_EQ(1u, phone.saved.size());
  for (const Permission known : {Permission::denied, Permission::restricted, Permission::notDetermined}) {
    phone.answer(false);
    phone.allow(known);
    TLVPhotoAlbum::deleteFromPhotoAlbum(*phone.saved[0]);
    phone.runFor(2);
    EXPECT_FALSE(phone.shows("Access to Photos"));
    EXPECT_EQ("IMG_0001.MOV\n", phone.movies());
  }
  phone.answer(true);
  phone.allow(Permission::notDetermined);
  TLVPhotoAlbum::deleteFromPhotoAlbum(*phone.saved[0]);
  phone.runFor(2);
  EXPECT_EQ(2u, phone.questions.size());
  EXPECT_EQ("", phone.movies());
}

TEST(PhotoAlbum, TheAlertSpeaksTheUsersLanguage) {
  TestPhone phone({.languages = {"de-AT"}});
  phone.show();
  phone.device().setPermission("photos", Permission::denied);
  TLVPhotoAlbum::saveToPhotosAlbum(NSURL::fileURLWithPath("/nowhere"), nullptr);
  phone.runFor(1);
  EXPECT_TRUE(phone.shows("Zugriff auf Fotos"));
}
