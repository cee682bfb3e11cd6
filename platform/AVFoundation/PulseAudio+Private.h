#pragma once

#include <cstddef>
#include <cstdint>

namespace ios::pulse {

// The sound server's library is looked for while the program runs: a machine without one is a device without
// a microphone and without a loudspeaker. What of its interface is used, as libpulse-simple declares it.
struct SampleSpec {
  int format;
  std::uint32_t rate;
  std::uint8_t channels;
};
struct BufferSizes {
  std::uint32_t longest, target, before, least, fragment;
};
inline constexpr int kSigned16LittleEndian = 3;
inline constexpr int kPlayback = 1, kRecord = 2;
inline constexpr std::uint32_t kDefault = UINT32_MAX;

struct Library {
  void* (*open)(const char* server, const char* name, int direction, const char* device, const char* stream,
                const SampleSpec* spec, const void* map, const BufferSizes* sizes, int* error) = nullptr;
  int (*read)(void* connection, void* bytes, std::size_t count, int* error) = nullptr;
  int (*write)(void* connection, const void* bytes, std::size_t count, int* error) = nullptr;
  void (*close)(void* connection) = nullptr;

  /// Null when the machine has no such library, no server runs for this user, or time is virtual: sound takes
  /// its time.
  static const Library* reachable();

 private:
  Library();
};

}  // namespace ios::pulse
