#pragma once

#include <cstdint>
#include <optional>

#include "CoreFoundation/PropertyList.h"
#include "CoreMedia/CMSampleBuffer.h"

namespace ios {

/// The format that a movie's sound is to be encoded in.
struct SoundSettings {
  CMAudioFormat format;
  std::int64_t bitRate = 0;
  /// Reads settings as AVAudioSettings.h describes them. Empty for those that cannot be met.
  static std::optional<SoundSettings> from(const NSDictionary& outputSettings);
};

}  // namespace ios
