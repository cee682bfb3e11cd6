#pragma once

#include <string_view>

namespace simulator {

/// A file of the page, as built into the program: "index.html", "lib/touch.js". Empty if there is none.
std::string_view pageFileNamed(std::string_view name);

}  // namespace simulator
