#include "AVFoundation/AVAssetWriterInputPixelBufferAdaptor.h"

#include "AVFoundation/Private/MovieTrack.h"

namespace ios {

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(
    const std::shared_ptr<AVAssetWriterInput>& input, const std::optional<NSDictionary>&) {
  return std::make_shared<AVAssetWriterInputPixelBufferAdaptor>(input);
}

bool AVAssetWriterInputPixelBufferAdaptor::appendPixelBuffer(const CVPixelBufferRef& buffer,
                                                             const CMTime& presentationTime) {
  const auto track = input_ ? input_->track() : nullptr;
  return track && track->append(buffer, presentationTime);
}

}  // namespace ios
