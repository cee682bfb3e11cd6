#include "simulator/suite/Durations.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <vector>

#include "simulator/live/Json.h"
#include "simulator/suite/FlowSuite.h"

namespace simulator {

namespace fs = std::filesystem;

Durations Durations::read(const fs::path& file) {
  Durations durations;
  std::ifstream stream(file);
  if (!stream) return durations;
  std::stringstream text;
  text << stream.rdbuf();
  const auto members = readJson(text.str());
  if (!members) throw Refusal(Exit::refused, file.string() + " is no file of durations; remove it.");
  for (const auto& [name, value] : *members) {
    if (const auto seconds = numberIn(&value)) durations.seconds_[name] = *seconds;
  }
  return durations;
}

double Durations::of(const std::string& flow) const {
  if (const auto known = seconds_.find(flow); known != seconds_.end()) return known->second;
  if (seconds_.empty()) return 1;
  double sum = 0;
  for (const auto& [name, seconds] : seconds_) sum += seconds;
  return sum / static_cast<double>(seconds_.size());
}

std::string Durations::text() const {
  ios::NSDictionary members;
  for (const auto& [name, seconds] : seconds_) members[name] = std::round(seconds * 10) / 10;
  return jsonText(members) + "\n";
}

std::vector<fs::path> partOf(const std::vector<fs::path>& flows, const std::string& shard,
                             const fs::path& file) {
  if (shard.empty()) return flows;
  unsigned which = 0, count = 0;
  char rest = 0;
  if (std::sscanf(shard.c_str(), "%u/%u%c", &which, &count, &rest) != 2 || which < 1 || which > count ||
      count > 1000)
    throw Refusal(Exit::usage, "--shard \"" + shard + "\" is no part; expected K/N, such as 1/3");
  const Durations durations = file.empty() ? Durations() : Durations::read(file);
  std::vector<fs::path> longestFirst = flows;
  std::stable_sort(longestFirst.begin(), longestFirst.end(), [&](const fs::path& a, const fs::path& b) {
    return durations.of(a.stem()) > durations.of(b.stem());
  });
  // Each goes to whoever has the least to do so far.
  std::vector<double> loads(count, 0);
  std::vector<fs::path> part;
  for (const fs::path& flow : longestFirst) {
    const auto least = std::min_element(loads.begin(), loads.end());
    *least += durations.of(flow.stem());
    if (least - loads.begin() == static_cast<std::ptrdiff_t>(which) - 1) part.push_back(flow);
  }
  return part;
}

}  // namespace simulator
