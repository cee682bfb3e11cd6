#pragma once

#include <string>

namespace ios {

/// What the system itself says, in the first of the user's languages that it speaks; English is the last resort, and
/// what it is asked by: "Back", "More", "Don't Allow", "OK". Main thread.
std::string systemText(const std::string& english);

/// The same for a text with one "%@", which `name` takes the place of.
std::string systemText(const std::string& english, const std::string& name);

}  // namespace ios
