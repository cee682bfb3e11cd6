#include <gtest/gtest.h>

#include <regex>

#include "Device/Device.h"
#include "Gallery.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHError.h"
#include "Photos/PHPhotoLibrary.h"

namespace ios {
namespace {

using namespace testing_support;

using Asset = PHAssetChangeRequest;
using Album = PHAssetCollectionChangeRequest;

TEST(PhotoLibrary, KeepsWhatAnotherProgramReads) {
  const Gallery gallery;
  EXPECT_EQ(PHAssetCollection::fetchAssetCollectionsWithType(PHAssetCollectionType::album,
                                                             PHAssetCollectionSubtype::any, nullptr)
                ->count(),
            0u);
  EXPECT_FALSE(std::filesystem::exists(gallery.media())) << "a look leaves no trace";

  const auto album = gallery.makeAlbum();
  const auto identifier = gallery.save(gallery.sample(), album);
  ASSERT_TRUE(identifier);
  EXPECT_TRUE(std::regex_match(*identifier, std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}/L0/001")))
      << *identifier;
  EXPECT_EQ(gallery.query("SELECT uuid || '/L0/001', file, width, height, round(duration, 3),"
                          " datetime(created, 'unixepoch') FROM asset"),
            *identifier + "|DCIM/100TLVNE/IMG_0001.MOV|64|48|2.0|2026-01-05 09:41:00\n");
  EXPECT_EQ(gallery.query("PRAGMA journal_mode"), "wal\n");
  gallery.expectWhole();

  const auto asset = PHAsset::fetchAssetsWithLocalIdentifiers({*identifier}, nullptr)->firstObject();
  ASSERT_TRUE(asset);
  EXPECT_EQ(asset->localIdentifier(), *identifier);
  EXPECT_EQ(asset->pixelWidth(), 64);
  EXPECT_EQ(asset->pixelHeight(), 48);
  EXPECT_NEAR(asset->duration(), 2, 0.001);
  EXPECT_EQ(gallery.members(*album), std::vector{*identifier});
}

TEST(PhotoLibrary, FindsByTypeByTitleAndByIdentifierOnly) {
  const Gallery gallery;
  const auto first = gallery.makeAlbum("One"), second = gallery.makeAlbum("Two's \"%_\" ✓");
  const auto titled = [](const std::string& title) {
    const auto options = std::make_shared<PHFetchOptions>();
    options->setPredicate(NSPredicate::predicateWithFormat("title == %@", {title}));
    return PHAssetCollection::fetchAssetCollectionsWithType(PHAssetCollectionType::album,
                                                            PHAssetCollectionSubtype::any, options);
  };
  ASSERT_EQ(titled("Two's \"%_\" ✓")->count(), 1u);
  EXPECT_EQ(titled("Two's \"%_\" ✓")->firstObject()->localIdentifier(), second->localIdentifier());
  for (const char* stranger : {"one", "One ", "%", "", "One' OR '1'='1"})
    EXPECT_EQ(titled(stranger)->count(), 0u) << stranger;
  const auto count = [](PHAssetCollectionType type, PHAssetCollectionSubtype subtype) {
    return PHAssetCollection::fetchAssetCollectionsWithType(type, subtype, nullptr)->count();
  };
  EXPECT_EQ(count(PHAssetCollectionType::album, PHAssetCollectionSubtype::albumRegular), 2u);
  EXPECT_EQ(count(PHAssetCollectionType::smartAlbum, PHAssetCollectionSubtype::any), 0u);

  const auto found = PHAssetCollection::fetchAssetCollectionsWithLocalIdentifiers(
      {second->localIdentifier(), "nobody", first->localIdentifier(), second->localIdentifier()}, nullptr);
  ASSERT_EQ(found->count(), 2u);
  // An album's identifier is not an asset's, whatever its UUID.
  EXPECT_EQ(PHAsset::fetchAssetsWithLocalIdentifiers({first->localIdentifier()}, nullptr)->count(), 0u);
}

TEST(PhotoLibrary, AChangeHappensWholeOrNotAtAll) {
  const Gallery gallery;
  const auto broken = gallery.scratch.write("broken.mov", std::string("no movie"));
  const auto album = gallery.makeAlbum();
  const auto kept = gallery.save(gallery.sample(), album);
  const auto asset = PHAsset::fetchAssetsWithLocalIdentifiers({*kept}, nullptr)->firstObject();
  const auto gone = gallery.makeAlbum("Gone");
  gallery.query("PRAGMA foreign_keys = ON; DELETE FROM album WHERE title = 'Gone'");
  const std::string before =
      gallery.query("SELECT * FROM asset; SELECT * FROM album; SELECT * FROM membership");
  const auto good = NSURL::fileURLWithPath(gallery.sample());

  const struct {
    const char* what;
    std::function<void()> last;
    long code;
  } rows[] = {
      {"a file that is not a movie",
       [&] { Asset::creationRequestForAssetFromVideoAtFileURL(NSURL::fileURLWithPath(broken)); },
       PHPhotosErrorInvalidResource},
      {"an album that is not there any more",
       [&] { Album::changeRequestForAssetCollection(gone)->addAssets({asset}); },
       PHPhotosErrorIdentifierNotFound},
      {"an asset that is not there",
       [&] {
         Album::changeRequestForAssetCollection(album)->addAssets(
             {std::make_shared<PHObject>("9F983DBA-EC35-42B8-8773-B597CF782EDD/L0/001")});
       },
       PHPhotosErrorIdentifierNotFound},
      {"an album that never was one",
       [&] {
         Album::changeRequestForAssetCollection(std::make_shared<PHAssetCollection>("x", "x"))
             ->addAssets({asset});
       },
       PHPhotosErrorIdentifierNotFound},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const auto error = gallery.perform([&] {
      const auto request = Asset::creationRequestForAssetFromVideoAtFileURL(good);
      Album::creationRequestForAssetCollectionWithTitle("New")->addAssets(
          {request->placeholderForCreatedAsset()});
      Asset::deleteAssets({asset});
      row.last();
    });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), PHPhotosErrorDomain);
    EXPECT_EQ(error->code(), row.code) << error->localizedDescription();
    EXPECT_EQ(gallery.query("SELECT * FROM asset; SELECT * FROM album; SELECT * FROM membership"), before);
    gallery.expectWhole();
  }
}

TEST(PhotoLibrary, SeveralChangesOfOneBlockHappenTogether) {
  const Gallery gallery;
  const auto kept = gallery.save(gallery.sample(), gallery.makeAlbum());
  const auto asset = PHAsset::fetchAssetsWithLocalIdentifiers({*kept}, nullptr)->firstObject();
  EXPECT_EQ(gallery.perform([&] {
    const auto request =
        Asset::creationRequestForAssetFromVideoAtFileURL(NSURL::fileURLWithPath(gallery.sample()));
    Album::creationRequestForAssetCollectionWithTitle("New")->addAssets(
        {request->placeholderForCreatedAsset(), request->placeholderForCreatedAsset()});
    Asset::deleteAssets({asset, nullptr});
  }),
            nullptr);
  EXPECT_EQ(gallery.query("SELECT title, file FROM membership JOIN album ON album.id = album JOIN asset ON "
                          "asset.id = asset"),
            "New|DCIM/100TLVNE/IMG_0002.MOV\n");
  gallery.expectWhole();
}

TEST(PhotoLibrary, ChangesOfSeveralThreadsComeOneAfterAnother) {
  const Gallery gallery;
  const auto album = gallery.makeAlbum();
  std::vector<std::string> asked, told;  // each written on one queue
  for (int index = 0; index < 20; ++index) {
    const auto identifier = std::make_shared<std::string>();
    PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
        [&asked, &gallery, album, identifier] {
          const auto placeholder =
              Asset::creationRequestForAssetFromVideoAtFileURL(NSURL::fileURLWithPath(gallery.sample()))
                  ->placeholderForCreatedAsset();
          Album::changeRequestForAssetCollection(album)->addAssets({placeholder});
          asked.push_back(*identifier = placeholder->localIdentifier());
        },
        [&told, identifier](bool success, const std::shared_ptr<NSError>&) {
          if (success) told.push_back(*identifier);
        });
  }
  Clock::shared().runUntilRest();
  EXPECT_EQ(asked.size(), 20u);
  EXPECT_EQ(told, asked);
  EXPECT_EQ(std::set<std::string>(asked.begin(), asked.end()).size(), 20u);
  EXPECT_EQ(gallery.members(*album), asked);
  gallery.expectWhole();
}

