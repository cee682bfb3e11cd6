#include "ReplayKit/Private/RecordingError.h"

#include "AVFoundation/AVError.h"

namespace ios {
namespace {

const char* textOf(RPRecordingErrorCode code) {
  switch (code) {
    case RPRecordingErrorUserDeclined:
      return "The user declined application recording";
    case RPRecordingErrorDisabled:
      return "Recording has been disabled on this device";
    case RPRecordingErrorFailedToStart:
      return "Recording failed to start";
    case RPRecordingErrorFailed:
      return "Recording failed";
    case RPRecordingErrorInsufficientStorage:
      return "There is not enough storage for the recording";
    case RPRecordingErrorInterrupted:
      return "Recording was interrupted as the application left the foreground";
    case RPRecordingErrorContentResize:
      return "Recording was interrupted as the content changed its size";
    case RPRecordingErrorAttemptToStopNonRecording:
      return "There is no recording to stop";
    case RPRecordingErrorAttemptToStartInRecordingState:
      return "A recording is under way already";
    case RPRecordingErrorUnknown:
      break;
  }
  return "Recording failed for an unknown reason";
}

}  // namespace

std::shared_ptr<NSError> recordingError(RPRecordingErrorCode code) {
  return std::make_shared<NSError>(RPRecordingErrorDomain, code, textOf(code));
}

std::shared_ptr<NSError> recordingError(const NSError& reason, RPRecordingErrorCode otherwise) {
  const bool full = reason.domain() == AVFoundationErrorDomain && reason.code() == AVErrorDiskFull;
  return recordingError(full ? RPRecordingErrorInsufficientStorage : otherwise);
}

}  // namespace ios
