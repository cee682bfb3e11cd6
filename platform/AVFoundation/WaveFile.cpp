#include "AVFoundation/WaveFile+Private.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "Device/Files.h"

namespace ios {
namespace {

constexpr std::uintmax_t kLargestFile = 256 << 20;
constexpr std::uint32_t kPCM = 1, kExtensible = 0xfffe;

using View = std::span<const std::uint8_t>;

/// A little-endian number; the caller knows that the bytes are there.
std::uint32_t number(View bytes, std::size_t at, int count) {
  std::uint32_t value = 0;
  for (int i = count; i-- > 0;) value = value << 8 | bytes[at + static_cast<std::size_t>(i)];
  return value;
}

bool isNamed(View bytes, std::size_t at, std::string_view name) {
  return bytes.size() >= at + name.size() &&
         std::equal(name.begin(), name.end(), bytes.begin() + static_cast<long>(at));
}

/// The content of the first chunk of that name; a last chunk that is cut off counts as far as it goes.
View chunkOf(View file, std::string_view name) {
  for (std::size_t at = 12; at + 8 <= file.size();) {
    const std::size_t length = std::min<std::size_t>(number(file, at + 4, 4), file.size() - at - 8);
    if (isNamed(file, at, name)) return file.subspan(at + 8, length);
    at += 8 + length + length % 2;
  }
  return {};
}

}  // namespace

std::unique_ptr<WaveFile> WaveFile::read(const std::filesystem::path& path, std::string& problem) {
  FileError error;
  const auto bytes = readFile(path, &error, kLargestFile);
  if (!bytes) {
    problem = error.description();
    return nullptr;
  }
  const View file(*bytes);
  const View header = chunkOf(file, "fmt ");
  const std::uint32_t kind = header.size() >= 16 ? number(header, 0, 2) : 0;
  // The extensible form repeats the kind further on.
  const bool plain =
      kind == kPCM || (kind == kExtensible && header.size() >= 26 && number(header, 24, 2) == kPCM);
  if (!isNamed(file, 0, "RIFF") || !isNamed(file, 8, "WAVE") || !plain || number(header, 14, 2) != 16) {
    problem = path.filename().string() + " is no WAV file of 16-bit PCM";
    return nullptr;
  }
  const CMAudioFormat format{static_cast<double>(number(header, 4, 4)), number(header, 2, 2)};
  const View data = chunkOf(file, "data");
  if (!format.isUsable() || data.size() < 2 * format.channels) {
    problem = path.filename().string() + " holds no sound that can be used";
    return nullptr;
  }
  std::vector<std::int16_t> samples(data.size() / 2 / format.channels * format.channels);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<std::int16_t>(number(data, 2 * i, 2));
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
