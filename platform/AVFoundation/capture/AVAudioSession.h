#pragma once

#include <functional>
#include <memory>

#include "ObjectiveC/NSObject.h"

namespace ios {

/// The application's dealings with the device's sound.
class AVAudioSession : public NSObject {
 public:
  static const std::shared_ptr<AVAudioSession>& sharedInstance();

  /// Asks whether this application may record and answers once, on a queue of the platform's own. The user's
  /// earlier answer holds; if there is none, they are asked (PermissionPrompt.h) and the answer is kept.
  void requestRecordPermission(std::function<void(bool granted)> response);
};

}  // namespace ios
