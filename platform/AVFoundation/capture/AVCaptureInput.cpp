#include "AVFoundation/AVCaptureInput.h"

#include "AVFoundation/AVError.h"
#include "AVFoundation/Microphone.h"
#include "Device/Device.h"

namespace ios {

std::shared_ptr<AVCaptureDeviceInput> AVCaptureDeviceInput::initWithDevice(
    const std::shared_ptr<AVCaptureDevice>& device, std::shared_ptr<NSError>& error) {
  const auto refuse = [&](AVError code, const std::string& reason) {
    error = std::make_shared<NSError>(AVFoundationErrorDomain, code,
                                      "could not use the capture device: " + reason);
    return nullptr;
  };
  if (!device || !device->isConnected()) return refuse(AVErrorDeviceNotConnected, "it is not connected");
  if (Device::current().permission("microphone") != Permission::authorized) {
    return refuse(AVErrorApplicationIsNotAuthorizedToUseDevice, "the application may not record");
  }
  std::string problem;
  if (!Microphone::shared().open(problem)) return refuse(AVErrorUnknown, problem);
  error = nullptr;
  return std::make_shared<AVCaptureDeviceInput>(device);
}

}  // namespace ios
