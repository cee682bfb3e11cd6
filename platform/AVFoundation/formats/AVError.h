#pragma once

#include <string>

namespace ios {

inline const std::string AVFoundationErrorDomain = "AVFoundationErrorDomain";

enum AVError : long {
  AVErrorUnknown = -11800,
  AVErrorOutOfMemory = -11801,
  AVErrorDiskFull = -11807,
  AVErrorDeviceNotConnected = -11814,
  AVErrorFileAlreadyExists = -11823,
  AVErrorEncoderNotFound = -11834,
  AVErrorApplicationIsNotAuthorizedToUseDevice = -11852,
};

}  // namespace ios
