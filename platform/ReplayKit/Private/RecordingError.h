#pragma once

#include <memory>

#include "Foundation/NSError.h"
#include "ReplayKit/RPError.h"

namespace ios {

/// The error of that code, with its text for people.
std::shared_ptr<NSError> recordingError(RPRecordingErrorCode code);
/// The same for what a movie writer, or the disk before it, failed with: a full disk, or else `otherwise`.
std::shared_ptr<NSError> recordingError(const NSError& reason, RPRecordingErrorCode otherwise);

}  // namespace ios
