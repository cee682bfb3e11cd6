#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "AVFoundation/Microphone.h"
#include "Base/Result.h"

namespace ios {

/// A WAV file of 16-bit PCM, as a source that plays it again and again.
class WaveFile : public MicrophoneSource {
 public:
  /// Fails, saying why, for a file that cannot be read, is of another kind, or holds no sound.
  static Result<std::unique_ptr<MicrophoneSource>, std::string> read(const std::filesystem::path& path);

  CMAudioFormat format() const override { return format_; }
  std::vector<std::int16_t> read(std::uint64_t position, std::size_t frames) override;

 private:
  WaveFile(const CMAudioFormat& format, std::vector<std::int16_t> samples)
      : format_(format), samples_(std::move(samples)) {}
  const CMAudioFormat format_;
  const std::vector<std::int16_t> samples_;
};

}  // namespace ios
