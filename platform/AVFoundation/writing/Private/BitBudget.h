#pragma once

#include <cstddef>
#include <optional>

namespace ios {

/// Chooses how finely each picture of a movie is quantised, so that the movie keeps to a bit rate over thirty seconds
/// and yet no picture is smeared. A movie begins with a credit: its first second is as sharp as any, and the cost is
/// made up for gradually. The balance decides, not the size of the last picture, so that pictures get coarser step by
/// step. The same pictures give the same choices.
class BitBudget {
 public:
  /// Quantisers as H.264 counts them: six more double the step. Above 51 the encoder leaves out
  /// details instead.
  static constexpr double kFine = 20, kSharp = 28, kCoarsest = 69;

  explicit BitBudget(double bitsPerSecond) : rate_(bitsPerSecond), balance_(kCredit * bitsPerSecond) {}

  /// For a picture at `seconds`, not earlier than the last one.
  double quantiser(double seconds);
  /// What to encode a movie's first picture with instead, if `quantiser` takes more bytes than the movie could
  /// make up for.
  std::optional<double> coarserStart(std::size_t bytes, double quantiser);
  /// Whether an unchanged picture can be encoded finely without making those that follow coarser.
  bool affordsRefinement() const;
  /// Records the size of the newest picture.
  void spend(std::size_t bytes, bool key);

 private:
  static constexpr double kCredit = 5;  // seconds of the rate

  const double rate_;
  double balance_;      // bits
  double seconds_ = 0;  // up to which the balance counts
  double floor_ = kSharp;
  double keyBits_ = 0;  // of the last key picture
};

}  // namespace ios
