#pragma once

#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include "Base/Result.h"
#include "Base/ThreadAnnotations.h"
#include "Device/Files.h"
#include "Foundation/NSError.h"

namespace ios {

/// What went wrong with a movie: what was being done, and the error code of the component that failed.
struct MediaError {
  std::string operation;  // "encode a picture"
  int code = 0;           // FFmpeg's, which hold the negative errnos; 0 for a refusal of the platform's own
  std::string reason;     // empty: what the code stands for

  /// "could not encode a picture: No space left on device (-28)"
  std::string description() const;
  std::shared_ptr<NSError> asError() const;
};

template <class Value = void>
using MediaResult = Result<Value, MediaError>;

/// The failure of an operation: with FFmpeg's error code (a system error in FFmpeg's form included), with a reason of
/// the platform's own, or with a disk error.
[[nodiscard]] tl::unexpected<MediaError> failed(const std::string& operation, int code);
[[nodiscard]] tl::unexpected<MediaError> refused(const std::string& operation, const std::string& reason);
[[nodiscard]] tl::unexpected<MediaError> failed(const FileError& error);
[[nodiscard]] tl::unexpected<MediaError> outOfMemory(const std::string& operation);
/// Fails if `result` is one of FFmpeg's failures, a negative number.
[[nodiscard]] MediaResult<> checked(const std::string& operation, int result);
/// What `work` returns, or the failure of `operation` where memory runs out on the way. What locks `work` needs, its
/// caller holds: that is checked where it is written, not here.
template <class Work>
[[nodiscard]] IOS_THREAD_ANNOTATION(no_thread_safety_analysis) std::invoke_result_t<Work> withinMemory(
    const std::string& operation, Work&& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return outOfMemory(operation);
  }
}
/// The failure that tests have put on `operation`, if any.
[[nodiscard]] MediaResult<> codecFault(const std::string& operation);

}  // namespace ios
