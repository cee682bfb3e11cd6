#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "CoreFoundation/PropertyList.h"
#include "JpegCheck.h"

namespace companion {

enum class ReportKind { stillImage, recording };

/// Type identifiers of the representations of a hand-off.
inline const std::string kImageRecordType = "dictionaryInApp";
inline const std::string kImageType = "imageData";
inline const std::string kVideoRecordType = "TLVScreenVideoDetails";

/// The record of a capture: key → string.
using Record = std::map<std::string, std::string>;

/// The keys a record has, no more and no fewer, in the order in which they are written.
std::span<const std::string_view> recordKeys(ReportKind kind);
/// What the record says under `key`; empty if it says nothing.
const std::string& entry(const Record& record, std::string_view key);
/// The screen that was captured: "screenName" of a still image, "videoName" of a recording.
const std::string& screen(const Record& record);

/// A hand-off that was checked and found good.
struct Report {
  ReportKind kind = ReportKind::stillImage;
  Record record;
  /// Type identifier → bytes as received. Of known types only.
  std::map<std::string, ios::Bytes> representations;
  /// Of the JPEG image under `kImageType`, if there is one.
  std::optional<ImageSize> image;
  /// A recording's movie in the device's photo library; empty when it is not there.
  std::optional<std::filesystem::path> movie;
  /// The pasteboard's change count when the item was on it.
  std::int64_t changeCount = 0;
};

}  // namespace companion
