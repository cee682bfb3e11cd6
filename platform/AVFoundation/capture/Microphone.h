#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Base/Mutex.h"
#include "CoreMedia/CMSampleBuffer.h"

namespace ios {

/// Where a microphone's sound comes from, while it is listened to. Asked by one thread at a time.
class MicrophoneSource {
 public:
  virtual ~MicrophoneSource() = default;
  virtual CMAudioFormat format() const = 0;
  /// The next `frames` frames; `position` counts the frames since the listening began. Does not wait:
  /// sound that has not arrived yet is silence.
  virtual std::vector<std::int16_t> read(std::uint64_t position, std::size_t frames) = 0;
};

/// The device's microphone. Its sound is one of the sources below; the process's environment chooses the
/// first, IOS_MICROPHONE: "silence" (as when it is not set), "absent", "tone" or "tone:<hertz>", "file:<path
/// of a WAV file>", "machine". Any thread; changes hold for captures that start later.
class Microphone {
 public:
  struct Absent {};
  struct Silence {};
  struct Tone {
    double hertz = 440;
    double amplitude = 0.25;  // of full scale
  };
  /// A WAV file of 16-bit PCM, played again and again. One that cannot be read is a microphone that
  /// cannot be opened.
  struct File {
    std::filesystem::path path;
  };
  /// The sound input of the machine the device runs on, in real time only; without one the microphone
  /// is not connected.
  struct Machine {};
  using Sound = std::variant<Silence, Absent, Tone, File, Machine>;

  static Microphone& shared();

  /// The source that IOS_MICROPHONE selects with `text`; empty when it selects none.
  static std::optional<Sound> soundNamed(const std::string& text);
  void setSound(Sound sound);
  Sound sound() const;
  bool isPresent() const;
  /// A device that is known but not plugged in.
  void setConnected(bool connected);
  bool isConnected() const;
  /// How long after a capture's start the first buffer comes; with 0, the default, before the start returns.
  void setDelay(std::chrono::nanoseconds delay);
  std::chrono::nanoseconds delay() const;
  /// Another application holds it: sessions refuse it.
  void setHeldElsewhere(bool held);
  bool isHeldElsewhere() const;

  std::string name() const;
  /// What it delivers; empty while it is not connected or cannot be opened.
  std::optional<CMAudioFormat> format() const;
  /// Begins to listen. Null, with `problem` set, when it cannot be opened.
  std::unique_ptr<MicrophoneSource> open(std::string& problem) const;

 private:
  Microphone();
  mutable Mutex mutex_;
  Sound sound_ IOS_GUARDED_BY(mutex_);
  bool connected_ IOS_GUARDED_BY(mutex_) = true;
  bool heldElsewhere_ IOS_GUARDED_BY(mutex_) = false;
  std::chrono::nanoseconds delay_ IOS_GUARDED_BY(mutex_){0};
};

}  // namespace ios
