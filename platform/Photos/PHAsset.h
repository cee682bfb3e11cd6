#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Photos/PHFetchOptions.h"
#include "Photos/PHFetchResult.h"
#include "Photos/PHObject.h"

namespace ios {

enum class PHAssetMediaType : long { unknown = 0, image = 1, video = 2, audio = 3 };

/// A movie in the photo library. Fetches answer at once, on any thread; without the user's permission they
/// find nothing. They support no predicate.
class PHAsset : public PHObject {
 public:
  /// The objects with these identifiers that exist, each once.
  static std::shared_ptr<PHFetchResult<PHAsset>> fetchAssetsWithLocalIdentifiers(
      const std::vector<std::string>& identifiers, const std::shared_ptr<PHFetchOptions>& options);

  PHAssetMediaType mediaType() const { return PHAssetMediaType::video; }
  double duration() const { return facts_.duration; }
  long pixelWidth() const { return facts_.pixelWidth; }
  long pixelHeight() const { return facts_.pixelHeight; }

  struct Facts {
    double duration = 0;  // seconds
    long pixelWidth = 0, pixelHeight = 0;
  };
  PHAsset(std::string localIdentifier, const Facts& facts)
      : PHObject(std::move(localIdentifier)), facts_(facts) {}

 private:
  Facts facts_;
};

}  // namespace ios
