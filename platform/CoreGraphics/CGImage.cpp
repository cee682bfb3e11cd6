#include "CoreGraphics/CGImage.h"

#include <png.h>
#include <turbojpeg.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>

namespace ios {
namespace {

struct Handles {
  void operator()(void* memory) const { std::free(memory); }
  void operator()(unsigned char* memory) const { tjFree(memory); }
};
struct TurboJPEG {
  explicit TurboJPEG(tjhandle made) : handle(made) {}
  ~TurboJPEG() {
    if (handle) tjDestroy(handle);
  }
  TurboJPEG(const TurboJPEG&) = delete;
  const tjhandle handle;
};

struct Bitmap {
  // Not filled: the decoder writes each byte.
  static Bitmap make(std::size_t width, std::size_t height) {
    if (width == 0 || height == 0 || width > CGImage::kMaximumPixels / height) return {};
    return {
        {static_cast<std::uint8_t*>(std::malloc(width * height * 4)), [](std::uint8_t* p) { std::free(p); }},
        width,
        height};
  }
  CGImageRef image(bool opaque) {
    return std::make_shared<const CGImage>(std::move(pixels), width, height, width * 4, opaque);
  }

  std::shared_ptr<std::uint8_t[]> pixels;
  std::size_t width = 0, height = 0;
};

using Input = std::span<const std::uint8_t>;

bool startsWith(Input bytes, std::string_view signature) {
  return bytes.size() >= signature.size() &&
         std::memcmp(bytes.data(), signature.data(), signature.size()) == 0;
}

// libpng accepts a file without its end; one that was cut short has no end chunk.
bool hasAllChunks(Input bytes) {
  constexpr std::size_t kSignature = 8, kFrame = 12;
  std::size_t at = kSignature;
  while (bytes.size() - at >= kFrame) {
    const std::size_t length =
        std::size_t{bytes[at]} << 24 | bytes[at + 1] << 16 | bytes[at + 2] << 8 | bytes[at + 3];
    if (bytes.size() - at - kFrame < length) return false;
    if (std::memcmp(&bytes[at + 4], "IEND", 4) == 0) return true;
    at += kFrame + length;
  }
  return false;
}

void premultiply(Bitmap& bitmap) {
  const std::size_t bytes = bitmap.width * bitmap.height * 4;
  for (std::size_t i = 0; i < bytes; i += 4) {
    std::uint8_t* p = bitmap.pixels.get() + i;
    for (int c = 0; c < 3; ++c) p[c] = static_cast<std::uint8_t>((p[c] * p[3] + 127) / 255);
  }
}

CGImageRef decodePNG(Input bytes) {
  if (!hasAllChunks(bytes)) return nullptr;
  png_image reader{};
  reader.version = PNG_IMAGE_VERSION;
  struct Release {
    png_image& image;
    ~Release() { png_image_free(&image); }
  } release{reader};
  if (!png_image_begin_read_from_memory(&reader, bytes.data(), bytes.size())) return nullptr;
  const bool opaque = !(reader.format & PNG_FORMAT_FLAG_ALPHA);
  reader.format = PNG_FORMAT_BGRA;
  Bitmap bitmap = Bitmap::make(reader.width, reader.height);
  if (!bitmap.pixels) return nullptr;
  if (!png_image_finish_read(&reader, nullptr, bitmap.pixels.get(), 0, nullptr)) return nullptr;
  if (!opaque) premultiply(bitmap);
  return bitmap.image(opaque);
}

CGImageRef decodeJPEG(Input bytes) {
  const TurboJPEG decoder(tjInitDecompress());
  int width = 0, height = 0, subsampling = 0, colors = 0;
  const auto size = static_cast<unsigned long>(bytes.size());
  if (!decoder.handle ||
      tjDecompressHeader3(decoder.handle, bytes.data(), size, &width, &height, &subsampling, &colors) != 0) {
    return nullptr;
  }
  Bitmap bitmap = Bitmap::make(static_cast<std::size_t>(width), static_cast<std::size_t>(height));
  if (!bitmap.pixels) return nullptr;
  // A warning counts as damage: the decoder invents the pixels that are missing. The limit on scans keeps a
  // small file from taking minutes.
  if (tjDecompress2(decoder.handle, bytes.data(), size, bitmap.pixels.get(), width, width * 4, height,
                    TJPF_BGRA, TJFLAG_LIMITSCANS) != 0) {
    return nullptr;
  }
  return bitmap.image(true);
}

}  // namespace

CGImageRef CGImage::decode(Input bytes) {
  if (startsWith(bytes, "\x89PNG\r\n\x1a\n")) return decodePNG(bytes);
  if (startsWith(bytes, "\xff\xd8\xff")) return decodeJPEG(bytes);
  return nullptr;
}

CGImageRef CGImage::decode(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return nullptr;
  const auto size = std::filesystem::file_size(file, error);
  std::ifstream stream(file, std::ios::binary);
  if (error || !stream) return nullptr;
  Bytes bytes(size);
  if (!stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size))) return nullptr;
  return decode(Input(bytes));
}

