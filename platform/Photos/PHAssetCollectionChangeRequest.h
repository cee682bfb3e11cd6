#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Photos/PHAssetCollection.h"

namespace ios {

/// A change of an album. Only inside a block of `PHPhotoLibrary::performChanges`; elsewhere it
/// stops the process.
class PHAssetCollectionChangeRequest : public NSObject {
 public:
  static std::shared_ptr<PHAssetCollectionChangeRequest> creationRequestForAssetCollectionWithTitle(
      const std::string& title);
  /// Empty without a collection.
  static std::shared_ptr<PHAssetCollectionChangeRequest> changeRequestForAssetCollection(
      const std::shared_ptr<PHAssetCollection>& collection);

  /// Assets, or placeholders of those that this transaction creates. One that is in the album already stays
  /// where it is; one that is not in the library fails the transaction.
  void addAssets(const std::vector<std::shared_ptr<PHObject>>& assets);
  /// Empty when the album is not a new one.
  std::shared_ptr<PHObjectPlaceholder> placeholderForCreatedAssetCollection() const { return placeholder_; }

  PHAssetCollectionChangeRequest(std::string album, std::shared_ptr<PHObjectPlaceholder> placeholder)
      : album_(std::move(album)), placeholder_(std::move(placeholder)) {}

 private:
  std::string album_;  // its local identifier
  std::shared_ptr<PHObjectPlaceholder> placeholder_;
};

}  // namespace ios
