#include "AVFoundation/AVCaptureDevice.h"

#include "AVFoundation/Microphone.h"
#include "Base/Mutex.h"

namespace ios {

std::shared_ptr<AVCaptureDevice> AVCaptureDevice::defaultDeviceWithMediaType(const AVMediaType& mediaType) {
  static Mutex mutex;
  static std::shared_ptr<AVCaptureDevice> device;
  const Microphone& microphone = Microphone::shared();
  if (mediaType != AVMediaTypeAudio || !microphone.isPresent()) return nullptr;
  MutexLock lock(mutex);
  if (!device || device->localizedName() != microphone.name()) {
    device = std::make_shared<AVCaptureDevice>(microphone.name());
  }
  return device;
}

bool AVCaptureDevice::isConnected() const {
  return Microphone::shared().isConnected();
}

}  // namespace ios
