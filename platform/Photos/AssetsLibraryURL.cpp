#include "Photos/AssetsLibraryURL.h"

#include <string_view>

#include "Photos/Private/Library.h"

namespace ios {

std::optional<std::filesystem::path> movieOfAsset(const NSURL& url) {
  constexpr std::string_view kStart = "assets-library://asset/asset.MP4?id=", kEnd = "&ext=MP4";
  const std::string_view text = url.absoluteString();
  if (!text.starts_with(kStart) || !text.ends_with(kEnd) || text.size() < kStart.size() + kEnd.size())
    return std::nullopt;
  const std::string uuid(text.substr(kStart.size(), text.size() - kStart.size() - kEnd.size()));
  if (!photos::isUUID(uuid)) return std::nullopt;
  return photos::Library::shared().reader().movie(uuid);
}

}  // namespace ios
