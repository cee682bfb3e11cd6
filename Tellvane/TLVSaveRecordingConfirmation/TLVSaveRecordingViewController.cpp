#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"

#include "Foundation/NSNotificationCenter.h"
#include "info/TLVNotifications.h"

namespace tellvane {

MethodList TLVSaveRecordingViewController::methods() {
  return {{"saveVideo:", &TLVSaveRecordingViewController::saveVideo}};
}

TLVSaveRecordingViewController::TLVSaveRecordingViewController(std::string assetId,
                                                               std::optional<std::string> nibName,
                                                               std::shared_ptr<NSBundle> bundle)
    : TLVSaveRecordingViewController(std::move(nibName), std::move(bundle)) {
  assetId_ = std::move(assetId);
}

TLVSaveRecordingViewController::TLVSaveRecordingViewController(std::optional<std::string> nibName,
                                                               std::shared_ptr<NSBundle> bundle)
    : Subclass(std::move(nibName), std::move(bundle)) {}

void TLVSaveRecordingViewController::saveVideo(const id&) {
  NSNotificationCenter::defaultCenter()->postNotificationName(TLV_SCREEN_RECORD, nullptr,
                                                              NSDictionary{{"assetId", assetId_}});
  dismissViewControllerAnimated(true);
}

}  // namespace tellvane