TEST(PhotoLibrary, IsClosedToApplicationsWithoutPermission) {
  const Gallery gallery;
  const auto album = gallery.makeAlbum();
  const auto identifier = gallery.save(gallery.sample(), album);
  for (const Permission permission :
       {Permission::denied, Permission::restricted, Permission::notDetermined}) {
    Device::current().setPermission("photos", permission);
    EXPECT_EQ(PHAsset::fetchAssetsWithLocalIdentifiers({*identifier}, nullptr)->count(), 0u);
    EXPECT_EQ(PHAssetCollection::fetchAssetCollectionsWithType(PHAssetCollectionType::album,
                                                               PHAssetCollectionSubtype::any, nullptr)
                  ->count(),
              0u);
    const auto error = gallery.perform([] { ADD_FAILURE() << "it ran"; });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), permission == Permission::restricted ? PHPhotosErrorAccessRestricted
                                                                  : PHPhotosErrorAccessUserDenied);
  }
  gallery.expectWhole();
}

TEST(PhotoLibraryDeathTest, AMistakeOfTheCallerStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(PHAssetChangeRequest::deleteAssets({}), "inside of a block of performChanges");
  EXPECT_DEATH(
      {
        const auto options = std::make_shared<PHFetchOptions>();
        options->setPredicate(NSPredicate::predicateWithFormat("colour == %@", {"red"}));
        PHAssetCollection::fetchAssetCollectionsWithType(PHAssetCollectionType::album,
                                                         PHAssetCollectionSubtype::any, options);
      },
      "unsupported predicate in fetch options: it asks for \"colour\"");
}

}  // namespace
}  // namespace ios
