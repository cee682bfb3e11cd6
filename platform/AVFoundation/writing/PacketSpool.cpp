#include "AVFoundation/Private/PacketSpool.h"

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

/// The header of each packet's bytes. Read only by the process that wrote it.
struct PacketSpool::Header {
  std::int64_t time = 0, duration = 0;
  std::uint32_t track = 0, size = 0;
  std::int32_t flags = 0, reserved = 0;
};

MediaResult<std::unique_ptr<PacketSpool>> PacketSpool::create(const std::filesystem::path& path) {
  if (const auto problem = diskRefusal("create", path)) return failed(*problem);
  const auto temporary = temporaryNameBeside(path);
  FileDescriptor file(::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file) return failed(FileError{errno, "create", path});
  ::unlink(temporary.c_str());
  std::unique_ptr<PacketSpool> spool(new PacketSpool(path, std::move(file)));
  spool->buffer_.reserve(kBufferSize);
  return spool;
}

tl::unexpected<MediaError> PacketSpool::diskFailure(const char* operation, int code) const {
  return failed(FileError{code, operation, path_});
}

MediaResult<> PacketSpool::append(std::size_t track, const AVPacket& packet) {
  Header header{.time = packet.dts,
                .duration = packet.duration,
                .track = static_cast<std::uint32_t>(track),
                .size = static_cast<std::uint32_t>(packet.size),
                .flags = packet.flags};
  if (state_) state_ = write(&header, sizeof header);
  if (state_) state_ = write(packet.data, header.size);
  return state_;
}

MediaResult<> PacketSpool::write(const void* bytes, std::size_t count) {
  const auto* next = static_cast<const std::uint8_t*>(bytes);
  while (count > 0) {
    const std::size_t part = std::min(count, kBufferSize - buffer_.size());
    buffer_.insert(buffer_.end(), next, next + part);
    next += part;
    count -= part;
    if (buffer_.size() < kBufferSize) continue;
    IOS_TRY(flush());
  }
  return {};
}

MediaResult<> PacketSpool::flush() {
  if (const auto problem = diskRefusal("write", path_)) return failed(*problem);
  for (std::size_t done = 0; done < buffer_.size();) {
    const ssize_t count = ::pwrite(file_.number(), buffer_.data() + done, buffer_.size() - done, written_);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return diskFailure("write", errno);
    done += static_cast<std::size_t>(count);
    written_ += count;
  }
  buffer_.clear();
  return {};
}

MediaResult<> PacketSpool::read(void* bytes, std::size_t count) {
  auto* next = static_cast<std::uint8_t*>(bytes);
  while (count > 0) {
    if (taken_ == buffer_.size()) {
      buffer_.resize(kBufferSize);
      const ssize_t got = ::pread(file_.number(), buffer_.data(), buffer_.size(), read_);
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
  return {};
}

MediaResult<> PacketSpool::drain(const Taker& take) {
  if (state_ && !buffer_.empty()) {
    IOS_TRY(flush());
  }
  buffer_.clear();
  ffmpeg::Packet packet(av_packet_alloc());
  if (!packet) return failed("complete the movie", AVERROR(ENOMEM));
  taken_ = 0;
  const auto left = [&] { return static_cast<std::size_t>(written_ - read_) + buffer_.size() - taken_; };
  while (left() >= sizeof(Header)) {
    Header header;
    IOS_TRY(read(&header, sizeof header));
    if (left() < header.size) break;  // cut off by a failed append
    if (av_new_packet(packet.get(), static_cast<int>(header.size)) < 0) {
      return failed("complete the movie", AVERROR(ENOMEM));
    }
    IOS_TRY(read(packet->data, header.size));
    packet->pts = packet->dts = header.time;
    packet->duration = header.duration;
    packet->flags = header.flags;
    IOS_TRY(take(header.track, *packet));
    av_packet_unref(packet.get());
  }
  return {};
}

}  // namespace ios
