#include <algorithm>

#include "Base/Programming.h"
#include "Photos/PHPhotoLibrary.h"
#include "Photos/Private/Fetch.h"

namespace ios::photos {

bool mayFetch() {
  return PHPhotoLibrary::authorizationStatus() == PHAuthorizationStatus::authorized;
}

void checkKey(const std::shared_ptr<PHFetchOptions>& options, std::initializer_list<const char*> known) {
  if (!options || !options->predicate()) return;
  const std::string& key = options->predicate()->key();
  if (std::find(known.begin(), known.end(), key) == known.end())
    programmingError("unsupported predicate in fetch options: it asks for \"" + key + "\"");
}

bool isWanted(const std::shared_ptr<PHFetchOptions>& options, const NSDictionary& values) {
  return !options || !options->predicate() || options->predicate()->evaluateWithObject(values);
}

}  // namespace ios::photos
