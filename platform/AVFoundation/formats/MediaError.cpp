#include <cerrno>
#include <mutex>
#include <utility>

#include "AVFoundation/AVError.h"
#include "AVFoundation/CodecFault.h"
#include "AVFoundation/FFmpeg+Private.h"
#include "AVFoundation/MediaError+Private.h"

namespace ios {
namespace {

struct Fault {
  std::mutex mutex;
  std::function<int(const std::string&)> ask;

  static Fault& shared() {
    static auto& fault = *new Fault;
    return fault;
  }
};

long errorCode(int code) {
  switch (code) {
    case AVERROR(ENOSPC):
    case AVERROR(EDQUOT):
      return AVErrorDiskFull;
    case AVERROR(EEXIST):
      return AVErrorFileAlreadyExists;
    case AVERROR(ENOMEM):
      return AVErrorOutOfMemory;
    case AVERROR_ENCODER_NOT_FOUND:
      return AVErrorEncoderNotFound;
    default:
      return AVErrorUnknown;
  }
}

}  // namespace

MediaError MediaError::disk(const FileError& error) {
  return {error.operation + " " + error.path.filename().string(), AVERROR(error.code), {}};
}

std::string MediaError::description() const {
  if (!reason.empty()) return "could not " + operation + ": " + reason;
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  return "could not " + operation + ": " + text + " (" + std::to_string(code) + ")";
}

std::shared_ptr<NSError> MediaError::asError() const {
  return std::make_shared<NSError>(AVFoundationErrorDomain, errorCode(code), description());
}

MediaFailure failed(const std::string& operation, int result) {
  if (result >= 0) return std::nullopt;
  return MediaError{operation, result, {}};
}

MediaFailure codecFault(const std::string& operation) {
  std::function<int(const std::string&)> ask;
  {
    std::lock_guard lock(Fault::shared().mutex);
    ask = Fault::shared().ask;
  }
  const int code = ask ? ask(operation) : 0;
  if (code == 0) return std::nullopt;
  return MediaError{operation, AVERROR(code), {}};
}

void setCodecFault(std::function<int(const std::string& operation)> fault) {
  std::lock_guard lock(Fault::shared().mutex);
  Fault::shared().ask = std::move(fault);
}

}  // namespace ios
