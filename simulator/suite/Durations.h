#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace simulator {

/// How long flows took when they were last played, by name.
class Durations {
 public:
  /// Nothing is known when there is no such file yet; a Refusal when it is something else.
  static Durations read(const std::filesystem::path& file);
  void set(const std::string& flow, double seconds) { seconds_[flow] = seconds; }
  /// Of a flow that was not played yet: what the others take in the middle.
  double of(const std::string& flow) const;
  std::string text() const;

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace simulator
