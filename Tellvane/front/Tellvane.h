#pragma once

#include <string>

#include "ObjectiveC/NSObject.h"
// Everything that a host may use comes with this one header.
#include "Tellvane/CaptureScreenRecording.h"
#include "Tellvane/Platform.h"
#include "Tellvane/TLVManager.h"
#include "Tellvane/TLVNotifications.h"
#include "Tellvane/UIDevice+Tellvane.h"

namespace tellvane {

/// The library's front door: in-app feedback for the application that calls it.
///
/// Three taps, a three-finger tap or a shake open a sheet that captures the screen; the capture goes
/// to the companion application on the same device. Nothing leaves the device, and nothing here raises
/// an error to the host.
class TLV_EXPORT Tellvane : public Subclass<Tellvane, NSObject> {
 public:
  static MethodList methods();

  /// Starts the library; once, on the main thread, usually at launch. In debug mode the sheet opens on a
  /// trigger and log lines are written to standard output; in production mode a trigger has no visible
  /// effect. `microphoneEnabled`: recordings of the screen include the microphone. A second call only changes
  /// both switches.
  static void instantiateSDK(bool debugMode, bool microphoneEnabled);
  /// The same in production mode.
  static void instantiateSDK(bool microphoneEnabled);

  /// "iOS-1.0.0.1": the library's short version and build; "0" when its bundle is missing.
  static std::string getTLVSDKVersion();
};

}  // namespace tellvane
