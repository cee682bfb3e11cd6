#pragma once

#include <cstdint>
#include <string>

namespace ios {

// Output settings of a movie's sound.
/// Integer: kAudioFormatMPEG4AAC. Required.
inline const std::string AVFormatIDKey = "AVFormatIDKey";
/// The characters "aac ".
inline constexpr std::int64_t kAudioFormatMPEG4AAC = 0x61616320;
/// Frames per second, integer or double. Required.
inline const std::string AVSampleRateKey = "AVSampleRateKey";
/// 1 or 2. Required.
inline const std::string AVNumberOfChannelsKey = "AVNumberOfChannelsKey";
/// Bits per second, integer or double. Without it: 64000 per channel.
inline const std::string AVEncoderBitRateKey = "AVEncoderBitRateKey";

}  // namespace ios
