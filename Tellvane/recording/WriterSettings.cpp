#include "recording/WriterSettings.h"

#include "AVFoundation/AVVideoSettings.h"
#include "CoreVideo/CVPixelBuffer.h"

namespace tellvane {

NSDictionary pixelBufferAttributes(CGSize pixels) {
  return {{kCVPixelBufferPixelFormatTypeKey, std::int64_t{kCVPixelFormatType_32BGRA}},
          {kCVPixelBufferCGBitmapContextCompatibilityKey, true},
          {kCVPixelBufferWidthKey, pixels.width},
          {kCVPixelBufferHeightKey, pixels.height},
          // The whole row as its own alignment: no byte between rows.
          {kCVPixelBufferBytesPerRowAlignmentKey, pixels.width * 4}};
}

NSDictionary videoOutputSettings(CGSize pixels, double bitRate) {
  return {{AVVideoCodecKey, AVVideoCodecH264},
          {AVVideoWidthKey, pixels.width},
          {AVVideoHeightKey, pixels.height},
          {AVVideoCompressionPropertiesKey, NSDictionary{{AVVideoAverageBitRateKey, bitRate}}}};
}

}  // namespace tellvane
