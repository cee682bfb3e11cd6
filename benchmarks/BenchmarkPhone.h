#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "UIKit/UIWindow.h"

/// A phone, by default an iPhone 6 in virtual time, on a device folder that is deleted with it. A host application runs
/// on it, showing texts and colours. One per process.
class BenchmarkPhone {
 public:
  enum class Time { virtual_, real };
  explicit BenchmarkPhone(Time time = Time::virtual_, const std::string& profile = "iPhone 6");
  /// The process's phone in virtual time, for benchmarks that need no other.
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
