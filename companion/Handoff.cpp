#include "Handoff.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "Device/Files.h"
#include "Foundation/NSKeyedUnarchiver.h"
#include "Text.h"

namespace companion {
namespace {

constexpr std::size_t kMebibyte = 1 << 20;
constexpr std::size_t kMostOfAnItem = 64 * kMebibyte;
constexpr std::size_t kMostOfAnImage = 32 * kMebibyte;
constexpr std::size_t kMostOfAnArchive = kMebibyte;
constexpr std::size_t kMostOfAText = 4096;
// What the pasteboard's own format may add to the item.
constexpr std::uintmax_t kMostOfTheFile = kMostOfAnItem + kMebibyte;

std::string mebibytes(std::size_t bytes) {
  return std::to_string(bytes / kMebibyte) + " MiB";
}

/// The reason of a lower layer, cut down to a single line, as a refusal must be.
std::string inOneLine(std::string_view problem) {
  std::string line;
  while (!problem.empty()) {
    const std::string_view before = problem;
    const auto codePoint = takeCodePoint(problem);
    const bool plain = codePoint && !isInvisible(*codePoint);
    line += plain ? before.substr(0, before.size() - problem.size()) : "?";
  }
  return line;
}

const char* kindOfValue(const ios::PropertyList& value) {
  static constexpr const char* kNames[] = {"a string", "a Boolean", "an integer",   "a real number",
                                           "data",     "an array",  "a dictionary", "an archive's reference"};
  return kNames[value.value().index()];
}

std::string typesOf(const ios::NSDictionary& item) {
  if (item.empty()) return "none";
  std::string types;
  int named = 0;
  for (const auto& [type, bytes] : item) {
    if (named == 4) return types + " and " + std::to_string(item.size() - named) + " more";
    types += (named++ ? ", " : "") + inQuotes(type);
  }
  return types;
}

std::optional<ReportKind> kindOfItem(const ios::NSDictionary& item) {
  if (item.size() == 1 && item.contains(kVideoRecordType)) return ReportKind::recording;
  const bool imageOrNone = item.size() == 1 || (item.size() == 2 && item.contains(kImageType));
  if (item.contains(kImageRecordType) && imageOrNone) return ReportKind::stillImage;
  return std::nullopt;
}

std::optional<Refusal> takeRepresentations(const ios::NSDictionary& item, Report& report) {
  std::size_t total = 0;
  for (const auto& [type, value] : item) {
    const ios::Bytes* bytes = value.data();
    if (!bytes) return Refusal{inQuotes(type) + " holds " + kindOfValue(value) + " instead of data"};
    total += bytes->size();
    if (total > kMostOfAnItem) return Refusal{"the item holds more than " + mebibytes(kMostOfAnItem)};
  }
  for (const auto& [type, value] : item) report.representations.emplace(type, *value.data());
  return std::nullopt;
}

/// Whether a string may be a path in a file system. Accepted strings go into file contents only, never into names; but
/// no genuine record has such a string, and the next reader of the inbox may be less careful.
bool isPath(std::string_view text) {
  if (text.starts_with('/') || text.starts_with("~/") || text.starts_with("file:")) return true;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find_first_of("/\\", start), text.size());
    if (text.substr(start, end - start) == ".." && text.size() > 2) return true;
    start = end + 1;
  }
  return false;
}

std::optional<Refusal> takeText(std::string_view key, const ios::PropertyList& value, Record& record) {
  const std::string* text = value.text();
  if (!text)
    return Refusal{"the record's " + inQuotes(key) + " is " + kindOfValue(value) + " instead of a string"};
  if (text->size() > kMostOfAText) {
    return Refusal{"the record's " + inQuotes(key) + " is " + std::to_string(text->size()) +
                   " bytes long; at most " + std::to_string(kMostOfAText) + " are taken"};
  }
  if (!isUTF8(*text)) return Refusal{"the record's " + inQuotes(key) + " is not well-formed UTF-8"};
  // The movie's identifier has slashes of its own, and is checked where the movie is fetched.
  if (key != "videoInPhotosAlbum" && isPath(*text)) {
    return Refusal{"the record's " + inQuotes(key) + " is a path: " + inQuotes(*text)};
  }
  record.emplace(key, *text);
  return std::nullopt;
}

