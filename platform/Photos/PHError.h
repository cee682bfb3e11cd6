#pragma once

#include <string>

namespace ios {

/// Codes are the platform's.
inline const std::string PHPhotosErrorDomain = "PHPhotosErrorDomain";
enum PHPhotosError : long {
  PHPhotosErrorIdentifierNotFound = 3201,
  PHPhotosErrorInternalError = 3300,
  PHPhotosErrorInvalidResource = 3302,
  PHPhotosErrorNotEnoughSpace = 3305,
  PHPhotosErrorAccessRestricted = 3310,
  PHPhotosErrorAccessUserDenied = 3311,
};

}  // namespace ios
