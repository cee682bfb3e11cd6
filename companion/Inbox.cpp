#include "Inbox.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include "RecordJson.h"
#include "ReportPage.h"

namespace companion {
namespace {

const std::string kDocuments = "Documents";
const std::string kInbox = "inbox";
const std::string kIndex = "index.html";
const std::string kRecordFile = "record.json";
const std::string kReceivedFile = "received.json";
const std::string kImageFile = "image.jpg";
const std::string kMovieFile = "movie.mov";
const std::string kItemFolder = "item";

constexpr std::size_t kMostOfAJson = 1 << 20;
constexpr std::size_t kMostOfAnIndex = 256 << 20;

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::optional<Folder> openOrMake(const Folder& parent, const std::string& name, FileError& error) {
  auto folder = parent.open(name, error);
  if (folder || error.code != ENOENT) return folder;
  if (auto failed = parent.make(name)) {
    error = *failed;
    return std::nullopt;
  }
  return parent.open(name, error);
}

std::optional<FileError> sweep(const Folder& inbox) {
  const std::string incoming = Folder::incomingName("");
  for (const auto& [name, kind] : inbox.entries()) {
    if (!name.starts_with(incoming)) continue;
    if (auto error = inbox.remove(name)) return error;
  }
  return std::nullopt;
}

std::vector<ReportName> reportsIn(const Folder& inbox) {
  std::vector<ReportName> names;
  for (const auto& [name, kind] : inbox.entries()) {
    const auto parsed = ReportName::parse(name);
    if (parsed && kind == Folder::EntryKind::folder) names.push_back(*parsed);
  }
  std::sort(names.rbegin(), names.rend());
  return names;
}

InboxEntry entryOf(const Folder& inbox, const ReportName& name) {
  InboxEntry entry{name, std::nullopt, false, false};
  FileError unreadable;
  const auto folder = inbox.open(name.text(), unreadable);
  if (!folder) return entry;
  if (const auto json = folder->read(kRecordFile, kMostOfAJson)) entry.record = readRecordJson(*json);
  entry.hasImage = folder->fileSize(kImageFile).has_value();
  entry.hasMovie = folder->fileSize(kMovieFile).has_value();
  return entry;
}

std::vector<InboxEntry> entriesOf(const Folder& inbox) {
  std::vector<InboxEntry> entries;
  for (const ReportName& name : reportsIn(inbox)) entries.push_back(entryOf(inbox, name));
  return entries;
}

std::optional<FileError> writeIndex(const Folder& inbox) {
  const std::string page = inboxPage(entriesOf(inbox));
  const auto old = inbox.read(kIndex, kMostOfAnIndex);
  if (old && std::ranges::equal(*old, bytesOf(page))) return std::nullopt;
  return inbox.replace(kIndex, bytesOf(page));
}

bool holds(const Folder& inbox, const ReportName& name, const Report& report) {
  FileError none;
  const auto folder = inbox.open(name.text(), none);
  if (!folder) return false;
  const auto received = folder->read(kReceivedFile, kMostOfAJson);
  if (!received || readChangeCount(*received) != report.changeCount) return false;
  // The count starts again on a pasteboard that was lost, so that alone does not make it the same item.
  const auto items = folder->open(kItemFolder, none);
  if (!items || items->entries().size() != report.representations.size()) return false;
  return std::ranges::all_of(report.representations, [&](const auto& representation) {
    return items->read(representation.first, representation.second.size()) == representation.second;
  });
}

ReportName freeName(const Folder& inbox, std::chrono::sys_seconds received) {
  std::set<std::string> taken;
  for (const auto& [name, kind] : inbox.entries()) taken.insert(name);
  ReportName name{received, 1};
  while (taken.contains(name.text())) ++name.number;
  return name;
}

std::optional<FileError> writeReport(const Folder& folder, const Report& report, const ReportName& name) {
  FileError error;
  const std::string record = recordJson(report), received = receivedJson(report, name);
  std::vector<ReportFile> files = {{kRecordFile, record.size()}, {kReceivedFile, received.size()}};
  if (auto failed = folder.write(kRecordFile, bytesOf(record))) return failed;
  if (auto failed = folder.write(kReceivedFile, bytesOf(received))) return failed;
  if (report.image) {
    const ios::Bytes& image = report.representations.at(kImageType);
    if (auto failed = folder.write(kImageFile, image)) return failed;
    files.push_back({kImageFile, image.size()});
  }
  bool hasMovie = false;
  if (report.movie) {
    std::uintmax_t bytes = 0;
    const auto failed = folder.copyIn(*report.movie, kMovieFile, bytes);
    // It may have been deleted since it was found; the report goes without it then.
    if (failed && failed->operation != "read") return failed;
    hasMovie = !failed;
    if (hasMovie) files.push_back({kMovieFile, bytes});
  }
  if (auto failed = folder.make(kItemFolder)) return failed;
  const auto items = folder.open(kItemFolder, error);
  if (!items) return error;
  for (const auto& [type, bytes] : report.representations) {
    if (auto failed = items->write(type, bytes)) return failed;
    files.push_back({kItemFolder + "/" + type, bytes.size()});
  }
  if (auto failed = items->sync()) return failed;
  if (auto failed = folder.write(kIndex, bytesOf(reportPage(report, name, files, hasMovie)))) return failed;
  return folder.sync();
}

/// Builds the report aside, and lets it appear under its name when it is complete.
std::optional<FileError> place(const Folder& inbox, const Report& report, const ReportName& name) {
  const std::string incoming = Folder::incomingName("report");
  FileError error;
  if (auto failed = inbox.make(incoming)) return failed;
  const auto failed = [&]() -> std::optional<FileError> {
    const auto folder = inbox.open(incoming, error);
    if (!folder) return error;
    if (auto failed = writeReport(*folder, report, name)) return failed;
    return inbox.rename(incoming, name.text());
  }();
  // If the disk refuses this too, the next start sweeps it.
  if (failed) static_cast<void>(inbox.remove(incoming));
  return failed;
}

/// The inbox below `home`; empty, with `error` set, when there is none.
std::optional<Folder> existing(const std::filesystem::path& home, FileError& error) {
  const auto folder = Folder::open(home, error);
  const auto documents = folder ? folder->open(kDocuments, error) : std::nullopt;
  return documents ? documents->open(kInbox, error) : std::nullopt;
}

Inbox::Filed filed(const Folder& inbox, const ReportName& name, bool already) {
  return {name, already, entryOf(inbox, name).hasMovie, writeIndex(inbox)};
}

}  // namespace

std::variant<Inbox::Filed, FileError> Inbox::file(const Report& report, std::chrono::sys_seconds received) {
  FileError error;
  const auto home = Folder::open(home_, error);
  if (!home) return error;
  const auto documents = openOrMake(*home, kDocuments, error);
  if (!documents) return error;
  const auto inbox = openOrMake(*documents, kInbox, error);
  if (!inbox) return error;
  if (auto failed = inbox->lock()) return *failed;
  if (auto failed = sweep(*inbox)) return *failed;

  for (const ReportName& name : reportsIn(*inbox)) {
    if (holds(*inbox, name, report)) return filed(*inbox, name, true);
  }
  const ReportName name = freeName(*inbox, received);
  if (auto failed = place(*inbox, report, name)) return *failed;
  return filed(*inbox, name, false);
}

std::filesystem::path Inbox::folder() const {
  return home_ / kDocuments / kInbox;
}

std::filesystem::path Inbox::imageOf(const ReportName& name) const {
  return folder() / name.text() / kImageFile;
}

std::filesystem::path Inbox::movieOf(const ReportName& name) const {
  return folder() / name.text() / kMovieFile;
}

std::vector<InboxEntry> Inbox::reports() const {
  FileError error;
  const auto inbox = existing(home_, error);
  return inbox ? entriesOf(*inbox) : std::vector<InboxEntry>();
}

std::optional<FileError> Inbox::tend() {
  FileError error;
  const auto inbox = existing(home_, error);
  if (!inbox) return error.code == ENOENT ? std::nullopt : std::optional(error);
  if (auto failed = inbox->lock()) return failed;
  if (auto failed = sweep(*inbox)) return failed;
  return writeIndex(*inbox);
}

}  // namespace companion
