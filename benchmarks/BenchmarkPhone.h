#pragma once

#include <filesystem>
#include <memory>

#include "UIKit/UIWindow.h"

/// A phone in virtual time, 375 × 667 points at scale 2, on a folder of its own that goes with it; a host
/// application is launched on it, with a screen that has texts and colours on it. One a process.
class BenchmarkPhone {
 public:
  BenchmarkPhone();
  ~BenchmarkPhone();
  BenchmarkPhone(const BenchmarkPhone&) = delete;
  BenchmarkPhone& operator=(const BenchmarkPhone&) = delete;

 private:
  std::filesystem::path folder_;
  std::shared_ptr<ios::UIWindow> window_;
};
