#pragma once

#include <cstddef>
#include <functional>

namespace testing_support {

/// Lets one allocation of the process fail.
class ScarceMemory {
 public:
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  static constexpr bool kFailsLarge = false;  // the sanitizers have these functions for themselves
#else
  static constexpr bool kFailsLarge = true;
#endif
  /// The next but `skipped` of those with `operator new` that the library makes, itself or through the platform, or
  /// that are made off the main thread. What the host and the platform's main loop do on their own is left alone.
  static void failLibrarys(long skipped);
  /// The next but `skipped` of those of at least so many bytes, whoever makes them and however: pictures, encoders,
  /// buffers.
  static void failLarge(long skipped, std::size_t bytes);
  /// Lets all succeed again; whether one had failed.
  static bool end();
  /// Does `work` over and over, each time with another allocation failing, until none is left to fail; `begin` is
  /// told how many to skip. How many there were. Every 31st alone is let fail unless TELLVANE_EVERY_ALLOCATION is set:
  /// all of them take minutes.
  static long failEach(const std::function<void(long skipped)>& begin, const std::function<void()>& work,
                       const std::function<void()>& check);
};

}  // namespace testing_support
