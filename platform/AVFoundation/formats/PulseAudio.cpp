#include "AVFoundation/Private/PulseAudio.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "DeviceClock/Clock.h"
#include "Dispatch/WorkerPool.h"

namespace ios {

PulseAudio::PulseAudio() {
  void* image = ::dlopen("libpulse-simple.so.0", RTLD_NOW | RTLD_LOCAL);
  if (!image) return;
  const auto find = [image](const char* name, auto& function) {
    function = reinterpret_cast<std::decay_t<decltype(function)>>(::dlsym(image, name));
    return function != nullptr;
  };
  if (find("pa_simple_new", new_) && find("pa_simple_read", read_) && find("pa_simple_write", write_))
    find("pa_simple_free", free_);
}

const PulseAudio* PulseAudio::reachable() {
  if (Clock::shared().isVirtual()) return nullptr;
  static const PulseAudio server;
  if (!server.free_) return nullptr;
  if (std::getenv("PULSE_SERVER")) return &server;
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const std::filesystem::path folder = runtime ? runtime : "/run/user/" + std::to_string(::getuid());
  std::error_code error;
  return std::filesystem::exists(folder / "pulse" / "native", error) ? &server : nullptr;
}

Result<std::unique_ptr<PulseAudio::Stream>, std::string> PulseAudio::open(pa_stream_direction_t direction,
                                                                          const char* name, int rate,
                                                                          int channels,
                                                                          const BufferSizes& sizes) const {
  const pa_sample_spec spec{PA_SAMPLE_S16LE, static_cast<std::uint32_t>(rate),
                            static_cast<std::uint8_t>(channels)};
  const pa_buffer_attr attributes{UINT32_MAX, sizes.target, UINT32_MAX, UINT32_MAX, sizes.fragment};
  int error = 0;
  const WorkerPool::BlockedThread blocked;
  pa_simple* connection =
      new_(nullptr, "iOS device", direction, nullptr, name, &spec, nullptr, &attributes, &error);
  if (connection) return std::unique_ptr<Stream>(new Stream(*this, connection));
  return failure("the machine's sound cannot be opened (" + std::to_string(error) + ")");
}

bool PulseAudio::Stream::read(void* bytes, std::size_t count) const {
  const WorkerPool::BlockedThread blocked;
  return server_.read_(connection_.get(), bytes, count, nullptr) >= 0;
}

bool PulseAudio::Stream::write(const void* bytes, std::size_t count) const {
  const WorkerPool::BlockedThread blocked;
  return server_.write_(connection_.get(), bytes, count, nullptr) >= 0;
}

}  // namespace ios
