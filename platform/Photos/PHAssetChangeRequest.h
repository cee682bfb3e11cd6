#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "Foundation/NSURL.h"
#include "Photos/PHAsset.h"

namespace ios {

/// A change of a movie in the library. Only inside a block of `PHPhotoLibrary::performChanges`; elsewhere it
/// stops the process.
class PHAssetChangeRequest : public NSObject {
 public:
  /// A new asset that is a copy of the movie at `url`; what it copies is checked with the transaction. Empty
  /// when there is no file there.
  static std::shared_ptr<PHAssetChangeRequest> creationRequestForAssetFromVideoAtFileURL(const NSURL& url);
  /// Assets that no longer exist are skipped.
  static void deleteAssets(const std::vector<std::shared_ptr<PHAsset>>& assets);

  std::shared_ptr<PHObjectPlaceholder> placeholderForCreatedAsset() const { return placeholder_; }

  explicit PHAssetChangeRequest(std::shared_ptr<PHObjectPlaceholder> placeholder)
      : placeholder_(std::move(placeholder)) {}

 private:
  std::shared_ptr<PHObjectPlaceholder> placeholder_;
};

}  // namespace ios
