#pragma once

#include <string>

#include "CoreFoundation/PropertyList.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// What both records say about the host application and the device.
struct HandoffFacts {
  std::string sdkId, appVersion, appName, oSVersion, deviceResolution, language, deviceModel;
  /// As they are now. Main thread.
  static HandoffFacts read();
};

/// The record that goes with a still image: nine strings.
NSDictionary imageRecord(const HandoffFacts& facts, const std::string& screenName);
/// The record that goes with a recording: ten strings. `videoInPhotosAlbum` is its identifier
/// in the photo library.
NSDictionary videoRecord(const HandoffFacts& facts, const std::string& videoName,
                         const std::string& videoInPhotosAlbum);

}  // namespace tellvane
