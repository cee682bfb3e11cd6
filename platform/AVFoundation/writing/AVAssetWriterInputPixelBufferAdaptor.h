#pragma once

#include <memory>
#include <optional>

#include "AVFoundation/AVAssetWriterInput.h"
#include "CoreMedia/CMTime.h"
#include "CoreVideo/CVPixelBuffer.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// Appends pixel buffers to a picture input. The movie has the size of the input's settings, made even by
/// repeating the last column or row where it is odd; a buffer of another size is stretched to it. Colours are
/// those of a display (sRGB), stored as limited-range BT.601 and tagged so.
class AVAssetWriterInputPixelBufferAdaptor : public NSObject {
 public:
  /// `sourcePixelBufferAttributes` may be absent; they make no difference.
  static std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> initWithAssetWriterInput(
      const std::shared_ptr<AVAssetWriterInput>& input,
      const std::optional<NSDictionary>& sourcePixelBufferAttributes);
  explicit AVAssetWriterInputPixelBufferAdaptor(std::shared_ptr<AVAssetWriterInput> input)
      : input_(std::move(input)) {}

  /// Copies the picture, in the encoder's own form, before it returns: then the buffer may be drawn into
  /// again. It waits while the picture before it is still being encoded. The buffer may be locked or not.
  /// False as described at AVAssetWriterInput.
  bool appendPixelBuffer(const CVPixelBufferRef& buffer, const CMTime& presentationTime);

 private:
  const std::shared_ptr<AVAssetWriterInput> input_;
};

}  // namespace ios
