#include "AVFoundation/Microphone.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <utility>

#include "AVFoundation/Private/MachineSound.h"
#include "AVFoundation/Private/WaveFile.h"
#include "Device/Device.h"

namespace ios {
namespace {

/// Generated sound, in the device's own format.
class GeneratedSource : public MicrophoneSource {
 public:
  explicit GeneratedSource(const Microphone::Tone& tone) : tone_(tone) {}
  CMAudioFormat format() const override { return {}; }
  std::vector<std::int16_t> read(std::uint64_t position, std::size_t frames) override {
    std::vector<std::int16_t> samples(frames);
    const double cycle = tone_.hertz / format().sampleRate;
    for (auto& sample : samples) {
      // The phase's fraction alone, so that the tone stays pure however long it lasts.
      const double phase = std::fmod(cycle * static_cast<double>(position++), 1.0);
      sample = static_cast<std::int16_t>(
          std::lround(32767 * tone_.amplitude * std::sin(2 * std::numbers::pi * phase)));
    }
    return samples;
  }

 private:
  const Microphone::Tone tone_;
};

/// The source that the environment names; silence, with a line on standard error, for an unknown one.
Microphone::Sound soundFrom(const char* value) {
  const std::string text = value ? value : "silence";
  if (const auto sound = Microphone::soundNamed(text)) return *sound;
  deviceLog("IOS_MICROPHONE must be silence, absent, tone, tone:<hertz>, file:<path> or machine, but is: " +
            text);
  return Microphone::Silence{};
}

Result<std::unique_ptr<MicrophoneSource>, std::string> sourceOf(const Microphone::Sound& sound) {
  if (const auto* file = std::get_if<Microphone::File>(&sound)) return WaveFile::read(file->path);
  if (std::holds_alternative<Microphone::Machine>(sound)) return openMachineSoundInput();
  const auto* tone = std::get_if<Microphone::Tone>(&sound);
  return std::make_unique<GeneratedSource>(tone ? *tone : Microphone::Tone{.amplitude = 0});
}

}  // namespace

Microphone& Microphone::shared() {
  static auto& microphone = *new Microphone;
  return microphone;
}

std::optional<Microphone::Sound> Microphone::soundNamed(const std::string& text) {
  if (text == "silence") return Silence{};
  if (text == "absent") return Absent{};
  if (text == "machine") return Machine{};
  if (text == "tone") return Tone{};
  if (text.starts_with("file:")) return File{text.substr(5)};
  if (!text.starts_with("tone:")) return std::nullopt;
  char* end = nullptr;
  const double hertz = std::strtod(text.c_str() + 5, &end);
  if (*end != '\0' || !(hertz > 0 && hertz < CMAudioFormat{}.sampleRate / 2)) return std::nullopt;
  return Tone{.hertz = hertz};
}

Microphone::Microphone() : sound_(soundFrom(std::getenv("IOS_MICROPHONE"))) {}

void Microphone::setSound(Sound sound) {
  MutexLock lock(mutex_);
  sound_ = std::move(sound);
}

Microphone::Sound Microphone::sound() const {
  MutexLock lock(mutex_);
  return sound_;
}

bool Microphone::isPresent() const {
  return !std::holds_alternative<Absent>(sound());
}

void Microphone::setConnected(bool connected) {
  MutexLock lock(mutex_);
  connected_ = connected;
}

bool Microphone::isConnected() const {
  const Sound sound = this->sound();
  if (std::holds_alternative<Absent>(sound)) return false;
  if (std::holds_alternative<Machine>(sound) && !machineHasSoundInput()) return false;
  MutexLock lock(mutex_);
  return connected_;
}

void Microphone::setDelay(std::chrono::nanoseconds delay) {
  MutexLock lock(mutex_);
  delay_ = delay;
}

std::chrono::nanoseconds Microphone::delay() const {
  MutexLock lock(mutex_);
  return delay_;
}

void Microphone::setHeldElsewhere(bool held) {
  MutexLock lock(mutex_);
  heldElsewhere_ = held;
}

bool Microphone::isHeldElsewhere() const {
  MutexLock lock(mutex_);
  return heldElsewhere_;
}

std::string Microphone::name() const {
  return Device::current().profile().model + " Microphone";
}

std::optional<CMAudioFormat> Microphone::format() const {
  if (!isConnected()) return std::nullopt;
  const Sound sound = this->sound();
  const auto* file = std::get_if<File>(&sound);
  if (!file) return CMAudioFormat{};
  const auto wave = WaveFile::read(file->path);
  return wave ? std::optional((*wave)->format()) : std::nullopt;
}

std::unique_ptr<MicrophoneSource> Microphone::open(std::string& problem) const {
  if (!isConnected()) {
    problem = "it is not connected";
    return nullptr;
  }
  auto source = sourceOf(sound());
  if (source) return *std::move(source);
  problem = source.error();
  return nullptr;
}

}  // namespace ios
