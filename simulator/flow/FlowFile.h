#pragma once

#include <yaml-cpp/yaml.h>

#include <filesystem>
#include <vector>

namespace simulator {

/// The YAML documents of a flow's file; "-" is standard input. Throws a FlowError when it cannot be read.
std::vector<YAML::Node> readDocuments(const std::filesystem::path& file);

}  // namespace simulator
