#include "simulator/phone/Interrupt.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <system_error>

namespace simulator {

Interrupt::Interrupt() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_) throw std::system_error(errno, std::generic_category(), "no event");
}

void Interrupt::raise() const {
  const int before = errno;
  ::eventfd_write(event_.number(), 1);
  errno = before;
}

bool Interrupt::isRaised() const {
  pollfd watched{event_.number(), POLLIN, 0};
  return ::poll(&watched, 1, 0) > 0;
}

}  // namespace simulator
