#include "CoreVideo/CVPixelBufferPool.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Base/Mutex.h"
#include "CoreVideo/Private/CVPixelBuffer.h"

namespace ios {
namespace {

struct Fault {
  Mutex mutex;
  std::function<CVReturn()> ask IOS_GUARDED_BY(mutex);

  static Fault& shared() {
    static auto& fault = *new Fault;
    return fault;
  }
};

CVReturn refusal() {
  std::function<CVReturn()> ask;
  {
    MutexLock lock(Fault::shared().mutex);
    ask = Fault::shared().ask;
  }
  return ask ? ask() : kCVReturnSuccess;
}

}  // namespace

class CVPixelBufferPool : public std::enable_shared_from_this<CVPixelBufferPool> {
 public:
  explicit CVPixelBufferPool(const PixelLayout& layout) : layout_(layout) {}

  CVReturn take(CVPixelBufferRef& buffer) {
    if (const CVReturn refused = refusal()) return refused;
    PixelMemory memory;
    {
      MutexLock lock(mutex_);
      if (!free_.empty()) {
        memory = std::move(free_.back());
        free_.pop_back();
      }
      ++use_.inUse;
      use_.mostInUse = std::max(use_.mostInUse, use_.inUse);
      if (!memory) free_.reserve(++use_.allocated);  // so that giving back never allocates
    }
    if (!memory) memory = layout_.allocate();
    if (!memory) {
      MutexLock lock(mutex_);
      --use_.inUse;
      --use_.allocated;
      return kCVReturnAllocationFailed;
    }
    buffer = std::make_shared<CVPixelBuffer>(layout_, std::move(memory),
                                             [pool = weak_from_this()](PixelMemory returned) {
                                               if (auto self = pool.lock())
                                                 self->giveBack(std::move(returned));
                                             });
    return kCVReturnSuccess;
  }

  CVPixelBufferPoolUse use() const {
    MutexLock lock(mutex_);
    return use_;
  }

 private:
  void giveBack(PixelMemory memory) {
    MutexLock lock(mutex_);
    --use_.inUse;
    free_.push_back(std::move(memory));
  }

  const PixelLayout layout_;
  mutable Mutex mutex_;
  std::vector<PixelMemory> free_ IOS_GUARDED_BY(mutex_);
  CVPixelBufferPoolUse use_ IOS_GUARDED_BY(mutex_);
};

CVReturn CVPixelBufferPoolCreate(const NSDictionary*, const NSDictionary& pixelBufferAttributes,
                                 CVPixelBufferPoolRef& pool) {
  pool = nullptr;
  if (numberAt(pixelBufferAttributes, kCVPixelBufferPixelFormatTypeKey, 0) != kCVPixelFormatType_32BGRA)
    return kCVReturnInvalidPixelFormat;
  const auto size = CVPixelSize::rounded(numberAt(pixelBufferAttributes, kCVPixelBufferWidthKey, 0),
                                         numberAt(pixelBufferAttributes, kCVPixelBufferHeightKey, 0));
  if (!size) return kCVReturnInvalidSize;
  const auto layout = PixelLayout::make(*size, pixelBufferAttributes);
  if (!layout) return layout.error();
  pool = std::make_shared<CVPixelBufferPool>(*layout);
  return kCVReturnSuccess;
}

CVReturn CVPixelBufferPoolCreatePixelBuffer(const CVPixelBufferPoolRef& pool, CVPixelBufferRef& buffer) {
  buffer = nullptr;
  return pool ? pool->take(buffer) : kCVReturnInvalidArgument;
}

CVPixelBufferPoolUse CVPixelBufferPoolGetUse(const CVPixelBufferPoolRef& pool) {
  return pool ? pool->use() : CVPixelBufferPoolUse{};
}

void setPixelBufferFault(std::function<CVReturn()> fault) {
  MutexLock lock(Fault::shared().mutex);
  Fault::shared().ask = std::move(fault);
}

}  // namespace ios
