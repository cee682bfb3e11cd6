#include "UIKit/UIPopoverPresentationController.h"
#include "front/ScreenName.h"
#include "front/TLVManager.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "media/CaptureScreenshot.h"
#include "recording/TLVCaptureScreenRecording.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

std::string localized(const std::string& key) {
  return NSLocalizedString(key, "TLVLocalizable", TLV_BUNDLE(), "");
}

/// A sheet that the device shows as a popover needs a place to point at: the middle of the presenter's view,
/// and no arrow, since a trigger has no place of its own.
void anchorInTheMiddle(UIAlertController& sheet, UIViewController& presenter) {
  const auto popover = sheet.popoverPresentationController();
  if (!popover) return;
  const CGRect bounds = presenter.view()->bounds();
  popover->sourceView = presenter.view();
  popover->sourceRect = CGRectMake(bounds.midX(), bounds.midY(), 0, 0);
  popover->permittedArrowDirections = UIPopoverArrowDirectionNone;
}

}  // namespace

void TLVManager::captureScreen() {
  if (!isDebugMode()) return;
  const auto& recording = TLVCaptureScreenRecording::shared();
  if (recording->isRecording()) {
    recording->stopRecording();
    return;
  }
  // A second trigger would capture our own sheet and ask it to present another.
  if (isOwnAlertUp()) return;

  // Now, before the sheet is up: the image shows what the user saw.
  CaptureScreenshot::shared()->saveCurrentScreenshot();

  const auto top = topViewController();
  if (!top) return;
  setCurrentScreen(screenName(top->className(), APP_BUNDLE_NAME()));

  const auto sheet = UIAlertController::alertControllerWithTitle(localized("Options"), std::nullopt,
                                                                 UIAlertControllerStyle::actionSheet);
  const auto chosen = [self = sharedAs<TLVManager>()](
                          void (TLVManager::*handler)(const std::shared_ptr<UIAlertAction>&)) {
    return [self, handler](const std::shared_ptr<UIAlertAction>& action) { (self.get()->*handler)(action); };
  };
  sheet->addAction(UIAlertAction::actionWithTitle(localized("Capture Screen"), UIAlertActionStyle::default_,
                                                  chosen(&TLVManager::captureScreenshot)));
  sheet->addAction(UIAlertAction::actionWithTitle(localized("Capture Screen Recording"),
                                                  UIAlertActionStyle::default_,
                                                  chosen(&TLVManager::captureScreenRecording)));
  sheet->addAction(UIAlertAction::actionWithTitle(localized("Cancel"), UIAlertActionStyle::cancel, nullptr));
  anchorInTheMiddle(*sheet, *top);
  presentOwn(sheet, top);
}

void TLVManager::captureScreenshot(const std::shared_ptr<UIAlertAction>&) {
  printTLV("Capture Screenshot selected");
  handOverScreenshot();
}

void TLVManager::captureScreenRecording(const std::shared_ptr<UIAlertAction>&) {
  printTLV("Capture Screen recording selected");
  TLVCaptureScreenRecording::shared()->captureScreenRecording();
}

}  // namespace tellvane
