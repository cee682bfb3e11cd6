#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <variant>

#include "Report.h"

namespace companion {

/// Why a hand-off was turned away: one line that is safe to print, whatever was handed over.
struct Refusal {
  std::string reason;
};

using Handoff = std::variant<Report, Refusal>;

/// Reads what lies on the pasteboard, and trusts nothing: a report comes out only if there is exactly
/// one item, of exactly the known types, with exactly the known strings in bounds, and an image that decodes.
/// The file stays as it is.
Handoff readHandoff(const std::filesystem::path& pasteboardFile);

/// The same for the bytes of the file.
Handoff checkHandoff(std::span<const std::uint8_t> pasteboard);

}  // namespace companion
