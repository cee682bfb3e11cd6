#include "Photos/LibraryContents.h"

#include "Photos/Private/Identifier.h"
#include "Photos/Private/LibraryReader.h"

namespace ios {

using photos::Kind;
using photos::localIdentifier;

LibraryContents contentsOfLibrary(const std::filesystem::path& device) {
  // Short: the caller looks again soon, and can do without an answer until then.
  constexpr int kPatienceMilliseconds = 100;
  photos::LibraryReader reader({device / "Media"}, kPatienceMilliseconds);
  LibraryContents contents;
  for (const photos::AssetFacts& asset : reader.assets()) {
    if (auto file = reader.movie(asset.uuid)) {
      contents.movies.push_back({localIdentifier(Kind::asset, asset.uuid), std::move(*file), asset.duration,
                                 static_cast<long>(asset.width), static_cast<long>(asset.height)});
    }
  }
  for (const photos::AlbumFacts& album : reader.albums()) {
    auto& each = contents.albums.emplace_back(LibraryContents::Album{album.title, {}});
    for (const auto& asset : reader.assetsOf(album.uuid))
      each.movies.push_back(localIdentifier(Kind::asset, asset.uuid));
  }
  return contents;
}

}  // namespace ios
