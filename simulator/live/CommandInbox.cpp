#include "simulator/live/CommandInbox.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

namespace simulator {

CommandInbox::CommandInbox() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (event_ < 0) throw std::runtime_error("no event descriptor");
}

CommandInbox::~CommandInbox() {
  ::close(event_);
}

void CommandInbox::put(LiveItem item) {
  {
    ios::MutexLock lock(mutex_);
    items_.push_back(std::move(item));
  }
  wake();
}

bool CommandInbox::take(LiveItem& item) {
  ios::MutexLock lock(mutex_);
  if (items_.empty()) return false;
  item = std::move(items_.front());
  items_.pop_front();
  return true;
}

void CommandInbox::waitUntil(std::chrono::steady_clock::time_point deadline) {
  {
    ios::MutexLock lock(mutex_);
    if (!items_.empty()) return;
  }
  pollfd watched{event_, POLLIN, 0};
  const auto left =
      std::max(deadline - std::chrono::steady_clock::now(), std::chrono::steady_clock::duration{});
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec limit{seconds.count(),
                       std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count()};
  (void)::ppoll(&watched, 1, &limit, nullptr);
  acknowledge();
}

void CommandInbox::acknowledge() {
  std::uint64_t count = 0;
  while (::read(event_, &count, sizeof count) < 0 && errno == EINTR) {
  }
}

void CommandInbox::wake() noexcept {
  const std::uint64_t one = 1;
  while (::write(event_, &one, sizeof one) < 0 && errno == EINTR) {
  }
}

}  // namespace simulator
