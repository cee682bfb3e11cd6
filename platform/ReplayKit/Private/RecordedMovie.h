#pragma once

#include <filesystem>
#include <memory>

namespace ios {

/// A movie that belongs to the holders of this object: a file without a name, so that nothing of it is left when the
/// last holder releases it or the process ends, in whatever way. Any thread.
class RecordedMovie {
 public:
  /// Removes the name of the movie at `path`; null if there is no movie, or it cannot be opened.
  static std::shared_ptr<RecordedMovie> take(const std::filesystem::path& path);
  ~RecordedMovie();
  RecordedMovie(const RecordedMovie&) = delete;

  /// Leads to the movie, in this process and while this object lives.
  std::filesystem::path path() const;

 private:
  explicit RecordedMovie(int descriptor) : descriptor_(descriptor) {}
  const int descriptor_;
};

}  // namespace ios
