#pragma once

#include <cstdint>

namespace ios {

using CVReturn = std::int32_t;

enum : CVReturn {
  kCVReturnSuccess = 0,
  kCVReturnInvalidArgument = -6661,
  kCVReturnAllocationFailed = -6662,
  kCVReturnInvalidPixelFormat = -6680,
  kCVReturnInvalidSize = -6681,
  kCVReturnInvalidPixelBufferAttributes = -6682,
};

}  // namespace ios
