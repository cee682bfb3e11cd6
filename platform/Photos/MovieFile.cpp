#include "Photos/MovieFile.h"

#include "Photos/Private/Identifier.h"
#include "Photos/Private/LibraryReader.h"

namespace ios {

std::optional<std::filesystem::path> movieFileOfAsset(const std::filesystem::path& device,
                                                      const std::string& localIdentifier) {
  const auto uuid = photos::uuidOf(photos::Kind::asset, localIdentifier);
  if (!uuid) return std::nullopt;
  // What is not found now is not looked for again.
  constexpr int kPatienceMilliseconds = 10'000;
  return photos::LibraryReader({device / "Media"}, kPatienceMilliseconds).movie(*uuid);
}

}  // namespace ios
