#pragma once

#include <string_view>

namespace companion {

/// The style sheet of all pages.
extern const std::string_view kStyle;

}  // namespace companion
