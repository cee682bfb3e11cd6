#include "simulator/live/PasteboardWatch.h"

#include <algorithm>

#include "Device/Device.h"
#include "Foundation/NSKeyedUnarchiver.h"
#include "UIKit/UIPasteboard.h"
#include "simulator/live/Json.h"

namespace simulator {
namespace {

using ios::Bytes;
using ios::NSArray;
using ios::NSDictionary;
using ios::PropertyList;

constexpr std::size_t kMostLogged = 50, kLongestText = 4096;
/// How long the library leaves a hand-off on the pasteboard, and the types by which one is known.
constexpr double kHandoffSeconds = 3.0;
constexpr const char* kHandoffTypes[] = {"dictionaryInApp", "TLVScreenVideoDetails"};

bool startsWith(const Bytes& bytes, std::string_view head) {
  return bytes.size() >= head.size() &&
         std::equal(head.begin(), head.end(), bytes.begin(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

bool isPlainText(const Bytes& bytes) {
  return !bytes.empty() && bytes.size() <= kLongestText &&
         std::all_of(bytes.begin(), bytes.end(),
                     [](std::uint8_t c) { return c >= 0x20 || c == '\n' || c == '\t'; });
}

NSArray rowsOf(const PropertyList& record) {
  NSArray rows;
  if (const NSDictionary* members = record.dictionary()) {
    for (const auto& [key, value] : *members)
      rows.push_back(NSArray{key, value.text() ? *value.text() : jsonText(value)});
  }
  return rows;
}

}  // namespace

NSDictionary PasteboardWatch::describe(const std::string& type, const Bytes& bytes) const {
  NSDictionary described{{"type", type}, {"size", static_cast<std::int64_t>(bytes.size())}};
  std::string suffix = ".bin";
  if (startsWith(bytes, "\xff\xd8\xff") || startsWith(bytes, "\x89PNG")) {
    described["kind"] = "image";
    suffix = bytes[0] == 0xff ? ".jpg" : ".png";
  } else if (const auto record = ios::NSKeyedUnarchiver::unarchiveObjectWithData(bytes)) {
    described["kind"] = "archive";
    described["rows"] = rowsOf(*record);
    suffix = ".plist";
  } else if (isPlainText(bytes)) {
    described["kind"] = "text";
    described["text"] = std::string(bytes.begin(), bytes.end());
    suffix = ".txt";
  } else {
    described["kind"] = "data";
  }
  described["url"] = keep_("pasteboard" + suffix, {bytes.begin(), bytes.end()});
  return described;
}

void PasteboardWatch::note(double time, const std::string& what, const std::string& by,
                           const std::string& text) {
  log_.push_back(NSDictionary{{"time", time}, {"what", what}, {"by", by}, {"text", text}});
  if (log_.size() > kMostLogged) log_.erase(log_.begin());
}

std::optional<NSDictionary> PasteboardWatch::look(std::chrono::nanoseconds now, const std::string& by) {
  if (!signature_.hasChanged(ios::Device::current().pasteboardFile())) return std::nullopt;
  const auto pasteboard = ios::UIPasteboard::generalPasteboard();
  const double time = std::chrono::duration<double>(now).count();
  NSArray items;
  std::string types;
  bool isHandoff = false;
  for (const auto& item : pasteboard->items()) {
    NSArray representations;
    for (const auto& [type, data] : item) {
      representations.push_back(describe(type, data->bytes()));
      types += (types.empty() ? "" : ", ") + type;
      isHandoff |=
          std::find(std::begin(kHandoffTypes), std::end(kHandoffTypes), type) != std::end(kHandoffTypes);
    }
    items.push_back(NSDictionary{{"types", std::move(representations)}});
  }
  const std::int64_t changes = pasteboard->changeCount();
  if (changes != changes_) {
    const bool wasEmpty = empty_;
    if (items.empty() && !wasEmpty) note(time, "emptied", by, "");
    if (!items.empty()) note(time, wasEmpty ? "filled" : "replaced", by, types);
  }
  changes_ = changes;
  empty_ = items.empty();
  NSDictionary value{{"changes", changes}, {"since", time}, {"log", log_}};
  if (isHandoff) value["emptiesAt"] = time + kHandoffSeconds;
  value["items"] = std::move(items);
  return value;
}

}  // namespace simulator
