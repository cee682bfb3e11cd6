#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace ios {

/// The movie file of the asset with this local identifier in the photo library of the device at `device`.
/// Empty for a string of any other form, and when there is no such asset, file or library. For a process that
/// only reads: the library stays as it is, except that SQLite may leave its temporary files beside it. Any
/// thread; waits some seconds for a process that holds the library.
std::optional<std::filesystem::path> movieFileOfAsset(const std::filesystem::path& device,
                                                      const std::string& localIdentifier);

}  // namespace ios
