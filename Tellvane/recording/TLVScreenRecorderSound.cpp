#include "AVFoundation/AVCaptureDevice.h"
#include "ground/Memory.h"
#include "info/printTLV.h"
#include "recording/TLVScreenRecorder.h"

namespace tellvane {

void TLVScreenRecorder::pauseRecording() {
  if (!displayLink_ || displayLink_->isPaused()) return;
  unlessMemoryRunsOut([this] {
    {
      MutexLock lock(sharedFields_);
      pauseResumeTimeRanges_.push_back(displayLink_->timestamp());
    }
    displayLink_->setPaused(true);
    printTLV("Paused recording");
  });
}

void TLVScreenRecorder::resumeRecording() {
  if (!displayLink_ || !displayLink_->isPaused()) return;
  unlessMemoryRunsOut([this] {
    displayLink_->setPaused(false);
    printTLV("Resumed recording");
  });
}

void TLVScreenRecorder::setUpAudioCapture() {
  const auto device = AVCaptureDevice::defaultDeviceWithMediaType(AVMediaTypeAudio);
  if (!device || !device->isConnected()) {
    printTLV("AVCaptureDevice Failed");
    return;
  }
  printTLV("Device : " + device->localizedName());
  std::shared_ptr<NSError> error;
  const auto input = AVCaptureDeviceInput::initWithDevice(device, error);
  if (!input) {
    printTLV("AVCaptureDeviceInput Failed : " + (error ? error->description() : std::string()));
    return;
  }
  const auto output = std::make_shared<AVCaptureAudioDataOutput>();
  const auto session = std::make_shared<AVCaptureSession>();
  audioCaptureInput_ = input;
  {
    MutexLock lock(sharedFields_);
    audioCaptureOutput_ = output;
    captureSession_ = session;
  }
  output->setSampleBufferDelegate(shared_from_this(),
                                  dispatch_queue_create("TLVScreenRecorder.AudioCaptureQueue"));
  session->setSessionPreset(AVCaptureSessionPresetMedium);
  if (session->canAddInput(input) && session->canAddOutput(output)) {
    session->addInput(input);
    session->addOutput(output);
  } else {
    printTLV("Failed to add input/output device to capture session");
  }
  audioSettings_ = output->recommendedAudioSettingsForAssetWriterWithOutputFileType(AVFileTypeMPEG4);
  session->startRunning();
}

void TLVScreenRecorder::captureOutputDidOutputSampleBuffer(const std::shared_ptr<AVCaptureOutput>& output,
                                                           const CMSampleBufferRef& sampleBuffer,
                                                           const std::shared_ptr<AVCaptureConnection>&) {
  std::shared_ptr<AVAssetWriterInput> sound;
  {
    MutexLock lock(sharedFields_);
    if (!output || output != audioCaptureOutput_) return;
    if (CMTimeCompare(firstAudioTimeStamp_, kCMTimeZero) == 0) {
      firstAudioTimeStamp_ = CMSampleBufferGetPresentationTimeStamp(sampleBuffer);
    }
    sound = audioInput_;
  }
  unlessMemoryRunsOut([&] {
    if (isRecording_ && sound && sound->isReadyForMoreMediaData()) sound->appendSampleBuffer(sampleBuffer);
  });
}

}  // namespace tellvane
