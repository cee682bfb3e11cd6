#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>

#include "CoreVideo/CVPixelBuffer.h"
#include "ObjectiveC/Mutex.h"

namespace ios {

/// Memory for pixels, aligned for vector instructions.
struct PixelMemoryFree {
  void operator()(std::uint8_t* memory) const { std::free(memory); }
};
using PixelMemory = std::unique_ptr<std::uint8_t[], PixelMemoryFree>;

/// The shape of a buffer, as attributes ask for it.
struct PixelLayout {
  CVPixelSize size;
  std::size_t bytesPerRow = 0;
  std::size_t byteCount() const { return bytesPerRow * size.height; }

  /// The row alignment is taken from `attributes`. False, with `problem` set, for one that cannot be met.
  static bool make(const CVPixelSize& size, const NSDictionary& attributes, PixelLayout& layout,
                   CVReturn& problem);
  /// Zeroed; null when there is no memory.
  PixelMemory allocate() const;
};

class CVPixelBuffer {
 public:
  using Recycle = std::function<void(PixelMemory)>;
  /// `recycle`, if given, gets the memory when the buffer goes.
  CVPixelBuffer(const PixelLayout& layout, PixelMemory memory, Recycle recycle = nullptr);
  ~CVPixelBuffer();
  CVPixelBuffer(const CVPixelBuffer&) = delete;

  const PixelLayout& layout() const { return layout_; }
  void lock();
  bool unlock();
  void* address() const;
  /// For the platform's own readers, who hold no lock.
  const std::uint8_t* pixels() const { return memory_.get(); }
  void setGeneration(std::uint64_t generation);
  std::uint64_t generation() const;

 private:
  const PixelLayout layout_;
  PixelMemory memory_;
  const Recycle recycle_;
  mutable Mutex mutex_;
  std::size_t locks_ IOS_GUARDED_BY(mutex_) = 0;
  std::uint64_t generation_ IOS_GUARDED_BY(mutex_) = 0;
};

/// A number of a property list, whatever its kind; `missing` when there is none, NaN for what is no number.
double numberAt(const NSDictionary& values, const std::string& key, double missing);

}  // namespace ios
