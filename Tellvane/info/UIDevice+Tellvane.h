#pragma once

#include <string>
#include <string_view>

#include "CoreGraphics/CGGeometry.h"
#include "Tellvane/Platform.h"
#include "UIKit/UIDevice.h"

namespace tellvane {

// Five properties that the library adds to the platform's device object, also reachable by their selectors
// ("deviceModel", …). Each asks the whole platform, so any device object answers the same. Any thread,
// except for the two that depend on the device's orientation: those on the main thread.

/// The main screen in pixels, as the device is held. Main thread.
TLV_EXPORT CGSize screenResolution(const UIDevice& device);
/// The hardware code: "iPhone7,2". Bytes that are not UTF-8 become U+FFFD; empty when the
/// system does not say.
TLV_EXPORT std::string deviceCode(const UIDevice& device);
/// The family word: "iPhone", "iPad".
TLV_EXPORT std::string deviceFamily(const UIDevice& device);
/// The name the device is sold under, or its hardware code when that is not known.
TLV_EXPORT std::string deviceModel(const UIDevice& device);
/// How the device is held: "Portrait", "Face Up". Main thread.
TLV_EXPORT std::string deviceOrientationString(const UIDevice& device);

/// The name for a hardware code (compared whole, letter by letter); the code itself when there is none.
std::string modelName(std::string_view deviceCode);
/// The name for an orientation's raw value; "Portrait" for one the platform does not have.
std::string orientationName(long orientation);

}  // namespace tellvane
