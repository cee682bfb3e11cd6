#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ios {

/// What is in a photo library, in the order in which it was added.
struct LibraryContents {
  struct Movie {
    std::string identifier;  // local
    std::filesystem::path file;
    double duration = 0;  // seconds
    long width = 0, height = 0;
  };
  struct Album {
    std::string title;
    std::vector<std::string> movies;  // by identifier
  };
  std::vector<Movie> movies;
  std::vector<Album> albums;
};

/// The photo library of the device at `device`, for a process that only reads, as `movieFileOfAsset` does. A movie
/// whose file is gone is left out.
LibraryContents contentsOfLibrary(const std::filesystem::path& device);

}  // namespace ios
