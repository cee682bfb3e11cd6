#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "simulator/flow/Flow.h"
#include "simulator/flow/YamlFields.h"
#include "simulator/phone/TextPattern.h"

namespace simulator {

constexpr int kLongestMilliseconds = 3'600'000;
constexpr double kLongestSeconds = 86'400;

/// To the nearest nanosecond: 1.234 is 1234 ms, which a conversion that cuts off makes one nanosecond less of.
std::chrono::nanoseconds fromSeconds(double seconds);

/// A text that must not be empty.
std::string text(const YamlValue& value);
/// A text to look for.
TextPattern pattern(const YamlValue& value);
std::string bundleIdentifier(const YamlValue& value);
/// One of a few words, whatever its case; `expected` tells them: "UP, DOWN, LEFT or RIGHT".
template <class Meaning>
const Meaning& oneOf(const YamlValue& value, const std::map<std::string, Meaning>& words,
                     const std::string& expected) {
  const auto found = words.find(lowerCase(value.text()));
  if (found == words.end()) value.fail("expected " + expected + ", not \"" + value.text() + "\"");
  return found->second;
}
/// The value of a command that is written by itself, or under `key` of a map with that one key.
YamlValue single(const YamlValue& value, const std::string& key);
/// For a command that takes no values.
void expectNothing(const YamlValue& value);

/// Reads one flow and those that it runs. Throws a FlowError at the first slip.
class FlowReader {
 public:
  Flow read(const std::filesystem::path& file);
  /// As `read`, of a file that the flow being read names at `value`.
  Flow readInner(const YamlValue& value, const std::string& file);
  std::vector<Step> steps(const YamlValue& list);
  /// The application of the flow being read.
  const std::string& appId() const { return appId_; }

 private:
  Step step(const YamlValue& item);

  std::string appId_;
  std::vector<std::filesystem::path> open_;  // the flow being read, behind the flows that run it
  std::size_t depth_ = 0, count_ = 0;
};

}  // namespace simulator
