#pragma once

#include "Platform.h"

namespace tellvane {

/// Names of the library's notifications on the default centre. A host that posts the first, on the main
/// thread, opens the capture menu as a trigger does.
inline constexpr char TLV_GESTURE_SUCCESS[] = "GestureForTellvaneSDK";
/// Asks for a saved recording to be handed over; user info {"assetId": its identifier in the photo library}.
inline constexpr char TLV_SCREEN_RECORD[] = "SaveScreenRecordingToTellvane";

}  // namespace tellvane
