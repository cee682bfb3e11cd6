#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform.h"
#include "UIKit/UIViewController.h"

namespace tellvane {

/// The confirmation screen of a recording: saving hands it over to the companion application. While it is
/// presented no trigger is announced. Main thread.
class TLVSaveRecordingViewController : public Subclass<TLVSaveRecordingViewController, UIViewController> {
 public:
  /// `assetId` is the recording's identifier in the photo library.
  TLVSaveRecordingViewController(std::string assetId, std::optional<std::string> nibName,
                                 std::shared_ptr<NSBundle> bundle);
  TLVSaveRecordingViewController(std::optional<std::string> nibName, std::shared_ptr<NSBundle> bundle);
  static MethodList methods();

  /// Posts TLV_SCREEN_RECORD with the identifier under "assetId", then dismisses the screen.
  void saveVideo(const id& sender);

 private:
  std::string assetId_;
};

}  // namespace tellvane
