#include "Photos/PHAsset.h"

#include <set>

#include "Photos/Fetch+Private.h"
#include "Photos/Library+Private.h"
#include "Photos/PHAssetCollection.h"

namespace ios {
namespace {

using Result = PHFetchResult<PHAsset>;
using Assets = std::vector<std::shared_ptr<PHAsset>>;

void check(const std::shared_ptr<PHFetchOptions>& options) {
  photos::checkKeys(options, {"localIdentifier", "mediaType", "duration", "pixelWidth", "pixelHeight"});
}

void keepWanted(const photos::AssetFacts& facts, const std::shared_ptr<PHFetchOptions>& options,
                Assets& assets) {
  auto asset = std::make_shared<PHAsset>(photos::localIdentifier(photos::Kind::asset, facts.uuid),
                                         PHAsset::Facts{facts.duration, static_cast<long>(facts.width),
                                                        static_cast<long>(facts.height), facts.created});
  const NSDictionary values{{"localIdentifier", asset->localIdentifier()},
                            {"mediaType", static_cast<int>(asset->mediaType())},
                            {"duration", asset->duration()},
                            {"pixelWidth", std::int64_t{asset->pixelWidth()}},
                            {"pixelHeight", std::int64_t{asset->pixelHeight()}}};
  if (photos::isWanted(options, values)) assets.push_back(std::move(asset));
}

}  // namespace

std::shared_ptr<Result> PHAsset::fetchAssetsWithLocalIdentifiers(
    const std::vector<std::string>& identifiers, const std::shared_ptr<PHFetchOptions>& options) {
  check(options);
  Assets assets;
  std::set<std::string> seen;
  for (const std::string& identifier : identifiers) {
    const auto uuid = photos::uuidOf(photos::Kind::asset, identifier);
    if (!photos::mayFetch() || !uuid || !seen.insert(*uuid).second) continue;
    if (const auto facts = photos::Library::shared().reader().asset(*uuid))
      keepWanted(*facts, options, assets);
  }
  return std::make_shared<Result>(std::move(assets));
}

std::shared_ptr<Result> PHAsset::fetchAssetsInAssetCollection(
    const PHAssetCollection& collection, const std::shared_ptr<PHFetchOptions>& options) {
  check(options);
  Assets assets;
  const auto album = photos::uuidOf(photos::Kind::album, collection.localIdentifier());
  if (album && photos::mayFetch()) {
    for (const auto& facts : photos::Library::shared().reader().assetsOf(*album))
      keepWanted(facts, options, assets);
  }
  return std::make_shared<Result>(std::move(assets));
}

}  // namespace ios
