#pragma once

#include <string>

namespace ios {

// Output settings of a movie's picture.
/// String: AVVideoCodecH264. Required.
inline const std::string AVVideoCodecKey = "AVVideoCodecKey";
inline const std::string AVVideoCodecH264 = "avc1";
/// Pixels, integer or double; rounded as pixel buffers round (CVPixelSize). Required.
inline const std::string AVVideoWidthKey = "AVVideoWidthKey";
inline const std::string AVVideoHeightKey = "AVVideoHeightKey";
/// Dictionary of the entries below.
inline const std::string AVVideoCompressionPropertiesKey = "AVVideoCompressionPropertiesKey";
/// Bits per second, integer or double. Without it: 4 bits per pixel per second.
inline const std::string AVVideoAverageBitRateKey = "AverageBitRate";
/// The maximum number of frames from one key frame to the next, integer or double. Without it: 250.
inline const std::string AVVideoMaxKeyFrameIntervalKey = "MaxKeyFrameInterval";

}  // namespace ios
