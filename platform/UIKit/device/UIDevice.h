#pragma once

#include <memory>
#include <string>

#include "ObjectiveC/NSObject.h"

namespace ios {

enum class UIDeviceOrientation : long {
  unknown = 0,
  portrait,
  portraitUpsideDown,
  landscapeLeft,
  landscapeRight,
  faceUp,
  faceDown
};
enum class UIUserInterfaceIdiom : long { phone = 0, pad = 1 };

/// Posted on the default centre, with the device as sender, after the device was turned.
inline const std::string UIDeviceOrientationDidChangeNotification =
    "UIDeviceOrientationDidChangeNotification";

/// The device that the application runs on. Any thread, but for the orientation (main thread).
class UIDevice : public Subclass<UIDevice, NSObject> {
 public:
  static MethodList methods();
  static const std::shared_ptr<UIDevice>& currentDevice();
  std::string systemVersion() const;
  std::string systemName() const { return "iOS"; }
  /// The family word: "iPhone", "iPad".
  std::string model() const;
  UIDeviceOrientation orientation() const;
  UIUserInterfaceIdiom userInterfaceIdiom() const;
};

}  // namespace ios
