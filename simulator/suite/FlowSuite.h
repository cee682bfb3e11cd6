#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/remote/Refusal.h"

namespace simulator {

/// Several flows, each on a phone of its own in a process of its own, some of them at once.
struct FlowSuite {
  std::string program;               // that plays one flow: "…/simulator"
  std::vector<std::string> options;  // it gets for every flow
  std::filesystem::path out;         // a folder for each flow, and a file with what it said
  int jobs = 1;
  std::filesystem::path junit, durations;
  std::uint64_t seed = 0;

  /// How one of them went.
  struct Outcome {
    std::string name;
    double seconds = 0;
    int status = 0;
    std::string output = {}, problem = {};  // all that it said, and the last line
  };
  /// Plays them, and says on standard output how each went. Interrupted is thrown once all have ended.
  Exit play(const std::vector<std::filesystem::path>& flows) const;
};

/// The flows in a folder, by name, without those that others run ("login.part.yaml"); or the one file. A Refusal when
/// there are none.
std::vector<std::filesystem::path> flowsAt(const std::filesystem::path& place);

/// A part of the flows, as "2/3" says: parts last about equally long, as far as their durations are known, and
/// everybody who has the same flows and durations gets the same parts. A Refusal when `shard` makes no sense.
std::vector<std::filesystem::path> partOf(const std::vector<std::filesystem::path>& flows,
                                          const std::string& shard, const std::filesystem::path& durations);

/// What continuous integration reads.
std::string junitReport(const std::vector<FlowSuite::Outcome>& outcomes);

}  // namespace simulator
