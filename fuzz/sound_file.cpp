// Any file is either refused as the microphone's sound, with a reason, or gives as many samples as are asked for.

#include <cstddef>
#include <cstdint>
#include <string>

#include "AVFoundation/Microphone.h"
#include "Require.h"
#include "ScratchDevice.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ios;
  static const ScratchDevice device;
  const auto file = device.write("sound.wav", data, size);
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
