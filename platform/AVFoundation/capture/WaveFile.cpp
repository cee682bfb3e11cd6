#include "AVFoundation/Private/WaveFile.h"

#include <sndfile.h>

namespace ios {
namespace {

constexpr sf_count_t kMostSamples = 128 << 20;

struct Close {
  void operator()(SNDFILE* file) const { sf_close(file); }
};

bool isPlainWave(int format) {
  const int kind = format & SF_FORMAT_TYPEMASK;
  return (kind == SF_FORMAT_WAV || kind == SF_FORMAT_WAVEX) &&
         (format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
}

}  // namespace

Result<std::unique_ptr<MicrophoneSource>, std::string> WaveFile::read(const std::filesystem::path& path) {
  const auto refuse = [&](const char* why) { return failure(path.filename().string() + why); };
  std::error_code error;
  // A pipe would keep the caller waiting.
  if (!std::filesystem::is_regular_file(path, error)) return refuse(" is not a file");
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, Close> file(sf_open(path.c_str(), SFM_READ, &info));
  if (!file || !isPlainWave(info.format)) return refuse(" is not a WAV file of 16-bit PCM");
  const CMAudioFormat format{static_cast<double>(info.samplerate), static_cast<std::uint32_t>(info.channels)};
  if (!format.isUsable() || info.frames > kMostSamples / info.channels)
    return refuse(" holds no sound that can be used");
  std::vector<std::int16_t> samples(static_cast<std::size_t>(info.frames * info.channels));
  const sf_count_t frames = sf_readf_short(file.get(), samples.data(), info.frames);
  if (frames < 1) return refuse(" holds no sound that can be used");
  samples.resize(static_cast<std::size_t>(frames * info.channels));
  return std::unique_ptr<WaveFile>(new WaveFile(format, std::move(samples)));
}

std::vector<std::int16_t> WaveFile::read(std::uint64_t position, std::size_t frames) {
  std::vector<std::int16_t> samples(frames * format_.channels);
  std::size_t next = position * format_.channels % samples_.size();
  for (auto& sample : samples) {
    sample = samples_[next];
    next = (next + 1) % samples_.size();
  }
  return samples;
}

}  // namespace ios
