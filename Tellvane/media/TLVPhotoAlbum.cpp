#include "media/TLVPhotoAlbum.h"

#include <utility>

#include "Base/Mutex.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHPhotoLibrary.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UIApplication.h"
#include "ground/Memory.h"
#include "ground/Threading.h"
#include "info/LocalizedText.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "triggers/PresentOnTop.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

/// The album is written and read on several threads; no thread waits for more than the copy of a reference.
struct Album {
  Mutex mutex;
  std::shared_ptr<PHAssetCollection> collection IOS_GUARDED_BY(mutex);

  static Album& shared() {
    static auto& album = *new Album;
    return album;
  }
};

std::shared_ptr<PHAssetCollection> albumWithOurTitle() {
  const auto options = std::make_shared<PHFetchOptions>();
  options->setPredicate(NSPredicate::predicateWithFormat("title == %@", {TLV_TITILE}));
  return PHAssetCollection::fetchAssetCollectionsWithType(PHAssetCollectionType::album,
                                                          PHAssetCollectionSubtype::any, options)
      ->firstObject();
}

/// The album of a placeholder; when that is not found, the one with our title.
std::shared_ptr<PHAssetCollection> createdAlbum(const std::shared_ptr<PHObjectPlaceholder>& placeholder) {
  if (placeholder) {
    if (auto album = PHAssetCollection::fetchAssetCollectionsWithLocalIdentifiers(
                         {placeholder->localIdentifier()}, nullptr)
                         ->firstObject())
      return album;
  }
  return albumWithOurTitle();
}

/// Does `work`, on whose way `decision` is told; where memory runs out before that, it is no.
template <class Work>
void orDecline(const std::function<void(bool)>& decision, Work&& work) {
  if (!unlessMemoryRunsOut(work)) decision(false);
}

// The operations as the object runtime sees them; the receiver has nothing to add.
void saveBySelector(TLVPhotoAlbum&, NSURL url, TLVPhotoAlbum::Completion completionHandler) {
  TLVPhotoAlbum::saveToPhotosAlbum(url, std::move(completionHandler));
}
void deleteBySelector(TLVPhotoAlbum&, std::string localIdentifier) {
  TLVPhotoAlbum::deleteFromPhotoAlbum(localIdentifier);
}
std::shared_ptr<PHAssetCollection> collectionBySelector(TLVPhotoAlbum&) {
  return TLVPhotoAlbum::collection();
}
void setCollectionBySelector(TLVPhotoAlbum&, std::shared_ptr<PHAssetCollection> collection) {
  TLVPhotoAlbum::setCollection(std::move(collection));
}

}  // namespace

MethodList TLVPhotoAlbum::methods() {
  return {{"saveToPhotosAlbum:completionHandler:", &saveBySelector},
          {"deleteFromPhotoAlbum:", &deleteBySelector},
          {"collection", &collectionBySelector},
          {"setCollection:", &setCollectionBySelector}};
}

std::shared_ptr<PHAssetCollection> TLVPhotoAlbum::collection() {
  Album& album = Album::shared();
  MutexLock lock(album.mutex);
  return album.collection;
}

void TLVPhotoAlbum::setCollection(std::shared_ptr<PHAssetCollection> collection) {
  Album& album = Album::shared();
  MutexLock lock(album.mutex);
  album.collection.swap(collection);  // the old one is released after the lock
}

void TLVPhotoAlbum::getPhotosAccess(const Decision& success) {
  const auto isGranted = [](PHAuthorizationStatus status) { return status > PHAuthorizationStatus::denied; };
  const auto status = PHPhotoLibrary::authorizationStatus();
  if (status == PHAuthorizationStatus::notDetermined) {
    PHPhotoLibrary::requestAuthorization(
        [success, isGranted](PHAuthorizationStatus answer) { success(isGranted(answer)); });
  } else {
    success(isGranted(status));
  }
}

void TLVPhotoAlbum::createAlbum(const Decision& success) {
  getPhotosAccess([success](bool granted) {
    orDecline(success, [&] {
      if (granted) {
        resolveAlbum(success);
      } else if (isMainThread()) {
        refuseAccess(success);
      } else {
        dispatch_async(dispatch_get_main_queue(),
                       [success] { orDecline(success, [&] { refuseAccess(success); }); });
      }
    });
  });
}

