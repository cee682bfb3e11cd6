#include "AVFoundation/Private/SoundSettings.h"

#include <cmath>

#include "AVFoundation/AVAudioSettings.h"
#include "AVFoundation/Private/FFmpeg.h"

namespace ios {
namespace {

bool supportsRate(const AVCodec& codec, double rate) {
  for (const int* supported = codec.supported_samplerates; supported && *supported; ++supported) {
    if (*supported == rate) return true;
  }
  return false;
}

}  // namespace

std::optional<SoundSettings> SoundSettings::from(const NSDictionary& output) {
  const AVCodec* codec = ffmpeg::aacEncoder();
  SoundSettings settings;
  settings.format.sampleRate = numberAt(output, AVSampleRateKey, 0);
  const double channels = numberAt(output, AVNumberOfChannelsKey, 0);
  if (numberAt(output, AVFormatIDKey, 0) != static_cast<double>(kAudioFormatMPEG4AAC) ||
      (channels != 1 && channels != 2)) {
    return std::nullopt;
  }
  if (codec && !supportsRate(*codec, settings.format.sampleRate)) return std::nullopt;
  settings.format.channels = static_cast<std::uint32_t>(channels);
  const double bitRate = numberAt(output, AVEncoderBitRateKey, 64000 * channels);
  if (!(bitRate >= 1000 && bitRate <= 1e6)) return std::nullopt;
  settings.bitRate = std::llround(bitRate);
  return settings;
}

}  // namespace ios
