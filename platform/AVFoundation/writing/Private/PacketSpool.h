#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/MediaError.h"
#include "Base/FileDescriptor.h"

namespace ios {

/// The encoded media of a movie until it is finished, on disk: a recording takes the same memory however long
/// it lasts. The file has no name, so nothing of it is ever left behind. Used by one thread at a time.
class PacketSpool {
 public:
  /// Beside `path`, which names the file in errors.
  static MediaResult<std::unique_ptr<PacketSpool>> create(const std::filesystem::path& path);

  /// After a failure every further packet is refused with the same reason.
  [[nodiscard]] MediaResult<> append(std::size_t track, const AVPacket& packet);
  /// Hands every packet to `take`, in order; after a failed append, those that reached the disk whole. Nothing
  /// can be appended afterwards. Packets are gone after each call.
  using Taker = std::function<MediaResult<>(std::size_t track, AVPacket& packet)>;
  [[nodiscard]] MediaResult<> drain(const Taker& take);

 private:
  struct Header;
  PacketSpool(std::filesystem::path path, FileDescriptor file)
      : path_(std::move(path)), file_(std::move(file)) {}
  MediaResult<> write(const void* bytes, std::size_t count);
  MediaResult<> flush();
  MediaResult<> read(void* bytes, std::size_t count);
  tl::unexpected<MediaError> diskFailure(const char* operation, int code) const;

  const std::filesystem::path path_;
  const FileDescriptor file_;
  std::vector<std::uint8_t> buffer_;  // not written yet or, while draining, not taken yet
  std::size_t taken_ = 0;             // of the buffer
  std::int64_t written_ = 0, read_ = 0;
  MediaResult<> state_;  // of appending: the first failure
};

}  // namespace ios
