#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/flow/Command.h"

namespace simulator {

struct FlowEnvironment;

/// A flow as read from its file.
struct Flow {
  std::string appId;
  std::string name;
  /// If it was recorded: the phone's time when that began. Its steps take exactly the time that they say, then.
  std::optional<std::chrono::nanoseconds> recordedAt;
  std::vector<std::string> tags;
  std::map<std::string, std::string>
      otherKeys;  // of the header, as written; those that are not texts are empty
  std::shared_ptr<const FlowEnvironment> environment;
  std::vector<Step> onStart, steps, onComplete;
};

/// Reads a flow and the flows that it runs; "-" is standard input. `variables` stand above those of the flow's `env`.
/// Empty when one cannot be read or is not a flow; `problem` then says where and why: "tour.yaml:12:3: tapOn: …".
std::optional<Flow> readFlow(const std::filesystem::path& file, std::string& problem,
                             const std::map<std::string, std::string>& variables = {});

}  // namespace simulator
