#include "UIKit/UIPasteboard.h"

#include <cstdint>
#include <filesystem>
#include <optional>

#include "CoreFoundation/PropertyList.h"
#include "Device/Device.h"

namespace ios {

namespace {

constexpr std::uintmax_t kLargestFile = 512u << 20;

struct Contents {
  std::vector<UIPasteboardItem> items;
  std::int64_t changeCount = 0;
  std::int64_t nextChangeCount() const { return changeCount < INT64_MAX ? changeCount + 1 : 1; }
};

std::optional<Contents> contentsOf(const PropertyList& list) {
  Contents contents;
  const auto* count = list.member("changeCount");
  const auto* items = list.member("items");
  if (!count || !count->integer() || !items || !items->array()) return std::nullopt;
  contents.changeCount = *count->integer();
  for (const PropertyList& entry : *items->array()) {
    if (!entry.dictionary()) return std::nullopt;
    UIPasteboardItem& item = contents.items.emplace_back();
    for (const auto& [type, bytes] : *entry.dictionary()) {
      if (!bytes.data()) return std::nullopt;
      item[type] = std::make_shared<NSData>(*bytes.data());
    }
  }
  return contents;
}

/// Read anew each time, as any process may have changed the file.
Contents read() {
  const auto path = Device::current().pasteboardFile();
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  FileError error;
  const auto bytes = readFile(path, &error, kLargestFile);
  if (!bytes) {
    deviceLog("the pasteboard counts as empty: " + error.description());
    return {};
  }
  std::string problem = "it is not the content of a pasteboard";
  const auto list = PropertyList::parse(*bytes, &problem);
  if (list) {
    if (auto contents = contentsOf(*list)) return *std::move(contents);
  }
  deviceLog("the pasteboard counts as empty: " + path.filename().string() + " is damaged: " + problem);
  return {};
}

}  // namespace

const std::shared_ptr<UIPasteboard>& UIPasteboard::generalPasteboard() {
  static const auto pasteboard = std::make_shared<UIPasteboard>();
  return pasteboard;
}

std::vector<UIPasteboardItem> UIPasteboard::items() const {
  return read().items;
}

long UIPasteboard::changeCount() const {
  return static_cast<long>(read().changeCount);
}

void UIPasteboard::setItems(const std::vector<UIPasteboardItem>& items) {
  NSArray entries;
  for (const auto& item : items) {
    NSDictionary entry;
    for (const auto& [type, data] : item) {
      if (data) entry[type] = data->bytes();
    }
    entries.emplace_back(std::move(entry));
  }
  const PropertyList contents(
      NSDictionary{{"changeCount", read().nextChangeCount()}, {"items", std::move(entries)}});
  const auto file = Device::current().pasteboardFile();
  if (const auto error = writeFileAtomically(file, contents.binary())) {
    std::error_code failure;
    // Emptying must work on a full disk, too: deleting the file takes no space.
    if (items.empty() && std::filesystem::remove(file, failure)) return;
    deviceLog("the pasteboard was not changed: " + error->description());
  }
}

}  // namespace ios
