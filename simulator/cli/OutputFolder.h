#pragma once

#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "Base/FileDescriptor.h"
#include "CoreFoundation/PropertyList.h"

namespace simulator {

/// The folder that a run leaves its results in. A file of its own in it, ".tellvane-run", lists everything
/// that runs have left there, and only that is ever replaced or removed. The file is locked during a run and
/// then names the process.
class OutputFolder {
 public:
  /// Makes the folder if it is not there, and takes it for this process. Empty when that is not possible; `problem`
  /// says why: another run holds it, or the disk refuses.
  static std::unique_ptr<OutputFolder> take(const std::filesystem::path& path, std::string& problem);

  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// Removes what earlier runs left.
  [[nodiscard]] std::string clear();
  /// Says that this run is going to leave `name` there, a path relative to the folder. A problem when it is
  /// there already and no run has left it.
  [[nodiscard]] std::string claim(const std::string& name);
  [[nodiscard]] std::string write(const std::string& name, const ios::Bytes& bytes);

 private:
  OutputFolder(std::filesystem::path path, ios::FileDescriptor marker)
      : path_(std::move(path)), marker_(std::move(marker)) {}
  std::string readMarker();
  enum class During { run, rest };
  std::string writeMarker(During when = During::run);

  std::filesystem::path path_;
  ios::FileDescriptor marker_;
  std::set<std::string> names_;
};

}  // namespace simulator
