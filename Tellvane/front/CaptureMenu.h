#pragma once

#include <functional>
#include <memory>

#include "Tellvane/Platform.h"
#include "UIKit/UIAlertController.h"

namespace tellvane {

/// The sheet "Options", from which the user chooses what to capture. Main thread.
class CaptureMenu : public std::enable_shared_from_this<CaptureMenu> {
 public:
  using Handler = std::function<void(const std::shared_ptr<UIAlertAction>& action)>;

  /// Whether the sheet is on the screen, including while it appears or disappears.
  bool isUp() const;
  /// Presents the sheet on the top view controller. The user's choice calls one of the two; "Cancel" neither.
  void open(Handler captureScreenshot, Handler captureScreenRecording);

 private:
  std::weak_ptr<UIAlertController> sheet_;
  bool isComing_ = false;  // it waits for the screen below it to be closed
};

}  // namespace tellvane
