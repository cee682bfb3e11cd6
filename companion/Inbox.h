#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Folder.h"
#include "InboxPage.h"
#include "Report.h"
#include "ReportName.h"

namespace companion {

/// The reports that came so far, one folder each, in `Documents/inbox` of the application's home:
///
///     index.html              all reports, newest first
///     <report name>/          record.json   the record
///                             received.json when and how it came
///                             image.jpg     a still image's picture
///                             movie.mov     a recording's movie
///                             item/<type>   each representation's bytes as received
///                             index.html    the report as a page
///
/// A report is there complete or not at all: it is built aside and renamed in. Existing files are never changed, except
/// for the index, which is rebuilt from the reports. Nothing outside the inbox is written.
class Inbox {
 public:
  explicit Inbox(std::filesystem::path home) : home_(std::move(home)) {}

  struct Filed {
    ReportName name;
    /// It was there before: the same item from the same change of the pasteboard.
    bool already = false;
    /// The recording's movie is in the report.
    bool hasMovie = false;
    /// The report is safe, but the index could not be brought up to date; it will be with the next report.
    std::optional<FileError> indexProblem;
  };
  /// Keeps a report. After a failure the inbox is as it was.
  std::variant<Filed, FileError> file(const Report& report, std::chrono::sys_seconds received);

  std::filesystem::path folder() const;
  /// The reports in the inbox, newest first.
  std::vector<InboxEntry> reports() const;
  std::filesystem::path imageOf(const ReportName& name) const;
  std::filesystem::path movieOf(const ReportName& name) const;

  /// Removes what a killed companion left behind, and brings the index up to date. Without an inbox
  /// nothing happens.
  [[nodiscard]] std::optional<FileError> tend();

 private:
  std::filesystem::path home_;
};

}  // namespace companion
