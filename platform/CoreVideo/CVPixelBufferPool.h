#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "CoreVideo/CVPixelBuffer.h"

namespace ios {

/// Pixel buffers of one kind whose memory is used again: a buffer's memory returns here when its last reference is
/// released, also after the pool itself is gone (it is then freed). Memory is allocated only when none is free, so
/// there are never more pieces than buffers were in use at one time. A recycled buffer still has its old pixels.
/// Any thread.
class CVPixelBufferPool;
using CVPixelBufferPoolRef = std::shared_ptr<CVPixelBufferPool>;

/// A pool of buffers with `pixelBufferAttributes`: pixel format (integer), width, height and row alignment
/// (integers or doubles). Nothing is allocated yet. `poolAttributes` may be null; they make no difference.
/// `pool` is empty after a failure: a missing or unusable size, another pixel format than 32-bit BGRA.
CVReturn CVPixelBufferPoolCreate(const NSDictionary* poolAttributes,
                                 const NSDictionary& pixelBufferAttributes, CVPixelBufferPoolRef& pool);
/// A buffer of the pool, not locked; empty after a failure.
CVReturn CVPixelBufferPoolCreatePixelBuffer(const CVPixelBufferPoolRef& pool, CVPixelBufferRef& buffer);

/// How a pool is used, for checks of memory use.
struct CVPixelBufferPoolUse {
  std::size_t inUse = 0, mostInUse = 0, allocated = 0;
};
CVPixelBufferPoolUse CVPixelBufferPoolGetUse(const CVPixelBufferPoolRef& pool);

/// Tests inject memory failures here: called before every buffer that a pool hands out; anything
/// but kCVReturnSuccess makes it fail with that. Empty: no failures. Called on the thread that
/// wants the buffer.
void setPixelBufferFault(std::function<CVReturn()> fault);

}  // namespace ios
