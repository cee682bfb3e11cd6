#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Report.h"
#include "ReportName.h"

namespace companion {

/// A file of a report's folder: its path below it, made of known names only, and its size in bytes.
struct ReportFile {
  std::string path;
  std::uintmax_t bytes = 0;
};

/// The page of one report: the picture or the movie, if it is in the report, the screen's name, and
/// what the record says.
std::string reportPage(const Report& report, const ReportName& name, const std::vector<ReportFile>& files,
                       bool hasMovie);

}  // namespace companion
