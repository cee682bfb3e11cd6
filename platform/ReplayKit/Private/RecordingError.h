#pragma once

#include <memory>

#include "Foundation/NSError.h"
#include "ReplayKit/RPError.h"

namespace ios {

/// The error of that code, with its text for people.
std::shared_ptr<NSError> recordingError(RPRecordingErrorCode code);
/// The error for a failure of the movie writer, or of the disk before it: a full disk, or else `otherwise`.
std::shared_ptr<NSError> recordingError(const NSError& reason, RPRecordingErrorCode otherwise);

}  // namespace ios
