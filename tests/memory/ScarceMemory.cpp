#include "ScarceMemory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <thread>

namespace {

enum class Target { none, librarys, large };

std::atomic<Target> target = Target::none;
std::atomic<long> left = 0;
std::atomic<bool> failed = false;
std::atomic<std::size_t> largeBytes = 0;
const std::thread::id mainThread = std::this_thread::get_id();

// How many of the library's functions the thread is inside of: its sources are compiled to report each.
thread_local long depth = 0;

bool fails() {
  if (left.fetch_sub(1) != 0) return false;
  failed = true;
  return true;
}

bool failsNew() {
  if (target != Target::librarys) return false;
  return (depth > 0 || std::this_thread::get_id() != mainThread) && fails();
}

bool failsLarge(std::size_t bytes) {
  return target == Target::large && bytes >= largeBytes && fails();
}

void* allocate(std::size_t bytes) {
  return failsNew() ? nullptr : std::malloc(bytes ? bytes : 1);
}

}  // namespace

namespace testing_support {

void ScarceMemory::failLibrarys(long skipped) {
  failed = false;
  left = skipped;
  target = Target::librarys;
}

void ScarceMemory::failLarge(long skipped, std::size_t bytes) {
  failed = false;
  left = skipped;
  largeBytes = bytes;
  target = Target::large;
}

bool ScarceMemory::end() {
  target = Target::none;
  return failed;
}

long ScarceMemory::failEach(const std::function<void(long)>& begin, const std::function<void()>& work,
                            const std::function<void()>& check) {
  const char* asked = std::getenv("TELLVANE_EVERY_ALLOCATION");
  const long step = asked ? 1 : 31;
  for (long skipped = 0;; skipped += step) {
    SCOPED_TRACE(testing::Message() << "allocation " << skipped);
    begin(skipped);
    work();
    if (!end()) return skipped;
    check();
    if (testing::Test::HasFatalFailure()) return skipped;
  }
}

}  // namespace testing_support

extern "C" {

void __cyg_profile_func_enter(void*, void*) {
  ++depth;
}
void __cyg_profile_func_exit(void*, void*) {
  --depth;
}
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" {

// The C library's own, under the names by which it lets others replace the usual ones.
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);

void* malloc(std::size_t bytes) {
  if (!failsLarge(bytes)) return __libc_malloc(bytes);
  errno = ENOMEM;
  return nullptr;
}
void* calloc(std::size_t count, std::size_t bytes) {
  if (!failsLarge(count * bytes)) return __libc_calloc(count, bytes);
  errno = ENOMEM;
  return nullptr;
}
void* realloc(void* memory, std::size_t bytes) {
  if (!failsLarge(bytes)) return __libc_realloc(memory, bytes);
  errno = ENOMEM;
  return nullptr;
}
void* memalign(std::size_t alignment, std::size_t bytes) {
  if (!failsLarge(bytes)) return __libc_memalign(alignment, bytes);
  errno = ENOMEM;
  return nullptr;
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
  return memalign(alignment, bytes);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t bytes) {
  void* made = memalign(alignment, bytes);
  if (!made) return ENOMEM;
  *memory = made;
  return 0;
}
}
#endif

void* operator new(std::size_t bytes) {
  if (void* memory = allocate(bytes)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
