#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace simulator {

/// A folder of flows with a file that chooses among them.
struct Workspace {
  static constexpr const char* kConfiguration = "config.yaml";
  /// The flows that it chooses, in the order in which they are to be begun. With `problem` set when the file
  /// cannot be read. A flow whose header cannot be read has no tags; it says what is wrong when it is played.
  static std::vector<std::filesystem::path> flows(const std::filesystem::path& folder, std::string& problem);
};

/// Whether a path, relative to where the pattern stands, fits: "*" is any part of a name, "**" any folders.
bool fitsPattern(const std::filesystem::path& path, const std::string& pattern);

}  // namespace simulator
