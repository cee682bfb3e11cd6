#include "simulator/remote/Interruption.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>

#include <cerrno>

#include "simulator/remote/Refusal.h"

namespace simulator {
namespace {

int eventOfSignals = -1;

void listen() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    action.sa_handler = [](int) {
      const int before = errno;
      ::eventfd_write(eventOfSignals, 1);
      errno = before;
    };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

Interruption& Interruption::ofProcess() {
  static auto& interruption = *new Interruption;
  return interruption;
}

Interruption::Interruption() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (event_ < 0) throw Refusal(Exit::system, "The system has no event descriptor left.");
  eventOfSignals = event_;
  listen();
}

bool Interruption::isRaised() const {
  pollfd watched{event_, POLLIN, 0};
  return ::poll(&watched, 1, 0) > 0;
}

void Interruption::clear() {
  eventfd_t count = 0;
  ::eventfd_read(event_, &count);
  listen();
}

}  // namespace simulator
