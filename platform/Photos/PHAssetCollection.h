#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Photos/PHFetchOptions.h"
#include "Photos/PHFetchResult.h"
#include "Photos/PHObject.h"

namespace ios {

enum class PHAssetCollectionType : std::int64_t { album = 1, smartAlbum = 2 };
enum class PHAssetCollectionSubtype : std::int64_t {
  albumRegular = 2,
  any = std::numeric_limits<std::int64_t>::max(),
};

/// An album of the photo library. Fetches answer at once, on any thread; without the user's permission they
/// find nothing. The keys of their predicates: title, localizedTitle.
class PHAssetCollection : public PHObject {
 public:
  /// The device has albums that applications and the user made; there are none of another type or subtype.
  static std::shared_ptr<PHFetchResult<PHAssetCollection>> fetchAssetCollectionsWithType(
      PHAssetCollectionType type, PHAssetCollectionSubtype subtype,
      const std::shared_ptr<PHFetchOptions>& options);
  /// The objects with these identifiers that exist, each once.
  static std::shared_ptr<PHFetchResult<PHAssetCollection>> fetchAssetCollectionsWithLocalIdentifiers(
      const std::vector<std::string>& identifiers, const std::shared_ptr<PHFetchOptions>& options);

  const std::string& localizedTitle() const { return title_; }

  PHAssetCollection(std::string localIdentifier, std::string title)
      : PHObject(std::move(localIdentifier)), title_(std::move(title)) {}

 private:
  std::string title_;
};

}  // namespace ios
