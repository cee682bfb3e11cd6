#include "AVFoundation/AVCaptureOutput.h"

#include <algorithm>
#include <array>
#include <utility>

#include "AVFoundation/AVAudioSettings.h"
#include "AVFoundation/Microphone.h"
#include "AVFoundation/Private/SoundSettings.h"

namespace ios {

void AVCaptureAudioDataOutput::setSampleBufferDelegate(const id& delegate, const dispatch_queue_t& queue) {
  MutexLock lock(mutex_);
  delegate_ = delegate;
  queue_ = queue;
}

id AVCaptureAudioDataOutput::sampleBufferDelegate() const {
  MutexLock lock(mutex_);
  return delegate_.lock();
}

dispatch_queue_t AVCaptureAudioDataOutput::sampleBufferCallbackQueue() const {
  MutexLock lock(mutex_);
  return queue_;
}

std::shared_ptr<AVCaptureConnection> AVCaptureAudioDataOutput::connection() const {
  MutexLock lock(mutex_);
  return connection_;
}

void AVCaptureAudioDataOutput::setConnection(std::shared_ptr<AVCaptureConnection> connection) {
  MutexLock lock(mutex_);
  connection_ = std::move(connection);
}

std::optional<NSDictionary>
AVCaptureAudioDataOutput::recommendedAudioSettingsForAssetWriterWithOutputFileType(
    const AVFileType& outputFileType) const {
  if (outputFileType != AVFileTypeQuickTimeMovie && outputFileType != AVFileTypeMPEG4) return std::nullopt;
  const auto format = connection() ? Microphone::shared().format() : std::nullopt;
  if (!format) return std::nullopt;
  NSDictionary settings = {
      {AVFormatIDKey, kAudioFormatMPEG4AAC},
      {AVSampleRateKey, format->sampleRate},
      {AVNumberOfChannelsKey, static_cast<std::int64_t>(std::min(format->channels, 2u))}};
  // A rate that the encoder does not know is converted.
  if (!SoundSettings::from(settings)) settings[AVSampleRateKey] = 44100.0;
  return settings;
}

}  // namespace ios
