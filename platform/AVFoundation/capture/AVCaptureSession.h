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
/// `startRunning` and `stopRunning` may come from any thread. Destroying a session stops it.
class AVCaptureSession : public NSObject {
 public:
  ~AVCaptureSession() override;

  const AVCaptureSessionPreset& sessionPreset() const { return preset_; }
  void setSessionPreset(AVCaptureSessionPreset preset) { preset_ = std::move(preset); }

  /// False without an input, for a second one, and for a device that is gone or held by another application.
  bool canAddInput(const std::shared_ptr<AVCaptureInput>& input) const;
  /// False without an output, for one already in a session, and for one that does not take sound.
  bool canAddOutput(const std::shared_ptr<AVCaptureOutput>& output) const;
  /// What cannot be added is ignored.
  void addInput(const std::shared_ptr<AVCaptureInput>& input);
  void addOutput(const std::shared_ptr<AVCaptureOutput>& output);

  bool isRunning() const;
  /// The microphone is warm: the delegates have the first buffer when this returns (it follows later if the
  /// microphone is set to start late, or if this is called on the delegate's queue). An empty session runs and
  /// delivers nothing.
  void startRunning();
  /// Nothing more is delivered, except a buffer that is already on its way to its delegate. Never waits.
  void stopRunning();

 private:
  void connect();

  AVCaptureSessionPreset preset_ = AVCaptureSessionPresetHigh;
  std::shared_ptr<AVCaptureInput> input_;
  std::vector<std::shared_ptr<AVCaptureAudioDataOutput>> outputs_;
  mutable Mutex mutex_;                                           // held only for the exchange
  std::shared_ptr<AudioCapture> capture_ IOS_GUARDED_BY(mutex_);  // while running
  bool running_ IOS_GUARDED_BY(mutex_) = false;
};

}  // namespace ios
