#pragma once

#include <sys/stat.h>

#include <filesystem>

namespace simulator {

/// Whether a file or folder has been changed or replaced since somebody looked.
class FileSignature {
 public:
  /// True the first time, and whenever it is another one than the last time.
  bool hasChanged(const std::filesystem::path& file) {
    struct stat facts {};
    if (::stat(file.c_str(), &facts) != 0) facts = {};
    const bool same = known_ && facts.st_ino == last_.st_ino && facts.st_size == last_.st_size &&
                      facts.st_mtim.tv_sec == last_.st_mtim.tv_sec &&
                      facts.st_mtim.tv_nsec == last_.st_mtim.tv_nsec;
    known_ = true;
    last_ = facts;
    return !same;
  }

 private:
  bool known_ = false;
  struct stat last_ {};
};

}  // namespace simulator
