// Any file is either refused as the microphone's sound, with a reason, or gives as many samples as are asked for.

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "AVFoundation/Microphone.h"
#include "Device/Device.h"
#include "DeviceClock/Clock.h"

namespace {

using namespace ios;

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

std::filesystem::path freshFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "sound-XXXXXX").string();
  const std::filesystem::path folder = ::mkdtemp(name.data());
  Clock::shared().useVirtualTime();
  Device::start({.root = folder, .mainBundle = folder, .bundleIdentifier = {}, .settings = DeviceSettings{}});
  return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::filesystem::path folder = freshFolder();
  const auto file = folder / "sound.wav";
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  Microphone::shared().setSound(Microphone::File{file});
  std::string problem;
  const auto source = Microphone::shared().open(problem);
  require(source || !problem.empty(), "a refusal without a reason");
  if (!source) return 0;
  const auto format = source->format();
  require(format.channels > 0 && format.sampleRate > 0, "a format that nobody can use");
  for (const std::uint64_t position : {std::uint64_t{0}, std::uint64_t{1000}, std::uint64_t{1} << 40}) {
    require(source->read(position, 1024).size() == 1024 * format.channels, "too few samples, or too many");
  }
  return 0;
}