std::optional<Refusal> takeRecord(const std::string& type, Report& report) {
  const ios::Bytes& archive = report.representations.at(type);
  if (archive.size() > kMostOfAnArchive) {
    return Refusal{"the archive in " + inQuotes(type) + " is larger than " + mebibytes(kMostOfAnArchive)};
  }
  std::string problem;
  const auto root = ios::NSKeyedUnarchiver::unarchiveObjectWithData(archive, &problem);
  if (!root) return Refusal{"the archive in " + inQuotes(type) + " " + inOneLine(problem)};
  const ios::NSDictionary* dictionary = root->dictionary();
  if (!dictionary)
    return Refusal{"the archive in " + inQuotes(type) + " holds " + kindOfValue(*root) +
                   " instead of a dictionary"};

  const auto keys = recordKeys(report.kind);
  for (const auto& [key, value] : *dictionary) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      return Refusal{"the record has an entry " + inQuotes(key) + " that is not known"};
    }
  }
  for (const std::string_view key : keys) {
    const auto found = dictionary->find(std::string(key));
    if (found == dictionary->end()) return Refusal{"the record lacks " + inQuotes(key)};
    if (auto refusal = takeText(key, found->second, report.record)) return refusal;
  }
  const std::string& family = entry(report.record, "oSFamily");
  if (family != "iOS")
    return Refusal{"the record's \"oSFamily\" is " + inQuotes(family) + " instead of \"iOS\""};
  return std::nullopt;
}

std::optional<Refusal> takeImage(Report& report) {
  const auto found = report.representations.find(kImageType);
  if (found == report.representations.end()) return std::nullopt;
  if (found->second.size() > kMostOfAnImage) {
    return Refusal{"the image is larger than " + mebibytes(kMostOfAnImage)};
  }
  std::string problem;
  report.image = checkJpeg(found->second, problem);
  if (!report.image)
    return Refusal{"\"imageData\" does not hold a complete JPEG image: " + inOneLine(problem)};
  return std::nullopt;
}

}  // namespace

Handoff readHandoff(const std::filesystem::path& pasteboardFile) {
  std::error_code code;
  const auto status = std::filesystem::status(pasteboardFile, code);
  if (!std::filesystem::exists(status)) return Refusal{"the pasteboard is empty"};
  // Anything but a file could keep the reader waiting for ever.
  if (!std::filesystem::is_regular_file(status)) return Refusal{"the pasteboard is not a file"};
  if (std::filesystem::file_size(pasteboardFile, code) > kMostOfTheFile && !code) {
    return Refusal{"the pasteboard holds more than " + mebibytes(kMostOfAnItem)};
  }
  ios::FileError error;
  const auto bytes = ios::readFile(pasteboardFile, &error, kMostOfTheFile);
  if (!bytes) return Refusal{"the pasteboard cannot be read: " + inOneLine(error.description())};
  return checkHandoff(*bytes);
}

Handoff checkHandoff(std::span<const std::uint8_t> pasteboard) {
  constexpr std::string_view kBinary = "bplist00";
  if (!std::equal(kBinary.begin(), kBinary.end(), pasteboard.begin(),
                  pasteboard.begin() + std::min(kBinary.size(), pasteboard.size()))) {
    return Refusal{"the pasteboard is not a binary property list"};
  }
  std::string problem;
  const auto root = ios::PropertyList::parse(pasteboard, &problem);
  if (!root) return Refusal{"the pasteboard " + inOneLine(problem)};
  const ios::PropertyList* count = root->member("changeCount");
  const ios::PropertyList* items = root->member("items");
  if (!count || !count->integer() || *count->integer() < 0)
    return Refusal{"the pasteboard has no change count"};
  if (!items || !items->array()) return Refusal{"the pasteboard has no list of items"};
  if (items->array()->empty()) return Refusal{"the pasteboard is empty"};
  if (items->array()->size() != 1) {
    return Refusal{"the pasteboard holds " + std::to_string(items->array()->size()) +
                   " items instead of one"};
  }
  const ios::NSDictionary* item = items->array()->front().dictionary();
  if (!item) return Refusal{"the pasteboard's item is not a set of representations"};
  const auto kind = kindOfItem(*item);
  if (!kind) return Refusal{"the item's types are not those of a hand-off: " + typesOf(*item)};

  Report report;
  report.kind = *kind;
  report.changeCount = *count->integer();
  const std::string& recordType = *kind == ReportKind::recording ? kVideoRecordType : kImageRecordType;
  if (auto refusal = takeRepresentations(*item, report)) return *std::move(refusal);
  if (auto refusal = takeRecord(recordType, report)) return *std::move(refusal);
  if (auto refusal = takeImage(report)) return *std::move(refusal);
  return report;
}

}  // namespace companion
