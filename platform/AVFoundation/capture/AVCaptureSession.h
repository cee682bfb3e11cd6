#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AVFoundation/AVCaptureInput.h"
#include "AVFoundation/AVCaptureOutput.h"
#include "Base/Mutex.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class AudioCapture;

using AVCaptureSessionPreset = std::string;
inline const AVCaptureSessionPreset AVCaptureSessionPresetHigh = "AVCaptureSessionPresetHigh";
inline const AVCaptureSessionPreset AVCaptureSessionPresetMedium = "AVCaptureSessionPresetMedium";

/// Lets the microphone's sound flow to outputs. Inputs and outputs are added on one thread, before the start;
/// `startRunning` and `stopRunning` may come from any thread. A session that goes stops.
class AVCaptureSession : public NSObject {
 public:
  ~AVCaptureSession() override;

  const AVCaptureSessionPreset& sessionPreset() const { return preset_; }
  void setSessionPreset(AVCaptureSessionPreset preset) { preset_ = std::move(preset); }

  /// False for no input, a second one, a device that is gone, and one that another application holds.
  bool canAddInput(const std::shared_ptr<AVCaptureInput>& input) const;
  /// False for no output, one already in a session, and one that takes no sound.
  bool canAddOutput(const std::shared_ptr<AVCaptureOutput>& output) const;
  /// What cannot be added is left out.
  void addInput(const std::shared_ptr<AVCaptureInput>& input);
  void addOutput(const std::shared_ptr<AVCaptureOutput>& output);

  bool isRunning() const;
  /// The microphone is warm: the first buffer is with the delegates when this returns (unless the microphone
  /// is set to come late, or the delegate's queue is the one this is called on: then it follows). An empty
  /// session runs and delivers nothing.
  void startRunning();
  /// Nothing more is delivered but a buffer that is on its way to its delegate already. Never waits.
  void stopRunning();

 private:
  void connect();

  AVCaptureSessionPreset preset_ = AVCaptureSessionPresetHigh;
  std::shared_ptr<AVCaptureInput> input_;
  std::vector<std::shared_ptr<AVCaptureAudioDataOutput>> outputs_;
  mutable Mutex mutex_;                                           // held for the exchange alone
  std::shared_ptr<AudioCapture> capture_ IOS_GUARDED_BY(mutex_);  // while running
  bool running_ IOS_GUARDED_BY(mutex_) = false;
};

}  // namespace ios
