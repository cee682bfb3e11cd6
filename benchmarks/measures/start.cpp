// What the library's start costs in a process that has just been launched, and whether it opens anything.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>

#include "BenchmarkPhone.h"
#include "Tellvane/Tellvane.h"

namespace {

std::atomic<bool> counting = false;
std::atomic<int> files = 0, sockets = 0, threads = 0;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
void count(std::atomic<int>& what) {
  if (counting) ++what;
}

}  // namespace

// These intercept the calls of every image of the process.
extern "C" {

int open(const char* path, int flags, ...) {
  count(files);
  va_list rest;
  va_start(rest, flags);
  const auto mode = va_arg(rest, mode_t);
  va_end(rest);
  return next<int(const char*, int, mode_t)>("open")(path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  count(files);
  va_list rest;
  va_start(rest, flags);
  const auto mode = va_arg(rest, mode_t);
  va_end(rest);
  return next<int(const char*, int, mode_t)>("open64")(path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  count(files);
  va_list rest;
  va_start(rest, flags);
  const auto mode = va_arg(rest, mode_t);
  va_end(rest);
  return next<int(int, const char*, int, mode_t)>("openat")(folder, path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) {
  count(files);
  return next<FILE*(const char*, const char*)>("fopen")(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
  count(files);
  return next<FILE*(const char*, const char*)>("fopen64")(path, mode);
}
int socket(int domain, int type, int protocol) noexcept {
  count(sockets);
  return next<int(int, int, int)>("socket")(domain, type, protocol);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                   void* argument) {
  count(threads);
  return next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create")(
      thread, attributes, function, argument);
}

}  // extern "C"

int main() {
  BenchmarkPhone phone;
  counting = true;
  const auto before = std::chrono::steady_clock::now();
  tellvane::Tellvane::instantiateSDK(true, false);
  const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - before;
  counting = false;
  std::fprintf(stderr, "microseconds %f\nfiles %d\nsockets %d\nthreads %d\n", taken.count(), files.load(),
               sockets.load(), threads.load());
}
