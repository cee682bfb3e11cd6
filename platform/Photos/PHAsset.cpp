#include "Photos/PHAsset.h"

#include <set>

#include "Photos/Private/Fetch.h"
#include "Photos/Private/Library.h"

namespace ios {
namespace {

using Fetched = PHFetchResult<PHAsset>;

}  // namespace

std::shared_ptr<Fetched> PHAsset::fetchAssetsWithLocalIdentifiers(
    const std::vector<std::string>& identifiers, const std::shared_ptr<PHFetchOptions>& options) {
  photos::checkKey(options, {});
  std::vector<std::shared_ptr<PHAsset>> assets;
  std::set<std::string> seen;
  for (const std::string& identifier : identifiers) {
    const auto uuid = photos::uuidOf(photos::Kind::asset, identifier);
    if (!photos::mayFetch() || !uuid || !seen.insert(*uuid).second) continue;
    if (const auto facts = photos::Library::shared().reader().asset(*uuid)) {
      assets.push_back(std::make_shared<PHAsset>(
          identifier,
          Facts{facts->duration, static_cast<long>(facts->width), static_cast<long>(facts->height)}));
    }
  }
  return std::make_shared<Fetched>(std::move(assets));
}

}  // namespace ios
