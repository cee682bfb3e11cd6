#include "AVFoundation/AVCaptureSession.h"

#include <algorithm>
#include <utility>

#include "AVFoundation/Microphone.h"
#include "AVFoundation/Private/AudioCapture.h"
#include "Device/Device.h"

namespace ios {

AVCaptureSession::~AVCaptureSession() {
  stopRunning();
  for (const auto& output : outputs_) output->setConnection(nullptr);
}

bool AVCaptureSession::canAddInput(const std::shared_ptr<AVCaptureInput>& input) const {
  const auto microphone = std::dynamic_pointer_cast<AVCaptureDeviceInput>(input);
  return microphone && !input_ && microphone->device() && microphone->device()->isConnected() &&
         !Microphone::shared().isHeldElsewhere();
}

bool AVCaptureSession::canAddOutput(const std::shared_ptr<AVCaptureOutput>& output) const {
  const auto sound = std::dynamic_pointer_cast<AVCaptureAudioDataOutput>(output);
  return sound && !sound->connection() &&
         std::find(outputs_.begin(), outputs_.end(), sound) == outputs_.end();
}

void AVCaptureSession::addInput(const std::shared_ptr<AVCaptureInput>& input) {
  if (!canAddInput(input)) return;
  input_ = input;
  connect();
}

void AVCaptureSession::addOutput(const std::shared_ptr<AVCaptureOutput>& output) {
  if (!canAddOutput(output)) return;
  outputs_.push_back(std::dynamic_pointer_cast<AVCaptureAudioDataOutput>(output));
  connect();
}

void AVCaptureSession::connect() {
  if (!input_) return;
  for (const auto& output : outputs_) {
    if (!output->connection()) output->setConnection(std::make_shared<AVCaptureConnection>(input_, output));
  }
}

bool AVCaptureSession::isRunning() const {
  MutexLock lock(mutex_);
  return running_;
}

void AVCaptureSession::startRunning() {
  std::shared_ptr<AudioCapture> capture;
  {
    MutexLock lock(mutex_);
    if (std::exchange(running_, true)) return;
    if (!input_ || outputs_.empty()) return;
    std::string problem;
    auto source = Microphone::shared().open(problem);
    if (!source) {
      deviceLog("the microphone delivers nothing: " + problem);
      return;
    }
    capture = capture_ = std::make_shared<AudioCapture>(std::move(source), outputs_);
  }
  capture->start(Microphone::shared().delay());
}

void AVCaptureSession::stopRunning() {
  std::shared_ptr<AudioCapture> capture;
  {
    MutexLock lock(mutex_);
    running_ = false;
    capture = std::move(capture_);
  }
  if (capture) capture->stop();
}

}  // namespace ios
