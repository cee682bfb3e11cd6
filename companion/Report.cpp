#include "Report.h"

#include <array>

namespace companion {

std::span<const std::string_view> recordKeys(ReportKind kind) {
  static constexpr std::array<std::string_view, 9> kStillImage = {
      "sdkId",    "appVersion", "oSFamily",   "appName", "oSVersion", "deviceResolution",
      "language", "screenName", "deviceModel"};
  static constexpr std::array<std::string_view, 10> kRecording = {
      "sdkId",    "appVersion", "oSFamily",           "appName",    "oSVersion", "deviceResolution",
      "language", "videoName",  "videoInPhotosAlbum", "deviceModel"};
  if (kind == ReportKind::recording) return kRecording;
  return kStillImage;
}

const std::string& entry(const Record& record, std::string_view key) {
  static const std::string kNothing;
  const auto found = record.find(std::string(key));
  return found == record.end() ? kNothing : found->second;
}

const std::string& screen(const Record& record) {
  return entry(record, record.contains("videoName") ? "videoName" : "screenName");
}

}  // namespace companion
