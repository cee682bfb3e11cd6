#include "AVFoundation/AVAssetWriterInput.h"

#include <utility>

#include "AVFoundation/Private/AudioTrack.h"
#include "AVFoundation/Private/MovieInputs.h"
#include "AVFoundation/Private/VideoTrack.h"

namespace ios {

std::shared_ptr<MovieTrack> makeTrack(const AVAssetWriterInput& input, const std::string& container) {
  const auto& settings = input.outputSettings();
  if (input.mediaType() == AVMediaTypeVideo) {
    const auto video = settings ? VideoEncoder::Settings::from(*settings) : std::nullopt;
    return video ? std::make_shared<VideoTrack>(*video) : nullptr;
  }
  if (input.mediaType() != AVMediaTypeAudio) return nullptr;
  if (!settings) {
    // Plain samples have no place in MPEG-4.
    return container == "mov" ? std::make_shared<AudioTrack>(std::nullopt) : nullptr;
  }
  const auto sound = SoundSettings::from(*settings);
  return sound ? std::make_shared<AudioTrack>(sound) : nullptr;
}

std::shared_ptr<AVAssetWriterInput> AVAssetWriterInput::initWithMediaType(
    const AVMediaType& mediaType, std::optional<NSDictionary> outputSettings) {
  return std::make_shared<AVAssetWriterInput>(mediaType, std::move(outputSettings));
}

AVAssetWriterInput::AVAssetWriterInput(AVMediaType mediaType, std::optional<NSDictionary> outputSettings)
    : mediaType_(std::move(mediaType)), outputSettings_(std::move(outputSettings)) {}

AVAssetWriterInput::~AVAssetWriterInput() = default;

std::shared_ptr<MovieTrack> AVAssetWriterInput::track() const {
  MutexLock lock(mutex_);
  return track_;
}

void AVAssetWriterInput::attach(std::shared_ptr<MovieTrack> track) {
  MutexLock lock(mutex_);
  track_ = std::move(track);
}

bool AVAssetWriterInput::isReadyForMoreMediaData() const {
  const auto track = this->track();
  return track && track->isReady();
}

bool AVAssetWriterInput::appendSampleBuffer(const CMSampleBufferRef& buffer) {
  const auto track = this->track();
  return track && track->append(buffer);
}

void AVAssetWriterInput::markAsFinished() {
  if (const auto track = this->track()) track->markAsFinished();
}

}  // namespace ios
