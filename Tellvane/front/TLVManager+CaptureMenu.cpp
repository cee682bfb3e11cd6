#include "UIKit/UIWindow.h"
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

}  // namespace

void TLVManager::captureScreen() {
  if (!isDebugMode()) return;
  const auto& recording = TLVCaptureScreenRecording::shared();
  if (recording->isRecording()) {
    recording->stopRecording();
    return;
  }
  // A second trigger would capture our own sheet and ask it to present another.
  if (isMenuUp()) return;

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
  menu_ = sheet;
  menuIsComing_ = true;
  presentOnTop(sheet, [self = sharedAs<TLVManager>()] { self->menuIsComing_ = false; });
}

bool TLVManager::isMenuUp() const {
  if (menuIsComing_) return true;
  const auto menu = menu_.lock();
  if (!menu || !menu->presentingViewController()) return false;
  // One that was left on a window which the host has put away is on no screen, and nobody could close it.
  const auto window = menu->view()->window();
  return window && !window->isHidden();
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
