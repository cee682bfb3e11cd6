#include "recording/WriterSettings.h"

#include "AVFoundation/AVVideoSettings.h"
#include "CoreVideo/CVPixelBuffer.h"

namespace tellvane {

NSDictionary pixelBufferAttributes(CGSize pixels) {
  return {{kCVPixelBufferPixelFormatTypeKey, std::int64_t{kCVPixelFormatType_32BGRA}},
          {kCVPixelBufferCGBitmapContextCompatibilityKey, true},
          {kCVPixelBufferWidthKey, pixels.width},
          {kCVPixelBufferHeightKey, pixels.height},
          // Aligned to its own length, so that there is no padding between rows.
          {kCVPixelBufferBytesPerRowAlignmentKey, pixels.width * 4}};
}

NSDictionary videoOutputSettings(CGSize pixels, double bitRate) {
  return {{AVVideoCodecKey, AVVideoCodecH264},
          {AVVideoWidthKey, pixels.width},
          {AVVideoHeightKey, pixels.height},
          {AVVideoCompressionPropertiesKey, NSDictionary{{AVVideoAverageBitRateKey, bitRate}}}};
}

}  // namespace tellvane
