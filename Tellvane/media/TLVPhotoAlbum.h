#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Foundation/NSURL.h"
#include "ObjectiveC/NSObject.h"
#include "Photos/PHAssetCollection.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// The library's own album in the device's photo library. Class-level operations only, for the main thread;
/// no operation waits for the photo library. The user is asked for access the first time.
class TLVPhotoAlbum : public Subclass<TLVPhotoAlbum, NSObject> {
 public:
  using Completion = std::function<void(std::optional<std::string> localIdentifier)>;
  static MethodList methods();

  /// Copies the movie at `url` into the album, which is created if it does not exist, and calls `completionHandler`
  /// with the new asset's identifier, or without one when that failed: on the main thread, except when the album could
  /// not be made, which is reported on a queue of the photo library. An earlier refusal is reported before this
  /// returns, and then explained in an alert. No call comes when access is refused with nothing on the screen, or the
  /// album's failure has no error.
  static void saveToPhotosAlbum(const NSURL& url, Completion completionHandler);
  /// Deletes the asset, if there is one and access is granted; never asks twice, and reports nothing.
  static void deleteFromPhotoAlbum(const std::string& localIdentifier);

  /// The album that the last save found or made; empty at first. Any thread.
  static std::shared_ptr<PHAssetCollection> collection();
  static void setCollection(std::shared_ptr<PHAssetCollection> collection);

 private:
  using Decision = std::function<void(bool success)>;
  /// On the caller's thread when the user answered before, else on the platform's queue.
  static void getPhotosAccess(const Decision& success);
  static void createAlbum(const Decision& success);
  static void resolveAlbum(const Decision& success);
  static void refuseAccess(const Decision& success);
  static void offerSettings();
  static void addToAlbum(const NSURL& url, const Completion& completionHandler);
  static void deleteAsset(const std::string& localIdentifier);
};

}  // namespace tellvane
