#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "AVFoundation/FFmpeg+Private.h"
#include "AVFoundation/MediaError+Private.h"

namespace ios {

/// The encoded media of a movie until it is finished, on disk: a recording takes the same memory however long
/// it lasts. The file has no name, so nothing of it is left behind in any case. Used by one thread at a time.
class PacketSpool {
 public:
  /// Beside `path`, which names the file in errors. Null, with `failure` set, when it cannot be made.
  static std::unique_ptr<PacketSpool> create(const std::filesystem::path& path, MediaFailure& failure);
  ~PacketSpool();

  [[nodiscard]] MediaFailure append(std::size_t track, const AVPacket& packet);
  /// Hands every packet to `take`, in order; nothing can be appended afterwards. Packets are gone after each
  /// call.
  using Taker = std::function<MediaFailure(std::size_t track, AVPacket& packet)>;
  [[nodiscard]] MediaFailure drain(const Taker& take);

 private:
  struct Header;
  PacketSpool(std::filesystem::path path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}
  MediaFailure write(const void* bytes, std::size_t count);
  MediaFailure flush();
  MediaFailure read(void* bytes, std::size_t count);
  MediaFailure diskFailure(const char* operation, int code) const;

  const std::filesystem::path path_;
  const int descriptor_;
  std::vector<std::uint8_t> buffer_;  // not written yet or, while draining, not taken yet
  std::size_t taken_ = 0;             // of the buffer
  std::int64_t written_ = 0, read_ = 0;
};

}  // namespace ios
