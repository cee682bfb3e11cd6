#include "UIKit/ControlChannel.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <span>

namespace ios {
namespace {

// Far above a picture of the largest screen; a greater length means garbage.
constexpr std::uint32_t kLongestMessage = 64 << 20;

bool sendAll(int descriptor, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(sent));
  }
  return true;
}

bool receiveAll(int descriptor, std::span<std::uint8_t> bytes, const ControlChannel::Wait& wait) {
  while (!bytes.empty()) {
    if (wait && !wait()) return false;
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

ControlChannel::ControlChannel(FileDescriptor stream) : stream_(std::move(stream)) {
  ::fcntl(descriptor(), F_SETFD, FD_CLOEXEC);
}

bool ControlChannel::send(const NSDictionary& message) {
  const Bytes body = PropertyList(message).binary();
  const auto length = static_cast<std::uint32_t>(body.size());
  const std::uint8_t head[4] = {std::uint8_t(length >> 24), std::uint8_t(length >> 16),
                                std::uint8_t(length >> 8), std::uint8_t(length)};
  return sendAll(descriptor(), head) && sendAll(descriptor(), body);
}

std::optional<NSDictionary> ControlChannel::receive(const Wait& wait) {
  std::uint8_t head[4];
  if (!receiveAll(descriptor(), head, wait)) return std::nullopt;
  const std::uint32_t length =
      std::uint32_t{head[0]} << 24 | std::uint32_t{head[1]} << 16 | std::uint32_t{head[2]} << 8 | head[3];
  if (length > kLongestMessage) return std::nullopt;
  Bytes body(length);
  if (!receiveAll(descriptor(), body, wait)) return std::nullopt;
  const auto message = PropertyList::parse(body);
  if (!message || !message->dictionary()) return std::nullopt;
  return *message->dictionary();
}

}  // namespace ios
