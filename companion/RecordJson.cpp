#include "RecordJson.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string_view>

#include "Text.h"

namespace companion {
namespace {

using nlohmann::ordered_json;

std::string readable(const ordered_json& json) {
  const std::string dumped = json.dump(2, ' ', false, ordered_json::error_handler_t::replace);
  std::string result;
  for (std::string_view rest = dumped; !rest.empty();) {
    const std::string_view before = rest;
    const auto codePoint = takeCodePoint(rest);
    // Characters beyond ASCII occur only inside strings, so each can be replaced by an escape wherever it is.
    if (codePoint && *codePoint > 0x7E && isInvisible(*codePoint)) {
      char escape[16];
      if (*codePoint < 0x10000) {
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(*codePoint));
      } else {
        const unsigned offset = static_cast<unsigned>(*codePoint) - 0x10000;
        std::snprintf(escape, sizeof escape, "\\u%04x\\u%04x", 0xD800 + (offset >> 10),
                      0xDC00 + (offset & 0x3FF));
      }
      result += escape;
    } else {
      result += before.substr(0, before.size() - rest.size());
    }
  }
  return result + "\n";
}

ordered_json parse(std::span<const std::uint8_t> bytes) {
  return ordered_json::parse(bytes.begin(), bytes.end(), nullptr, false);
}

}  // namespace

std::string recordJson(const Report& report) {
  ordered_json json = ordered_json::object();
  for (const std::string_view key : recordKeys(report.kind))
    json[std::string(key)] = entry(report.record, key);
  return readable(json);
}

std::string receivedJson(const Report& report, const ReportName& name) {
  ordered_json sizes = ordered_json::object();
  for (const auto& [type, bytes] : report.representations) sizes[type] = bytes.size();
  ordered_json json = {{"received", name.timestamp()},
                       {"kind", report.kind == ReportKind::recording ? "recording" : "stillImage"},
                       {"pasteboardChangeCount", report.changeCount},
                       {"bytes", std::move(sizes)}};
  if (report.image) json["imagePixels"] = {{"width", report.image->width}, {"height", report.image->height}};
  return readable(json);
}

std::optional<Record> readRecordJson(std::span<const std::uint8_t> bytes) {
  const ordered_json json = parse(bytes);
  if (!json.is_object()) return std::nullopt;
  Record record;
  for (const auto& [key, value] : json.items()) {
    if (!value.is_string()) return std::nullopt;
    record.emplace(key, value.get<std::string>());
  }
  return record;
}

std::optional<std::int64_t> readChangeCount(std::span<const std::uint8_t> bytes) {
  const ordered_json json = parse(bytes);
  if (!json.is_object()) return std::nullopt;
  const auto count = json.find("pasteboardChangeCount");
  if (count == json.end() || !count->is_number_integer()) return std::nullopt;
  return count->get<std::int64_t>();
}

}  // namespace companion
