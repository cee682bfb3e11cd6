#include "front/CaptureMenu.h"

#include "UIKit/UIWindow.h"
#include "info/LocalizedText.h"
#include "triggers/PresentOnTop.h"

namespace tellvane {

bool CaptureMenu::isUp() const {
  if (isComing_) return true;
  const auto sheet = sheet_.lock();
  if (!sheet || !sheet->presentingViewController()) return false;
  // A sheet left on a window that the host has put away is not on the screen, and nobody could close it.
  const auto window = sheet->view()->window();
  return window && !window->isHidden();
}

void CaptureMenu::open(Handler captureScreenshot, Handler captureScreenRecording) {
  const auto sheet = UIAlertController::alertControllerWithTitle(localizedText("Options"), std::nullopt,
                                                                 UIAlertControllerStyle::actionSheet);
  const auto add = [&](const char* title, UIAlertActionStyle style, Handler handler) {
    sheet->addAction(UIAlertAction::actionWithTitle(localizedText(title), style, std::move(handler)));
  };
  add("Capture Screen", UIAlertActionStyle::default_, std::move(captureScreenshot));
  add("Capture Screen Recording", UIAlertActionStyle::default_, std::move(captureScreenRecording));
  add("Cancel", UIAlertActionStyle::cancel, nullptr);
  sheet_ = sheet;
  isComing_ = true;
  try {
    presentOnTop(sheet, [self = shared_from_this()](const auto&) { self->isComing_ = false; });
  } catch (...) {
    isComing_ = false;
    throw;
  }
}

}  // namespace tellvane
