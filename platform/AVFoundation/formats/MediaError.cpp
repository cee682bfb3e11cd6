#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>

#include "AVFoundation/AVError.h"
#include "AVFoundation/CodecFault.h"
#include "AVFoundation/Private/FFmpeg.h"
#include "AVFoundation/Private/MediaError.h"

namespace ios {
namespace {

using AskForFault = std::function<int(const std::string&)>;

/// From the process's environment; empty if it sets none.
AskForFault firstFault() {
  const char* text = std::getenv("IOS_CODEC_FAULT");
  const std::string fault = text ? text : "";
  const std::size_t colon = fault.rfind(':');
  if (colon == std::string::npos) return nullptr;
  return [operation = fault.substr(0, colon),
          left = std::make_shared<std::atomic<long>>(std::atol(fault.c_str() + colon + 1))](
             const std::string& asked) { return asked == operation && (*left)-- <= 0 ? EIO : 0; };
}

struct Fault {
  std::mutex mutex;
  AskForFault ask = firstFault();

  static Fault& shared() {
    static auto& fault = *new Fault;
    return fault;
  }
};

long errorCode(int code) {
  if (meansNoRoom(AVUNERROR(code))) return AVErrorDiskFull;
  switch (code) {
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

std::string MediaError::description() const {
  if (!reason.empty()) return "could not " + operation + ": " + reason;
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  return "could not " + operation + ": " + text + " (" + std::to_string(code) + ")";
}

std::shared_ptr<NSError> MediaError::asError() const {
  return std::make_shared<NSError>(AVFoundationErrorDomain, errorCode(code), description());
}

tl::unexpected<MediaError> failed(const std::string& operation, int code) {
  return failure(MediaError{operation, code, {}});
}

tl::unexpected<MediaError> refused(const std::string& operation, const std::string& reason) {
  return failure(MediaError{operation, 0, reason});
}

tl::unexpected<MediaError> failed(const FileError& error) {
  return failed(error.operation + " " + error.path.filename().string(), AVERROR(error.code));
}

tl::unexpected<MediaError> outOfMemory(const std::string& operation) {
  return failed(operation, AVERROR(ENOMEM));
}

MediaResult<> checked(const std::string& operation, int result) {
  if (result < 0) return failed(operation, result);
  return {};
}

MediaResult<> codecFault(const std::string& operation) {
  AskForFault ask;
  {
    std::lock_guard lock(Fault::shared().mutex);
    ask = Fault::shared().ask;
  }
  const int code = ask ? ask(operation) : 0;
  if (code != 0) return failed(operation, AVERROR(code));
  return {};
}

void setCodecFault(std::function<int(const std::string& operation)> fault) {
  std::lock_guard lock(Fault::shared().mutex);
  Fault::shared().ask = std::move(fault);
}

}  // namespace ios
