#include "CoreVideo/CVPixelBuffer.h"

#include <cmath>
#include <new>
#include <utility>

#include "CoreVideo/Private/CVPixelBuffer.h"

namespace ios {
namespace {

constexpr std::size_t kBytesPerPixel = 4;
constexpr double kLongestSide = 16384;
// A row of the longest side, doubled: an alignment beyond that asks for more padding than picture.
constexpr double kLargestAlignment = 2 * kLongestSide * kBytesPerPixel;
constexpr std::size_t kMemoryAlignment = 64;

std::optional<std::size_t> roundedSide(double side) {
  const double whole = std::round(side);
  if (!(whole >= 1 && whole <= kLongestSide)) return std::nullopt;
  return static_cast<std::size_t>(whole);
}

std::size_t roundedUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

}  // namespace

std::optional<CVPixelSize> CVPixelSize::rounded(double width, double height) {
  const auto columns = roundedSide(width), rows = roundedSide(height);
  if (!columns || !rows) return std::nullopt;
  return CVPixelSize{*columns, *rows};
}

Result<PixelLayout, CVReturn> PixelLayout::make(const CVPixelSize& size, const NSDictionary& attributes) {
  if (!CVPixelSize::rounded(static_cast<double>(size.width), static_cast<double>(size.height)))
    return failure(CVReturn{kCVReturnInvalidSize});
  const double alignment = numberAt(attributes, kCVPixelBufferBytesPerRowAlignmentKey, kMemoryAlignment);
  if (!(alignment > 0 && alignment <= kLargestAlignment))
    return failure(CVReturn{kCVReturnInvalidPixelBufferAttributes});
  const std::size_t step = roundedUp(static_cast<std::size_t>(std::ceil(alignment)), kBytesPerPixel);
  return PixelLayout{size, roundedUp(size.width * kBytesPerPixel, step)};
}

PixelMemory PixelLayout::allocate() const {
  auto* memory = static_cast<std::uint8_t*>(
      std::aligned_alloc(kMemoryAlignment, roundedUp(byteCount(), kMemoryAlignment)));
  if (memory) std::fill_n(memory, byteCount(), std::uint8_t{0});
  return PixelMemory(memory);
}

CVPixelBuffer::CVPixelBuffer(const PixelLayout& layout, PixelMemory memory, Recycle recycle)
    : layout_(layout), memory_(std::move(memory)), recycle_(std::move(recycle)) {}

CVPixelBuffer::~CVPixelBuffer() {
  if (recycle_) recycle_(std::move(memory_));
}

void CVPixelBuffer::lock() {
  MutexLock guard(mutex_);
  ++locks_;
}

bool CVPixelBuffer::unlock() {
  MutexLock guard(mutex_);
  if (locks_ == 0) return false;
  --locks_;
  return true;
}

void* CVPixelBuffer::address() const {
  MutexLock guard(mutex_);
  return locks_ > 0 ? memory_.get() : nullptr;
}

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType pixelFormat,
                             const NSDictionary& attributes, CVPixelBufferRef& buffer) {
  buffer = nullptr;
  if (pixelFormat != kCVPixelFormatType_32BGRA) return kCVReturnInvalidPixelFormat;
  const auto layout = PixelLayout::make({width, height}, attributes);
  if (!layout) return layout.error();
  PixelMemory memory = layout->allocate();
  if (!memory) return kCVReturnAllocationFailed;
  buffer = std::make_shared<CVPixelBuffer>(*layout, std::move(memory));
  return kCVReturnSuccess;
}

CVReturn CVPixelBufferLockBaseAddress(const CVPixelBufferRef& buffer, CVPixelBufferLockFlags) {
  if (!buffer) return kCVReturnInvalidArgument;
  buffer->lock();
  return kCVReturnSuccess;
}

CVReturn CVPixelBufferUnlockBaseAddress(const CVPixelBufferRef& buffer, CVPixelBufferLockFlags) {
  return buffer && buffer->unlock() ? kCVReturnSuccess : kCVReturnInvalidArgument;
}

void* CVPixelBufferGetBaseAddress(const CVPixelBufferRef& buffer) {
  return buffer ? buffer->address() : nullptr;
}

std::size_t CVPixelBufferGetWidth(const CVPixelBufferRef& buffer) {
  return buffer ? buffer->layout().size.width : 0;
}

std::size_t CVPixelBufferGetHeight(const CVPixelBufferRef& buffer) {
  return buffer ? buffer->layout().size.height : 0;
}

std::size_t CVPixelBufferGetBytesPerRow(const CVPixelBufferRef& buffer) {
  return buffer ? buffer->layout().bytesPerRow : 0;
}

}  // namespace ios
