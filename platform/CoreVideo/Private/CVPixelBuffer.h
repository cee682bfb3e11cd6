#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>

#include "Base/Mutex.h"
#include "Base/Result.h"
#include "CoreVideo/CVPixelBuffer.h"

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

  /// The row alignment is taken from `attributes`. Fails for a size or an alignment that cannot be met.
  static Result<PixelLayout, CVReturn> make(const CVPixelSize& size, const NSDictionary& attributes);
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

 private:
  const PixelLayout layout_;
  PixelMemory memory_;
  const Recycle recycle_;
  mutable Mutex mutex_;
  std::size_t locks_ IOS_GUARDED_BY(mutex_) = 0;
};

}  // namespace ios
