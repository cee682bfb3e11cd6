#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "Device/Input.h"

namespace simulator {

/// What a page sends: fingers, the number of a picture it has shown, or a command with an identifier for its
/// answer.
struct TouchMessage {
  std::uint32_t number = 0;
  std::vector<ios::TouchSample> samples;
};
struct ShownMessage {
  std::uint32_t sequence = 0;
};
struct CommandMessage {
  std::int64_t id = 0;
  ios::NSDictionary members;  // "command" among them, "id" not
};
using ViewerMessage = std::variant<TouchMessage, ShownMessage, CommandMessage>;

/// Empty when `text` is none of the three.
std::optional<ViewerMessage> readViewerMessage(std::string_view text);

}  // namespace simulator
