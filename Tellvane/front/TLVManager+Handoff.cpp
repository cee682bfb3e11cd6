#include "Foundation/NSKeyedArchiver.h"
#include "Foundation/NSTimer.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIPasteboard.h"
#include "front/HandoffRecord.h"
#include "front/TLVManager.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "media/CaptureScreenshot.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

// The time the companion application has to open and to take the item.
constexpr double kRedirectCheckDelay = 3.0;

void open(const std::string& address) {
  if (const auto url = NSURL::URLWithString(address)) UIApplication::sharedApplication()->openURL(*url);
}

}  // namespace

void TLVManager::handOverScreenshot() {
  const auto record =
      NSKeyedArchiver::archivedDataWithRootObject(imageRecord(HandoffFacts::read(), currentScreen()));
  std::map<std::string, std::shared_ptr<NSData>> item{{"dictionaryInApp", record}};
  if (auto image = CaptureScreenshot::shared()->getSavedScreenshot()) item["imageData"] = image;
  setPasteBoardAndOpenTLV(item);
}

void TLVManager::saveVideoRecordingAndOpenTLV(const std::shared_ptr<NSNotification>& notification) {
  printTLV("Saved the recording to TLV");
  if (!notification->userInfo()) return;
  const PropertyList userInfo = *notification->userInfo();
  const std::string* assetId = userInfo.text("assetId");
  if (!assetId) return;
  const auto record = videoRecord(HandoffFacts::read(), currentScreen(), *assetId);
  setPasteBoardAndOpenTLV({{"TLVScreenVideoDetails", NSKeyedArchiver::archivedDataWithRootObject(record)}});
}

void TLVManager::setPasteBoardAndOpenTLV(const std::map<std::string, std::shared_ptr<NSData>>& item) {
  UIPasteboard::generalPasteboard()->setItems({item});
  open(TLV_URL);
  NSTimer::scheduledTimerWithTimeInterval(kRedirectCheckDelay, shared_from_this(), "isAppRedirectedtoTLV",
                                          nullptr, false);
}

void TLVManager::isAppRedirectedtoTLV() {
  printTLV("Redirect to App Store");
  UIPasteboard::generalPasteboard()->setItems({});
  if (!topViewController()) return;
  // An application that is not active was left for the companion, or is covered by the system's question
  // about it.
  if (!checkIfAppIsActive()) return;

  const auto alert = UIAlertController::alertControllerWithTitle(
      "Install Tellvane", "Looks like you don't have Tellvane installed", UIAlertControllerStyle::alert);
  alert->addAction(UIAlertAction::actionWithTitle(
      "Install", UIAlertActionStyle::default_,
      [self = sharedAs<TLVManager>()](const std::shared_ptr<UIAlertAction>& action) {
        self->openAppStore(action);
      }));
  alert->addAction(UIAlertAction::actionWithTitle("Cancel", UIAlertActionStyle::destructive, nullptr));
  presentOnTop(alert);
}

void TLVManager::openAppStore(const std::shared_ptr<UIAlertAction>&) {
  open(TLV_STORE_PAGE);
}

}  // namespace tellvane
