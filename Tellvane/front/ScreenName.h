#pragma once

#include <string>

namespace tellvane {

/// A screen's plain name: the description of its class without the host's module, that is, with
/// every occurrence of `bundleName` followed by "." removed. "Notes.ListViewController" in
/// Notes: "ListViewController".
std::string screenName(std::string classDescription, const std::string& bundleName);

}  // namespace tellvane
