#include <algorithm>

#include "ObjectiveC/Programming.h"
#include "Photos/Fetch+Private.h"
#include "Photos/PHPhotoLibrary.h"

namespace ios::photos {

bool mayFetch() {
  return PHPhotoLibrary::authorizationStatus() == PHAuthorizationStatus::authorized;
}

void checkKeys(const std::shared_ptr<PHFetchOptions>& options, std::initializer_list<const char*> known) {
  if (!options || !options->predicate()) return;
  for (const std::string& key : options->predicate()->keys()) {
    if (std::find(known.begin(), known.end(), key) == known.end())
      programmingError("unsupported predicate in fetch options: it asks for \"" + key + "\"");
  }
}

bool isWanted(const std::shared_ptr<PHFetchOptions>& options, const NSDictionary& values) {
  return !options || !options->predicate() || options->predicate()->evaluateWithObject(values);
}

}  // namespace ios::photos
