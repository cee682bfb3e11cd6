#include "front/HandoffRecord.h"

#include "info/TLVConstants.h"

namespace tellvane {
namespace {

NSDictionary commonRecord(const HandoffFacts& facts) {
  return {{"sdkId", facts.sdkId},
          {"appVersion", facts.appVersion},
          {"oSFamily", "iOS"},
          {"appName", facts.appName},
          {"oSVersion", facts.oSVersion},
          {"deviceResolution", facts.deviceResolution},
          {"language", facts.language},
          {"deviceModel", facts.deviceModel}};
}

}  // namespace

HandoffFacts HandoffFacts::read() {
  return {.sdkId = TLV_SDK_VERSION(),
          .appVersion = APP_VERSION(),
          .appName = APP_NAME(),
          .oSVersion = OS_VERSION(),
          .deviceResolution = DEVICE_RESOLUTION(),
          .language = DEVICE_LANGUAGE(),
          .deviceModel = DEVICE_MODEL()};
}

NSDictionary imageRecord(const HandoffFacts& facts, const std::string& screenName) {
  NSDictionary record = commonRecord(facts);
  record["screenName"] = screenName;
  return record;
}

NSDictionary videoRecord(const HandoffFacts& facts, const std::string& videoName,
                         const std::string& videoInPhotosAlbum) {
  NSDictionary record = commonRecord(facts);
  record["videoName"] = videoName;
  record["videoInPhotosAlbum"] = videoInPhotosAlbum;
  return record;
}

}  // namespace tellvane
