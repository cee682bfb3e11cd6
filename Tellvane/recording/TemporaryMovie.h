#pragma once

#include <string>

namespace tellvane {

/// The name of a recording's temporary file: `TLV_SCREEN_RECORDING_PATH`, or one like it while an earlier
/// recording's movie has that name. The photo library may be busy, and the user recording again, before a
/// movie is copied. The name is free again when this is destroyed; the file belongs to its user. Any thread.
class TemporaryMovie {
 public:
  TemporaryMovie();
  ~TemporaryMovie();
  TemporaryMovie(const TemporaryMovie&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace tellvane
