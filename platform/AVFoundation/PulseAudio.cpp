#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "AVFoundation/PulseAudio+Private.h"
#include "DeviceClock/Clock.h"

namespace ios::pulse {

Library::Library() {
  void* image = ::dlopen("libpulse-simple.so.0", RTLD_NOW | RTLD_LOCAL);
  if (!image) return;
  open = reinterpret_cast<decltype(open)>(::dlsym(image, "pa_simple_new"));
  read = reinterpret_cast<decltype(read)>(::dlsym(image, "pa_simple_read"));
  write = reinterpret_cast<decltype(write)>(::dlsym(image, "pa_simple_write"));
  if (open && read && write) close = reinterpret_cast<decltype(close)>(::dlsym(image, "pa_simple_free"));
}

const Library* Library::reachable() {
  if (Clock::shared().isVirtual()) return nullptr;
  static const Library library;
  if (!library.close) return nullptr;
  if (std::getenv("PULSE_SERVER")) return &library;
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const std::filesystem::path folder = runtime ? runtime : "/run/user/" + std::to_string(::getuid());
  std::error_code error;
  return std::filesystem::exists(folder / "pulse" / "native", error) ? &library : nullptr;
}

}  // namespace ios::pulse