Bytes CGImage::png() const {
  png_image writer{};
  writer.version = PNG_IMAGE_VERSION;
  writer.width = static_cast<png_uint_32>(width_);
  writer.height = static_cast<png_uint_32>(height_);
  writer.format = opaque_ ? PNG_FORMAT_BGR : PNG_FORMAT_BGRA;
  writer.flags = PNG_IMAGE_FLAG_FAST;

  // PNG stores colours that are not premultiplied.
  Bytes rows;
  rows.reserve(PNG_IMAGE_SIZE(writer));
  for (std::size_t y = 0; y < height_; ++y) {
    const std::uint8_t* p = pixels_.get() + y * bytesPerRow_;
    for (std::size_t x = 0; x < width_; ++x, p += 4) {
      const unsigned alpha = opaque_ ? 255 : p[3];
      for (int c = 0; c < 3; ++c) {
        rows.push_back(
            alpha == 0 ? 0 : static_cast<std::uint8_t>(std::min(255u, (p[c] * 255 + alpha / 2) / alpha)));
      }
      if (!opaque_) rows.push_back(static_cast<std::uint8_t>(alpha));
    }
  }
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(writer);
  const std::unique_ptr<void, Handles> output(std::malloc(size));
  if (!output || !png_image_write_to_memory(&writer, output.get(), &size, 0, rows.data(), 0, nullptr))
    return {};
  const auto* begin = static_cast<const std::uint8_t*>(output.get());
  return {begin, begin + size};
}

std::optional<Bytes> CGImage::jpeg(double quality) const {
  const int percent = static_cast<int>(std::lround(std::clamp(quality > 0 ? quality * 100 : 0, 1.0, 100.0)));
  const TJSAMP subsampling = quality >= 0.9 ? TJSAMP_444 : TJSAMP_420;
  const int width = static_cast<int>(width_), height = static_cast<int>(height_);
  const TurboJPEG encoder(tjInitCompress());
  const unsigned long worst = tjBufSize(width, height, subsampling);
  if (!encoder.handle || worst > INT_MAX) return std::nullopt;
  // Reserving for the worst case costs only address space; a buffer that grows would be copied.
  std::unique_ptr<unsigned char, Handles> output(tjAlloc(static_cast<int>(worst)));
  unsigned char* begin = output.get();
  unsigned long size = worst;
  if (!begin || tjCompress2(encoder.handle, pixels_.get(), width, static_cast<int>(bytesPerRow_), height,
                            TJPF_BGRX, &begin, &size, subsampling, percent, TJFLAG_NOREALLOC) != 0) {
    return std::nullopt;
  }
  return Bytes(begin, begin + size);
}

}  // namespace ios
