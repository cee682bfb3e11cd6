#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Report.h"
#include "ReportName.h"

namespace companion {

/// What the index says about one report.
struct InboxEntry {
  ReportName name;
  /// Empty when record.json cannot be read.
  std::optional<Record> record;
  bool hasImage = false;
  bool hasMovie = false;
};

/// The index page; `entries` are listed as they come, under a heading for each day.
std::string inboxPage(const std::vector<InboxEntry>& entries);

}  // namespace companion
