#pragma once

#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/MediaError.h"
#include "CoreGraphics/CGImage.h"

namespace ios {

/// A decoded picture in the display's colours. Fails for one that is not 4:2:0 with 8 bits per sample,
/// or whose size no image may have. Any thread.
MediaResult<CGImageRef> imageOf(const AVFrame& frame);

}  // namespace ios
