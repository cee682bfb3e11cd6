#pragma once

#include <string>
#include <vector>

namespace simulator {

/// The program that the phone itself is, beside this one or in this one's prefix.
std::string phoneProgram();
/// Becomes it; returns only by a Refusal.
[[noreturn]] void becomePhoneProgram(const std::vector<std::string>& words);
/// Starts it for a device of the user's, in a session of its own, so that it outlives this process. Returns once the
/// phone can be used; a Refusal says what it said if it cannot.
void startPhoneProgram(const std::vector<std::string>& words, const std::string& log);

}  // namespace simulator
