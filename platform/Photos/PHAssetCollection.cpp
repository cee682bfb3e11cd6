#include "Photos/PHAssetCollection.h"

#include <set>

#include "Photos/Private/Fetch.h"
#include "Photos/Private/Library.h"

namespace ios {
namespace {

using Fetched = PHFetchResult<PHAssetCollection>;
using Collections = std::vector<std::shared_ptr<PHAssetCollection>>;

void check(const std::shared_ptr<PHFetchOptions>& options) {
  photos::checkKey(options, {"title", "localizedTitle"});
}

void keepWanted(const photos::AlbumFacts& facts, const std::shared_ptr<PHFetchOptions>& options,
                Collections& collections) {
  const std::string identifier = photos::localIdentifier(photos::Kind::album, facts.uuid);
  const NSDictionary values{{"title", facts.title}, {"localizedTitle", facts.title}};
  if (photos::isWanted(options, values))
    collections.push_back(std::make_shared<PHAssetCollection>(identifier, facts.title));
}

}  // namespace

std::shared_ptr<Fetched> PHAssetCollection::fetchAssetCollectionsWithType(
    PHAssetCollectionType type, PHAssetCollectionSubtype subtype,
    const std::shared_ptr<PHFetchOptions>& options) {
  check(options);
  Collections collections;
  const bool regular =
      subtype == PHAssetCollectionSubtype::any || subtype == PHAssetCollectionSubtype::albumRegular;
  if (type == PHAssetCollectionType::album && regular && photos::mayFetch()) {
    for (const auto& facts : photos::Library::shared().reader().albums())
      keepWanted(facts, options, collections);
  }
  return std::make_shared<Fetched>(std::move(collections));
}

std::shared_ptr<Fetched> PHAssetCollection::fetchAssetCollectionsWithLocalIdentifiers(
    const std::vector<std::string>& identifiers, const std::shared_ptr<PHFetchOptions>& options) {
  check(options);
  Collections collections;
  std::set<std::string> seen;
  for (const std::string& identifier : identifiers) {
    const auto uuid = photos::uuidOf(photos::Kind::album, identifier);
    if (!photos::mayFetch() || !uuid || !seen.insert(*uuid).second) continue;
    if (const auto facts = photos::Library::shared().reader().album(*uuid))
      keepWanted(*facts, options, collections);
  }
  return std::make_shared<Fetched>(std::move(collections));
}

}  // namespace ios
