#pragma once

#include <filesystem>
#include <vector>

namespace ios {

/// The folders of every framework that this process can load from, in the order of search: those of the main
/// bundle, beside the executable, around every loaded image, and of IOS_FRAMEWORK_PATH.
std::vector<std::filesystem::path> frameworkFolders(const std::filesystem::path& mainBundle);

}  // namespace ios
