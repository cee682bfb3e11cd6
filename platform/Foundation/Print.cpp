#include "Foundation/Print.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "ObjectiveC/Mutex.h"

namespace ios {

void print(std::string_view text) {
  static auto& mutex = *new Mutex;
  MutexLock lock(mutex);
  std::fflush(stdout);
  while (!text.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;  // nobody reads any more, which is no business of whoever prints
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace ios
