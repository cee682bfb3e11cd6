#include "DeviceClock/Ordering.h"

#include <cstdlib>

namespace ios {

std::uint64_t orderingSeed() {
  static const std::uint64_t seed = [] {
    const char* text = std::getenv("IOS_SEED");
    return text ? std::strtoull(text, nullptr, 10) : 0;
  }();
  return seed;
}

std::uint64_t shuffled(std::uint64_t n, std::uint64_t seed) {
  // SplitMix64: each step can be undone, so that no two numbers become the same.
  constexpr std::uint64_t kGolden = 0x9e3779b97f4a7c15;
  std::uint64_t mixed = n + seed * kGolden;
  mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
  mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
  return mixed ^ (mixed >> 31);
}

}  // namespace ios