void TLVPhotoAlbum::resolveAlbum(const Decision& success) {
  if (auto album = albumWithOurTitle()) {
    setCollection(std::move(album));
    success(true);
    return;
  }
  const auto placeholder = std::make_shared<std::shared_ptr<PHObjectPlaceholder>>();
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
      [placeholder] {
        if (albumWithOurTitle()) return;  // another save has made it meanwhile
        *placeholder = PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle(TLV_TITILE)
                           ->placeholderForCreatedAssetCollection();
      },
      [placeholder, success](bool created, const std::shared_ptr<NSError>& error) {
        if (!created && !error) return;
        orDecline(success, [&] {
          if (!created) {
            unlessMemoryRunsOut([&] { printTLV("Error creating album : " + error->localizedDescription()); });
            success(false);
            return;
          }
          auto album = createdAlbum(*placeholder);
          const bool found = album != nullptr;
          if (found) setCollection(std::move(album));
          success(found);
        });
      });
}

void TLVPhotoAlbum::refuseAccess(const Decision& success) {
  if (!topViewController()) return;
  success(false);
  unlessMemoryRunsOut([] { offerSettings(); });
}

void TLVPhotoAlbum::offerSettings() {
  const auto alert = UIAlertController::alertControllerWithTitle(
      localizedText("photos access"), localizedText("photos message"), UIAlertControllerStyle::alert);
  alert->addAction(UIAlertAction::actionWithTitle(
      localizedText("Ok"), UIAlertActionStyle::default_, [](const std::shared_ptr<UIAlertAction>&) {
        unlessMemoryRunsOut([] {
          if (const auto url = NSURL::URLWithString(UIApplicationOpenSettingsURLString))
            UIApplication::sharedApplication()->openURL(*url);
        });
      }));
  presentOnTop(alert);
}

void TLVPhotoAlbum::saveToPhotosAlbum(const NSURL& url, Completion completionHandler) {
  if (!completionHandler) completionHandler = [](const std::optional<std::string>&) {};
  createAlbum([url, completionHandler](bool success) {
    if (success) {
      addToAlbum(url, completionHandler);
    } else {
      completionHandler(std::nullopt);
    }
  });
}

void TLVPhotoAlbum::addToAlbum(const NSURL& url, const Completion& completionHandler) {
  const auto identifier = std::make_shared<std::optional<std::string>>();
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
      [url, identifier] {
        // All three are made before the first change, so that a missing one leaves nothing half done.
        const auto album = PHAssetCollectionChangeRequest::changeRequestForAssetCollection(collection());
        if (!album) return;
        const auto request = PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(url);
        const auto placeholder = request ? request->placeholderForCreatedAsset() : nullptr;
        if (!placeholder) return;
        album->addAssets({placeholder});
        *identifier = placeholder->localIdentifier();
      },
      [identifier, completionHandler](bool success, const std::shared_ptr<NSError>& error) {
        if (error) {
          unlessMemoryRunsOut(
              [&] { printTLV("Error saving to photo Album: " + error->localizedDescription()); });
        }
        const auto tell = [&] {
          const bool told =
              unlessMemoryRunsOut([&] { completionHandler(success ? *identifier : std::nullopt); });
          if (!told) completionHandler(std::nullopt);
        };
        if (!unlessMemoryRunsOut([&] { runOnMainThread(tell); })) completionHandler(std::nullopt);
      });
}

void TLVPhotoAlbum::deleteFromPhotoAlbum(const std::string& localIdentifier) {
  getPhotosAccess([localIdentifier](bool granted) {
    if (granted) unlessMemoryRunsOut([&] { deleteAsset(localIdentifier); });
  });
}

void TLVPhotoAlbum::deleteAsset(const std::string& localIdentifier) {
  const auto asset = PHAsset::fetchAssetsWithLocalIdentifiers({localIdentifier}, nullptr)->firstObject();
  if (!asset) return;
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
      [asset] { PHAssetChangeRequest::deleteAssets({asset}); },
      [](bool, const std::shared_ptr<NSError>& error) {
        if (!error) return;
        unlessMemoryRunsOut(
            [&] { printTLV("Error deleting video from photo Album: " + error->localizedDescription()); });
      });
}

}  // namespace tellvane
