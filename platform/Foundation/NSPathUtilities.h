#pragma once

#include <string>

namespace ios {

/// The application's home folder on the device, without a slash at the end. It holds Documents and tmp.
std::string NSHomeDirectory();

}  // namespace ios
