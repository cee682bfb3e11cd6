#pragma once

#include <cstdint>

namespace ios {

/// What decides where the device leaves an order open: among events of one deadline, among workers that are ready.
/// Without IOS_SEED in the environment, or with 0, it is the order in which they came. Any thread.
std::uint64_t orderingSeed();
/// The n-th of distinct numbers, which seem random; another row of them for each seed.
std::uint64_t shuffled(std::uint64_t n, std::uint64_t seed);

}  // namespace ios
