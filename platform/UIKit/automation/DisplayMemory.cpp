#include "UIKit/DisplayMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ios {
namespace {

constexpr std::size_t kPixel = 4;

/// First and last pixel in which two different rows differ.
std::pair<std::size_t, std::size_t> difference(const std::uint8_t* a, const std::uint8_t* b,
                                               std::size_t width) {
  const auto differs = [&](std::size_t x) {
    return std::memcmp(a + x * kPixel, b + x * kPixel, kPixel) != 0;
  };
  std::size_t first = 0, last = width - 1;
  while (first < last && !differs(first)) ++first;
  while (last > first && !differs(last)) --last;
  return {first, last};
}

}  // namespace

std::shared_ptr<DisplayMemory> DisplayMemory::make(std::size_t pixels, std::string& problem) {
  FileDescriptor descriptor(::memfd_create("display", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  const std::size_t size = pixels * kPixel;
  if (!descriptor || ::ftruncate(descriptor.number(), static_cast<off_t>(size)) != 0 ||
      ::fcntl(descriptor.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
    problem = std::string("no memory for the display: ") + std::strerror(errno);
    return nullptr;
  }
  return map(std::move(descriptor), size, problem);
}

std::shared_ptr<DisplayMemory> DisplayMemory::adopt(FileDescriptor descriptor, std::string& problem) {
  struct stat facts {};
  if (::fstat(descriptor.number(), &facts) != 0 || facts.st_size <= 0) {
    problem = "the display's memory is missing";
    return nullptr;
  }
  return map(std::move(descriptor), static_cast<std::size_t>(facts.st_size), problem);
}

std::shared_ptr<DisplayMemory> DisplayMemory::map(FileDescriptor descriptor, std::size_t size,
                                                  std::string& problem) {
  void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor.number(), 0);
  if (memory == MAP_FAILED) {
    problem = std::string("the display's memory cannot be mapped: ") + std::strerror(errno);
    return nullptr;
  }
  return std::shared_ptr<DisplayMemory>(
      new DisplayMemory(std::move(descriptor), static_cast<std::uint8_t*>(memory), size));
}

DisplayMemory::~DisplayMemory() {
  ::munmap(pixels_, size_);
}

DisplayMemory::Change DisplayMemory::show(const CGImage& image) {
  const std::size_t stride = image.width() * kPixel;
  if (image.width() == 0 || image.height() == 0 || stride * image.height() > size_) return {};
  std::size_t left = image.width(), right = 0, top = image.height(), bottom = 0;
  for (std::size_t y = 0; y < image.height(); ++y) {
    const std::uint8_t* const from = image.pixels() + y * image.bytesPerRow();
    std::uint8_t* const to = pixels_ + y * stride;
    if (std::memcmp(from, to, stride) == 0) continue;
    const auto [first, last] = difference(from, to, image.width());
    std::memcpy(to + first * kPixel, from + first * kPixel, (last - first + 1) * kPixel);
    left = std::min(left, first);
    right = std::max(right, last + 1);
    top = std::min(top, y);
    bottom = y + 1;
  }
  if (bottom == 0) return {};
  return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
          static_cast<int>(bottom - top)};
}

}  // namespace ios
