#pragma once

#include <string>

namespace ios {

inline const std::string RPRecordingErrorDomain = "com.apple.ReplayKit.RPRecordingErrorDomain";

enum RPRecordingErrorCode : long {
  RPRecordingErrorUnknown = -5800,
  /// The user did not allow it.
  RPRecordingErrorUserDeclined = -5801,
  /// The device's owner has turned it off.
  RPRecordingErrorDisabled = -5802,
  RPRecordingErrorFailedToStart = -5803,
  /// It began, and then the movie could not be written.
  RPRecordingErrorFailed = -5804,
  RPRecordingErrorInsufficientStorage = -5805,
  /// The application went to the background.
  RPRecordingErrorInterrupted = -5806,
  RPRecordingErrorContentResize = -5807,
  RPRecordingErrorAttemptToStopNonRecording = -5829,
  RPRecordingErrorAttemptToStartInRecordingState = -5830,
};

}  // namespace ios
