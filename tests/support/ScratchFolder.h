#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/Process.h"

namespace testing_support {

/// An empty folder that is deleted with its owner.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "scratch-XXXXXX").string();
    path_ = std::filesystem::canonical(mkdtemp(pattern.data()));
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// Writes a file, and the folders on the way to it; returns its path.
  template <class Content>
  std::filesystem::path write(const std::string& name, const Content& content) const {
    const auto file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return file;
  }
  std::filesystem::path writeScript(const std::string& name, const std::string& lines) const {
    const auto file = write(name, "#!/bin/sh\n" + lines);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }
  std::string read(const std::string& name) const {
    std::ifstream stream(path_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }
  /// Names of everything inside, sorted; "a/b" for what lies deeper.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
      found.push_back(entry.path().lexically_relative(path_).string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

 private:
  std::filesystem::path path_;
};

/// Standard output of a python program; the test fails unless it exits with 0.
inline std::string outputOfPython(const ScratchFolder& folder, const std::string& program) {
  const auto script = folder.write("program.py", program);
  const std::string text = outputOf("python3 '" + script.string() + "'");
  std::filesystem::remove(script);
  return text;
}

}  // namespace testing_support
