#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/flow/Command.h"
#include "simulator/flow/YamlFields.h"

namespace simulator {

/// How a step is written.
struct StepSource {
  const CommandKind* kind = nullptr;
  YamlValue value;
  std::optional<YamlValue> label, optional;
  bool isOpen = false;  // to be read again when it is played
};

/// The texts that a flow's expressions can name.
struct FlowEnvironment {
  std::shared_ptr<const FlowContext> context;
  std::vector<std::pair<std::string, YamlValue>> values;  // in the file's order
  Variables given;                                        // by the command line
};

}  // namespace simulator
