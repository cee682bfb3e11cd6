#pragma once

#include <filesystem>
#include <memory>

namespace ios {

/// A movie that belongs to whoever holds this: a file without a name, so that nothing of it is left when the
/// last holder goes or the process ends, however that happens. Any thread.
class RecordedMovie {
 public:
  /// Takes the name away from the movie at `path`; empty when there is none.
  static std::shared_ptr<RecordedMovie> take(const std::filesystem::path& path);
  ~RecordedMovie();
  RecordedMovie(const RecordedMovie&) = delete;

  /// Leads to it in this process, while this lives.
  std::filesystem::path path() const;

 private:
  explicit RecordedMovie(int descriptor) : descriptor_(descriptor) {}
  const int descriptor_;
};

}  // namespace ios
