#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "Base/FileDescriptor.h"

namespace simulator {

/// A file that is appended to and never grows beyond a limit: the oldest content is dropped, up to the end of a line if
/// there is one, and the file then begins with a line that says how much.
class BoundedLog {
 public:
  /// Starts with an empty file.
  BoundedLog(const std::filesystem::path& file, std::size_t limit);
  void append(std::string_view bytes);
  /// 0, or the errno of the first write that failed; nothing is written after it.
  int problem() const { return problem_; }

 private:
  void dropOldest(std::size_t keep);
  void write(std::string_view bytes);

  ios::FileDescriptor file_;
  std::size_t limit_, size_ = 0;
  std::uint64_t dropped_ = 0;
  int problem_ = 0;
};

}  // namespace simulator
