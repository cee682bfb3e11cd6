#include "Base/Output.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>

#include "Base/FileDescriptor.h"
#include "Base/Mutex.h"

namespace ios {
namespace {

/// Keeps a broken pipe's signal from ending the process, on this thread and while it lives. How the process handles the
/// signal otherwise is its own affair, and stays as it is.
class BrokenPipesAreSilent {
 public:
  BrokenPipesAreSilent() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    earlier_ = sigismember(&pending, SIGPIPE) == 1;
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~BrokenPipesAreSilent() {
    const timespec now{};
    while (!earlier_ && sigtimedwait(&pipe_, nullptr, &now) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  BrokenPipesAreSilent(const BrokenPipesAreSilent&) = delete;

 private:
  sigset_t pipe_{}, before_{};
  bool earlier_ = false;  // a signal that somebody else raised is pending
};

void write(std::FILE* buffered, int descriptor, std::string_view text) {
  static auto& mutex = *new Mutex;
  MutexLock lock(mutex);
  const BrokenPipesAreSilent silence;
  std::fflush(buffered);
  static_cast<void>(writeAll(descriptor, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}));
}

}  // namespace

void writeOutput(std::string_view text) {
  write(stdout, STDOUT_FILENO, text);
}

void writeErrors(std::string_view text) {
  write(stderr, STDERR_FILENO, text);
}

}  // namespace ios
