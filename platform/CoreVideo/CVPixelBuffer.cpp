#include "CoreVideo/CVPixelBuffer.h"

#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "CoreVideo/CVPixelBuffer+Private.h"

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

double numberAt(const NSDictionary& values, const std::string& key, double missing) {
  const auto found = values.find(key);
  if (found == values.end()) return missing;
  if (const auto* integer = found->second.integer()) return static_cast<double>(*integer);
  if (const auto* real = found->second.real()) return *real;
  return std::numeric_limits<double>::quiet_NaN();
}

std::optional<CVPixelSize> CVPixelSize::rounded(double width, double height) {
  const auto columns = roundedSide(width), rows = roundedSide(height);
  if (!columns || !rows) return std::nullopt;
  return CVPixelSize{*columns, *rows};
}

bool PixelLayout::make(const CVPixelSize& size, const NSDictionary& attributes, PixelLayout& layout,
                       CVReturn& problem) {
  if (!CVPixelSize::rounded(static_cast<double>(size.width), static_cast<double>(size.height))) {
    problem = kCVReturnInvalidSize;
    return false;
  }
  const double alignment = numberAt(attributes, kCVPixelBufferBytesPerRowAlignmentKey, kMemoryAlignment);
  if (!(alignment > 0 && alignment <= kLargestAlignment)) {
    problem = kCVReturnInvalidPixelBufferAttributes;
    return false;
  }
  const std::size_t step = roundedUp(static_cast<std::size_t>(std::ceil(alignment)), kBytesPerPixel);
  layout = {size, roundedUp(size.width * kBytesPerPixel, step)};
  return true;
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

void CVPixelBuffer::setGeneration(std::uint64_t generation) {
  MutexLock guard(mutex_);
  generation_ = generation;
}

std::uint64_t CVPixelBuffer::generation() const {
  MutexLock guard(mutex_);
  return generation_;
}

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType pixelFormat,
                             const NSDictionary& attributes, CVPixelBufferRef& buffer) {
  buffer = nullptr;
  if (pixelFormat != kCVPixelFormatType_32BGRA) return kCVReturnInvalidPixelFormat;
  PixelLayout layout;
  CVReturn problem = kCVReturnSuccess;
  if (!PixelLayout::make({width, height}, attributes, layout, problem)) return problem;
  PixelMemory memory = layout.allocate();
  if (!memory) return kCVReturnAllocationFailed;
  buffer = std::make_shared<CVPixelBuffer>(layout, std::move(memory));
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

OSType CVPixelBufferGetPixelFormatType(const CVPixelBufferRef& buffer) {
  return buffer ? kCVPixelFormatType_32BGRA : 0;
}

void CVPixelBufferSetContentGeneration(const CVPixelBufferRef& buffer, std::uint64_t generation) {
  if (buffer) buffer->setGeneration(generation);
}

std::uint64_t CVPixelBufferGetContentGeneration(const CVPixelBufferRef& buffer) {
  return buffer ? buffer->generation() : 0;
}

}  // namespace ios
