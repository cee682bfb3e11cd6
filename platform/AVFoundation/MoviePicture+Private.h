#pragma once

#include "AVFoundation/FFmpeg+Private.h"
#include "AVFoundation/MediaError+Private.h"
#include "CoreGraphics/CGImage.h"

namespace ios {

/// A decoded picture in the display's colours. Null, with `failure` set, for one that is not 4:2:0 with 8
/// bits a sample, or has no size that an image may have. Any thread.
CGImageRef imageOf(const AVFrame& frame, MediaFailure& failure);

}  // namespace ios
