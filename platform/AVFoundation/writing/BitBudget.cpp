#include "AVFoundation/Private/BitBudget.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace ios {
namespace {

// What a movie that needs more than its rate has spent after kSpan seconds, in seconds of the rate: the credit, and an
// income reduced by it. With the deepest debt below, the total is 1.05 times the rate.
constexpr double kSpan = 30, kSpent = 29;
constexpr double kMostSaved = 9;
// The largest first picture, in seconds of the rate.
constexpr double kLargestStart = 3;
// The most quantiser steps that it takes to halve the size of a picture.
constexpr double kOctave = 6;

struct Level {
  double balance;  // in seconds of the rate
  double quantiser;
};
// Coarse quantisation saves little on text, so it is kept sharp for as long as possible: only moving photographs, films
// and noise get into debt.
constexpr Level kLevels[] = {
    {-2.5, BitBudget::kCoarsest}, {-1.5, 37}, {0, 36}, {2, 34}, {3.5, BitBudget::kSharp}};
// A first picture of noise predicts following ones of the same size: how many steps coarser they begin, and how many of
// these steps are given back per second.
constexpr double kWarning = 8, kForgotten = 2;

}  // namespace

double BitBudget::quantiser(double seconds) {
  const double income = seconds < kSpan ? (kSpent - kCredit) / kSpan : 1;
  floor_ = std::max(floor_ - kForgotten * (seconds - seconds_), kSharp);
  balance_ = std::min(balance_ + income * rate_ * (seconds - seconds_), kMostSaved * rate_);
  seconds_ = seconds;
  const double balance = balance_ / rate_;
  const auto* upper = std::find_if(std::begin(kLevels), std::end(kLevels),
                                   [&](const Level& level) { return level.balance >= balance; });
  if (upper == std::begin(kLevels)) return kCoarsest;
  if (upper == std::end(kLevels)) return floor_;
  const Level& lower = upper[-1];
  return std::max(floor_, std::lerp(lower.quantiser, upper->quantiser,
                                    (balance - lower.balance) / (upper->balance - lower.balance)));
}

std::optional<double> BitBudget::coarserStart(std::size_t bytes, double quantiser) {
  const double bits = static_cast<double>(bytes) * 8, most = kLargestStart * rate_;
  if (bits <= most || quantiser >= kCoarsest) return std::nullopt;
  const double next = std::min(std::ceil(quantiser + kOctave * std::log2(bits / most)), kCoarsest);
  floor_ = std::min(next + kWarning, kCoarsest);
  return next;
}

bool BitBudget::affordsRefinement() const {
  return balance_ - keyBits_ > std::rbegin(kLevels)->balance * rate_;
}

void BitBudget::spend(std::size_t bytes, bool key) {
  const double bits = static_cast<double>(bytes) * 8;
  balance_ -= bits;
  if (key) keyBits_ = bits;
}

}  // namespace ios
