#include "JpegCheck.h"

#include <turbojpeg.h>

#include <memory>
#include <type_traits>
#include <vector>

namespace companion {
namespace {

constexpr std::int64_t kMostPixels = 32'000'000;

struct CloseDecoder {
  void operator()(void* decoder) const { tjDestroy(decoder); }
};
using Decoder = std::unique_ptr<std::remove_pointer_t<tjhandle>, CloseDecoder>;

}  // namespace

std::optional<ImageSize> checkJpeg(std::span<const std::uint8_t> bytes, std::string& problem) {
  const Decoder decoder(tjInitDecompress());
  if (!decoder) {
    problem = "no decoder could be made";
    return std::nullopt;
  }
  ImageSize size;
  int subsampling = 0, colours = 0;
  if (tjDecompressHeader3(decoder.get(), bytes.data(), bytes.size(), &size.width, &size.height, &subsampling,
                          &colours) != 0) {
    problem = tjGetErrorStr2(decoder.get());
    return std::nullopt;
  }
  if (std::int64_t{size.width} * size.height > kMostPixels) {
    problem = std::to_string(size.width) + " × " + std::to_string(size.height) + " pixels are too many";
    return std::nullopt;
  }
  // An eighth of the size in grey reads every coded byte and makes next to no pixels. The decoder stops at
  // the first sign of damage, and at a number of scans that would keep it busy for minutes.
  const tjscalingfactor eighth = {1, 8};
  const int width = TJSCALED(size.width, eighth), height = TJSCALED(size.height, eighth);
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * height);
  if (tjDecompress2(decoder.get(), bytes.data(), bytes.size(), pixels.data(), width, 0, height, TJPF_GRAY,
                    TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS) != 0) {
    problem = tjGetErrorStr2(decoder.get());
    return std::nullopt;
  }
  return size;
}

}  // namespace companion
