#include "front/Handoff.h"

#include "Foundation/NSKeyedArchiver.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIPasteboard.h"
#include "front/HandoffRecord.h"
#include "ground/Memory.h"
#include "ground/Threading.h"
#include "info/TLVConstants.h"
#include "media/CaptureScreenshot.h"
#include "triggers/PresentOnTop.h"

namespace tellvane {
namespace {

constexpr double kNextAttempt = 1.0;

std::shared_ptr<NSData> archive(const NSDictionary& record) {
  return NSKeyedArchiver::archivedDataWithRootObject(record);
}

void open(const std::string& address) {
  if (const auto url = NSURL::URLWithString(address)) UIApplication::sharedApplication()->openURL(*url);
}

}  // namespace

HandoffItem screenshotItem(const std::string& screenName) {
  HandoffItem item{{"dictionaryInApp", archive(imageRecord(HandoffFacts::read(), screenName))}};
  if (auto image = CaptureScreenshot::shared()->getSavedScreenshot()) item["imageData"] = image;
  return item;
}

HandoffItem recordingItem(const std::string& videoName, const std::string& assetId) {
  return {{"TLVScreenVideoDetails", archive(videoRecord(HandoffFacts::read(), videoName, assetId))}};
}

void handOver(const HandoffItem& item) {
  UIPasteboard::generalPasteboard()->setItems({item});
  open(TLV_URL);
}

void withdrawItem() {
  const bool withdrawn = unlessMemoryRunsOut([] { UIPasteboard::generalPasteboard()->setItems({}); });
  // It must not stay where everybody can read it.
  if (!withdrawn) unlessMemoryRunsOut([] { delay(kNextAttempt, dispatch_get_main_queue(), withdrawItem); });
}

void offerInstallation(std::function<void(const std::shared_ptr<UIAlertAction>& action)> install) {
  const auto alert = UIAlertController::alertControllerWithTitle(
      "Install Tellvane", "Looks like you don't have Tellvane installed", UIAlertControllerStyle::alert);
  alert->addAction(
      UIAlertAction::actionWithTitle("Install", UIAlertActionStyle::default_, std::move(install)));
  alert->addAction(UIAlertAction::actionWithTitle("Cancel", UIAlertActionStyle::destructive, nullptr));
  presentOnTop(alert);
}

void openStorePage() {
  open(TLV_STORE_PAGE);
}

}  // namespace tellvane
