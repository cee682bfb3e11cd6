#include "AVFoundation/PacketSpool+Private.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "Device/Files.h"

namespace ios {
namespace {

constexpr std::size_t kBufferSize = 32 * 1024;

}  // namespace

/// What stands before each packet's bytes. Read by the process that wrote it.
struct PacketSpool::Header {
  std::int64_t time = 0, duration = 0;
  std::uint32_t track = 0, size = 0;
  std::int32_t flags = 0, reserved = 0;
};

std::unique_ptr<PacketSpool> PacketSpool::create(const std::filesystem::path& path, MediaFailure& failure) {
  const auto fail = [&](int code) {
    failure = MediaError::disk({code, "create", path});
    return nullptr;
  };
  if (const auto refused = diskRefusal("create", path)) return fail(refused->code);
  const auto temporary = temporaryNameBeside(path);
  const int descriptor = ::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) return fail(errno);
  ::unlink(temporary.c_str());
  std::unique_ptr<PacketSpool> spool(new PacketSpool(path, descriptor));
  spool->buffer_.reserve(kBufferSize);
  return spool;
}

PacketSpool::~PacketSpool() {
  ::close(descriptor_);
}

MediaFailure PacketSpool::diskFailure(const char* operation, int code) const {
  return MediaError::disk({code, operation, path_});
}

MediaFailure PacketSpool::append(std::size_t track, const AVPacket& packet) {
  Header header{.time = packet.dts,
                .duration = packet.duration,
                .track = static_cast<std::uint32_t>(track),
                .size = static_cast<std::uint32_t>(packet.size),
                .flags = packet.flags};
  if (auto failure = write(&header, sizeof header)) return failure;
  return write(packet.data, header.size);
}

MediaFailure PacketSpool::write(const void* bytes, std::size_t count) {
  const auto* next = static_cast<const std::uint8_t*>(bytes);
  while (count > 0) {
    const std::size_t part = std::min(count, kBufferSize - buffer_.size());
    buffer_.insert(buffer_.end(), next, next + part);
    next += part;
    count -= part;
    if (buffer_.size() < kBufferSize) continue;
    if (auto failure = flush()) return failure;
  }
  return std::nullopt;
}

MediaFailure PacketSpool::flush() {
  if (const auto refused = diskRefusal("write", path_)) return diskFailure("write", refused->code);
  for (std::size_t done = 0; done < buffer_.size();) {
    const ssize_t count = ::pwrite(descriptor_, buffer_.data() + done, buffer_.size() - done, written_);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return diskFailure("write", errno);
    done += static_cast<std::size_t>(count);
    written_ += count;
  }
  buffer_.clear();
  return std::nullopt;
}

MediaFailure PacketSpool::read(void* bytes, std::size_t count) {
  auto* next = static_cast<std::uint8_t*>(bytes);
  while (count > 0) {
    if (taken_ == buffer_.size()) {
      buffer_.resize(kBufferSize);
      const ssize_t got = ::pread(descriptor_, buffer_.data(), buffer_.size(), read_);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return diskFailure("read", got < 0 ? errno : EIO);
      buffer_.resize(static_cast<std::size_t>(got));
      read_ += got;
      taken_ = 0;
    }
    const std::size_t part = std::min(count, buffer_.size() - taken_);
    std::memcpy(next, buffer_.data() + taken_, part);
    next += part;
    taken_ += part;
    count -= part;
  }
  return std::nullopt;
}

MediaFailure PacketSpool::drain(const Taker& take) {
  if (!buffer_.empty()) {
    if (auto failure = flush()) return failure;
  }
  ffmpeg::Packet packet(av_packet_alloc());
  if (!packet) return failed("complete the movie", AVERROR(ENOMEM));
  taken_ = 0;
  while (read_ < written_ || taken_ < buffer_.size()) {
    Header header;
    if (auto failure = read(&header, sizeof header)) return failure;
    if (av_new_packet(packet.get(), static_cast<int>(header.size)) < 0) {
      return failed("complete the movie", AVERROR(ENOMEM));
    }
    if (auto failure = read(packet->data, header.size)) return failure;
    packet->pts = packet->dts = header.time;
    packet->duration = header.duration;
    packet->flags = header.flags;
    if (auto failure = take(header.track, *packet)) return failure;
    av_packet_unref(packet.get());
  }
  return std::nullopt;
}

}  // namespace ios
