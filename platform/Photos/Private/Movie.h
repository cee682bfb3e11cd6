#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Base/Result.h"
#include "Device/Files.h"

namespace ios::photos {

struct MovieFacts {
  double duration = 0;  // seconds
  int width = 0, height = 0;
  /// Seconds since 1970, when the movie says when it was made.
  std::optional<double> created;
};

/// Reads what a movie file says about itself. Fails, saying why, unless it is a movie with pictures whose samples all
/// lie within the file.
Result<MovieFacts, std::string> readMovie(const std::filesystem::path& file);

/// Copies a file to `to`, which must not exist, sharing its blocks where the disk can, and syncs it. After a
/// failure there is nothing at `to`.
[[nodiscard]] Result<void, FileError> copyMovie(const std::filesystem::path& from,
                                                const std::filesystem::path& to);

}  // namespace ios::photos
