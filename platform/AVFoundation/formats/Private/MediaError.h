#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Device/Files.h"
#include "Foundation/NSError.h"

namespace ios {

/// What went wrong with a movie: what was being done, and the code of whoever failed.
struct MediaError {
  std::string operation;  // "encode a picture"
  int code = 0;           // FFmpeg's, which hold the negative errnos; 0 for a refusal of the platform's own
  std::string reason;     // empty: what the code stands for

  static MediaError refusal(std::string operation, std::string reason) {
    return {std::move(operation), 0, std::move(reason)};
  }
  static MediaError disk(const FileError& error);
  /// "could not encode a picture: No space left on device (-28)"
  std::string description() const;
  std::shared_ptr<NSError> asError() const;
};

using MediaFailure = std::optional<MediaError>;

/// A failure unless `result` is that of a success (not negative).
[[nodiscard]] MediaFailure failed(const std::string& operation, int result);
/// The failure that tests have put on `operation`, if any.
[[nodiscard]] MediaFailure codecFault(const std::string& operation);

}  // namespace ios
