#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Device/Settings.h"

namespace simulator {

/// How commands and topics name what the device numbers.

/// "landscapeLeft"; "portrait" for what is not one of the four.
std::string orientationName(int orientation);
std::optional<int> orientationNamed(const std::string& name);
/// "granted", "refused" or "ask".
std::string permissionName(ios::Permission permission);
/// "allow", "deny" or "unset", as flows have it.
std::string permissionWord(ios::Permission permission);
/// "2026-01-05T09:41:07Z"
std::string wallText(std::chrono::sys_seconds time);
/// A text as a flow has it, in quotation marks.
std::string inYaml(const std::string& text);
/// Whether a microphone can hear this: a word of IOS_MICROPHONE, and a file that is there.
bool isSoundSource(const std::string& source, bool realTime);

}  // namespace simulator
