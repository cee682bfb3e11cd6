#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/flow/Command.h"

namespace simulator {

/// A flow as read from its file.
struct Flow {
  std::string appId;
  std::string name;
  /// If it was recorded: the phone's time when that began. Its steps take exactly the time that they say, then.
  std::optional<std::chrono::nanoseconds> recordedAt;
  std::vector<Step> steps;
};

/// Reads a flow and the flows that it runs; "-" is standard input. Empty when one cannot be read or is not a
/// flow; `problem` then says where and why: "tour.yaml:12: tapOn: …".
std::optional<Flow> readFlow(const std::filesystem::path& file, std::string& problem);

}  // namespace simulator
