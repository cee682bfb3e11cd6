#include "AllocationCount.h"

#include <atomic>
#include <cstddef>

namespace {
std::atomic<long> blocks = 0, large = 0;
std::atomic<std::size_t> largeSize = static_cast<std::size_t>(-1);

void* counted(void* block, std::size_t size) {
  if (block) ++blocks;
  if (size >= largeSize) ++large;
  return block;
}
}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

// These serve the allocations of every image of the process.
void* malloc(std::size_t size) {
  return counted(__libc_malloc(size), size);
}
void* calloc(std::size_t count, std::size_t size) {
  return counted(__libc_calloc(count, size), count * size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size), size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size), size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = counted(__libc_memalign(alignment, size), size);
  return *block ? 0 : 12;
}
void* realloc(void* block, std::size_t size) {
  if (!block) return malloc(size);
  if (size >= largeSize) ++large;
  void* moved = __libc_realloc(block, size);
  if (!moved && size == 0) --blocks;
  return moved;
}
void free(void* block) {
  if (block) --blocks;
  __libc_free(block);
}

}  // extern "C"

long liveBlocks() {
  return blocks;
}

void countAllocationsOf(std::size_t size) {
  large = 0;
  largeSize = size;
}

long countedAllocations() {
  return large;
}
