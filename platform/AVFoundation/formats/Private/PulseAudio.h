#pragma once

#include <pulse/simple.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Base/Result.h"

namespace ios {

/// The machine's sound server (PulseAudio, or PipeWire in its place). Its library is looked for while the
/// program runs: a machine without one is a device without a microphone and without a loudspeaker.
class PulseAudio {
 public:
  /// Null when the machine has no such library, no server runs for this user, or time is virtual: sound plays in
  /// real time.
  static const PulseAudio* reachable();

  /// 16-bit samples to or from the server's default device. Waits for the server, one thread at a time.
  class Stream {
   public:
    /// False when the connection is lost.
    bool read(void* bytes, std::size_t count) const;
    bool write(const void* bytes, std::size_t count) const;

   private:
    friend class PulseAudio;
    Stream(const PulseAudio& server, pa_simple* connection)
        : server_(server), connection_(connection, server.free_) {}
    const PulseAudio& server_;
    std::unique_ptr<pa_simple, decltype(&pa_simple_free)> connection_;
  };
  /// The sizes of the server's buffer, in bytes; a size that is not given is the server's choice.
  struct BufferSizes {
    std::uint32_t target = UINT32_MAX, fragment = UINT32_MAX;
  };
  /// `name` is what the server shows to the user. Fails, saying why, when the server refuses.
  Result<std::unique_ptr<Stream>, std::string> open(pa_stream_direction_t direction, const char* name,
                                                    int rate, int channels, const BufferSizes& sizes) const;

 private:
  PulseAudio();

  decltype(&pa_simple_new) new_ = nullptr;
  decltype(&pa_simple_read) read_ = nullptr;
  decltype(&pa_simple_write) write_ = nullptr;
  decltype(&pa_simple_free) free_ = nullptr;  // null unless all of them were found
};

}  // namespace ios
