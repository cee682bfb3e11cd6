// Heap blocks before and after an hour of a phone that lies idle, while the library puts its recognisers on
// anew every ten seconds.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "BenchmarkPhone.h"
#include "DeviceClock/Clock.h"
#include "front/Tellvane.h"

namespace {
std::atomic<long> liveBlocks = 0;

void* counted(void* block) {
  if (block) ++liveBlocks;
  return block;
}
}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

// The process's allocations come here, whichever image makes them.
void* malloc(std::size_t size) {
  return counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
  return counted(__libc_calloc(count, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size));
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = counted(__libc_memalign(alignment, size));
  return *block ? 0 : 12;
}
void* realloc(void* block, std::size_t size) {
  if (!block) return malloc(size);
  void* moved = __libc_realloc(block, size);
  if (!moved && size == 0) --liveBlocks;
  return moved;
}
void free(void* block) {
  if (block) --liveBlocks;
  __libc_free(block);
}

}  // extern "C"

int main() {
  BenchmarkPhone phone;
  tellvane::Tellvane::instantiateSDK(true, false);
  ios::Clock::shared().runFor(std::chrono::minutes(5));  // all that is made once has been made
  const long before = liveBlocks;
  ios::Clock::shared().runFor(std::chrono::hours(1));
  const long growth = liveBlocks - before;
  std::fprintf(stderr, "blocks %ld\ngrowth %ld\n", before, growth);
}
