#include "Photos/PHAssetChangeRequest.h"

#include "Photos/Private/Changes.h"

namespace ios {

std::shared_ptr<PHAssetChangeRequest> PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(
    const NSURL& url) {
  auto& changes = photos::Changes::current("PHAssetChangeRequest");
  std::error_code error;
  if (!url.isFileURL() || !std::filesystem::is_regular_file(url.filePath(), error)) return nullptr;
  const std::string uuid = changes.newUUID();
  changes.newAssets.push_back({uuid, url.filePath()});
  return std::make_shared<PHAssetChangeRequest>(
      std::make_shared<PHObjectPlaceholder>(photos::localIdentifier(photos::Kind::asset, uuid)));
}

void PHAssetChangeRequest::deleteAssets(const std::vector<std::shared_ptr<PHAsset>>& assets) {
  auto& changes = photos::Changes::current("PHAssetChangeRequest");
  for (const auto& asset : assets) {
    const auto uuid = asset ? photos::uuidOf(photos::Kind::asset, asset->localIdentifier()) : std::nullopt;
    if (uuid) changes.deletedAssets.push_back(*uuid);
  }
}

}  // namespace ios
