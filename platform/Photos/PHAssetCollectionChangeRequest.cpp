#include "Photos/PHAssetCollectionChangeRequest.h"

#include "Photos/Private/Changes.h"

namespace ios {

std::shared_ptr<PHAssetCollectionChangeRequest>
PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle(const std::string& title) {
  auto& changes = photos::Changes::current("PHAssetCollectionChangeRequest");
  const std::string uuid = changes.newUUID();
  changes.newAlbums.push_back({uuid, title});
  const std::string identifier = photos::localIdentifier(photos::Kind::album, uuid);
  return std::make_shared<PHAssetCollectionChangeRequest>(identifier,
                                                          std::make_shared<PHObjectPlaceholder>(identifier));
}

std::shared_ptr<PHAssetCollectionChangeRequest>
PHAssetCollectionChangeRequest::changeRequestForAssetCollection(
    const std::shared_ptr<PHAssetCollection>& collection) {
  photos::Changes::current("PHAssetCollectionChangeRequest");
  if (!collection) return nullptr;
  return std::make_shared<PHAssetCollectionChangeRequest>(collection->localIdentifier(), nullptr);
}

void PHAssetCollectionChangeRequest::addAssets(const std::vector<std::shared_ptr<PHObject>>& assets) {
  auto& changes = photos::Changes::current("PHAssetCollectionChangeRequest");
  // An identifier of another form finds nothing in the library, and so fails the transaction.
  const std::string album = photos::uuidOf(photos::Kind::album, album_).value_or("");
  for (const auto& asset : assets) {
    if (asset)
      changes.additions.push_back(
          {album, photos::uuidOf(photos::Kind::asset, asset->localIdentifier()).value_or("")});
  }
}

}  // namespace ios
