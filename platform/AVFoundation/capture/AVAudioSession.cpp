#include "AVFoundation/AVAudioSession.h"

#include <utility>

#include "Device/PermissionPrompt.h"
#include "Foundation/NSBundle.h"

namespace ios {

const std::shared_ptr<AVAudioSession>& AVAudioSession::sharedInstance() {
  static auto& session = *new std::shared_ptr<AVAudioSession>(std::make_shared<AVAudioSession>());
  return session;
}

void AVAudioSession::requestRecordPermission(std::function<void(bool granted)> response) {
  const auto& info = NSBundle::mainBundle()->infoDictionary();
  const PropertyList* reason = nullptr;
  if (info && info->contains("NSMicrophoneUsageDescription"))
    reason = &info->at("NSMicrophoneUsageDescription");
  const std::string* text = reason ? reason->text() : nullptr;
  requestPermission({"microphone", text ? *text : ""}, std::move(response));
}

}  // namespace ios
