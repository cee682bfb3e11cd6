#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Report.h"
#include "ReportName.h"

namespace companion {

/// The record as JSON that a person can read, its keys in the order of `recordKeys`. Invisible characters are escaped,
/// so that an editor shows the text as it is.
std::string recordJson(const Report& report);

/// When and in what form the report came.
std::string receivedJson(const Report& report, const ReportName& name);

// Reading them back. Both are empty unless the bytes are what the above wrote, or nearly so.

std::optional<Record> readRecordJson(std::span<const std::uint8_t> bytes);
/// The pasteboard's change count from `receivedJson`.
std::optional<std::int64_t> readChangeCount(std::span<const std::uint8_t> bytes);

}  // namespace companion
