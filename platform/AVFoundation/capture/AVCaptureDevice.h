#pragma once

#include <memory>
#include <string>

#include "AVFoundation/AVMediaFormat.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// A source of media on the device: the microphone, if it has one.
class AVCaptureDevice : public NSObject {
 public:
  explicit AVCaptureDevice(std::string localizedName) : localizedName_(std::move(localizedName)) {}
  /// The microphone for AVMediaTypeAudio, the same object for as long as it is connected; empty for other media or when
  /// the device has none.
  static std::shared_ptr<AVCaptureDevice> defaultDeviceWithMediaType(const AVMediaType& mediaType);
  bool isConnected() const;
  const std::string& localizedName() const { return localizedName_; }

 private:
  const std::string localizedName_;
};

}  // namespace ios
