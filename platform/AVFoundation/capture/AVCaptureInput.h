#pragma once

#include <memory>

#include "AVFoundation/AVCaptureDevice.h"
#include "Foundation/NSError.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class AVCaptureInput : public NSObject {};

/// A capture device as the input of a session.
class AVCaptureDeviceInput : public AVCaptureInput {
 public:
  /// Empty, with `error` set, without a device or if it is not connected, cannot be opened, or may not be used by the
  /// application (AVErrorApplicationIsNotAuthorizedToUseDevice).
  static std::shared_ptr<AVCaptureDeviceInput> initWithDevice(const std::shared_ptr<AVCaptureDevice>& device,
                                                              std::shared_ptr<NSError>& error);
  explicit AVCaptureDeviceInput(std::shared_ptr<AVCaptureDevice> device) : device_(std::move(device)) {}
  const std::shared_ptr<AVCaptureDevice>& device() const { return device_; }

 private:
  const std::shared_ptr<AVCaptureDevice> device_;
};

}  // namespace ios
