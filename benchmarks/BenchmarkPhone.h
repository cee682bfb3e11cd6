#pragma once

#include <filesystem>
#include <memory>

#include "UIKit/UIWindow.h"

/// A phone in virtual time (unless asked otherwise), 375 × 667 points at scale 2, on a folder of its own that
/// goes with it; a host application is launched on it, with a screen that has texts and colours on it. One a
/// process.
class BenchmarkPhone {
 public:
  enum class Time { virtual_, real };
  explicit BenchmarkPhone(Time time = Time::virtual_);
  /// The one of a process in virtual time, for those that need no other.
  static BenchmarkPhone& shared();
  ~BenchmarkPhone();
  BenchmarkPhone(const BenchmarkPhone&) = delete;
  const std::shared_ptr<ios::UIWindow>& window() const { return window_; }
  const std::filesystem::path& folder() const { return folder_; }
  BenchmarkPhone& operator=(const BenchmarkPhone&) = delete;

 private:
  std::filesystem::path folder_;
  std::shared_ptr<ios::UIWindow> window_;
};
