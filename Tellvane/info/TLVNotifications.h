#pragma once

#include "Tellvane/Platform.h"

namespace tellvane {

/// Names of the library's notifications on the default centre. A host that posts the first opens
/// the capture menu as a trigger does. Either may be posted on any thread; what follows happens on the main
/// thread, before the post returns if it is made there.
inline constexpr char TLV_GESTURE_SUCCESS[] = "GestureForTellvaneSDK";
/// Asks for a saved recording to be handed over; user info {"assetId": its identifier in the photo library}.
inline constexpr char TLV_SCREEN_RECORD[] = "SaveScreenRecordingToTellvane";

}  // namespace tellvane
