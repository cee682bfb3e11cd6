#include "ReplayKit/Private/RecordedMovie.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace ios {

std::shared_ptr<RecordedMovie> RecordedMovie::take(const std::filesystem::path& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ::unlink(path.c_str());
  if (descriptor < 0) return nullptr;
  return std::shared_ptr<RecordedMovie>(new RecordedMovie(descriptor));
}

RecordedMovie::~RecordedMovie() {
  ::close(descriptor_);
}

std::filesystem::path RecordedMovie::path() const {
  return "/proc/self/fd/" + std::to_string(descriptor_);
}

}  // namespace ios
