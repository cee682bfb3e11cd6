#pragma once

#include <filesystem>
#include <optional>

#include "Foundation/NSURL.h"

namespace ios {

/// The movie file of `assets-library://asset/asset.MP4?id=<UUID>&ext=MP4`. Empty for any other URL, and for
/// an identifier that no asset of the library has. Any thread; answers at once.
std::optional<std::filesystem::path> movieOfAsset(const NSURL& url);

}  // namespace ios
