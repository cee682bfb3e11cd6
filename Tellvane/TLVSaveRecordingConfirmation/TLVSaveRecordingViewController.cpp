#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"

#include "AVFoundation/AVPlayer.h"
#include "AVKit/AVPlayerViewController.h"
#include "Base/Programming.h"
#include "Foundation/NSNotificationCenter.h"
#include "Foundation/NSURL.h"
#include "TLVSaveRecordingConfirmation/SaveRecordingQuestion.h"
#include "Tellvane/TLVNotifications.h"
#include "ground/Memory.h"
#include "info/TLVConstants.h"
#include "media/TLVPhotoAlbum.h"
#include "triggers/GestureListeners.h"

namespace tellvane {
namespace {

constexpr double kTextSize = 17.0;

/// Empty when the system has no font of that name, so that the label's own font stays.
NSAttributes fontAttributes(const char* name) {
  const auto font = UIFont::fontWithNameSize(name, kTextSize);
  return font ? NSAttributes{{NSFontAttributeName, font}} : NSAttributes{};
}

}  // namespace

MethodList TLVSaveRecordingViewController::methods() {
  return {{"setPlayerView:", &TLVSaveRecordingViewController::setPlayerView},
          {"setInfoLabel:", &TLVSaveRecordingViewController::setInfoLabel},
          {"saveVideo:", &TLVSaveRecordingViewController::saveVideo},
          {"deleteVideo:", &TLVSaveRecordingViewController::deleteVideo}};
}

TLVSaveRecordingViewController::TLVSaveRecordingViewController(std::string assetId,
                                                               std::optional<std::string> nibName,
                                                               std::shared_ptr<NSBundle> bundle)
    : TLVSaveRecordingViewController(std::move(nibName), std::move(bundle)) {
  assetId_ = std::move(assetId);
}

TLVSaveRecordingViewController::TLVSaveRecordingViewController(std::optional<std::string> nibName,
                                                               std::shared_ptr<NSBundle> bundle)
    : Subclass(std::move(nibName), std::move(bundle)) {
  GestureListeners::ignoreTriggersOver(typeid(TLVSaveRecordingViewController));
}

TLVSaveRecordingViewController::TLVSaveRecordingViewController(const NSKeyedUnarchiver&) {
  programmingError("init(coder:) has not been implemented");
}

void TLVSaveRecordingViewController::viewDidLoad() {
  UIViewController::viewDidLoad();
  unlessMemoryRunsOut([this] { showQuestion(); });
}

void TLVSaveRecordingViewController::showQuestion() {
  const auto label = infoLabel();
  if (!label) return;
  const SaveRecordingQuestion question = saveRecordingQuestion(TLV_TITILE, APP_NAME());
  const auto text =
      std::make_shared<NSMutableAttributedString>(question.text, fontAttributes("HelveticaNeue"));
  for (const NSRange& range : question.emphasised)
    text->addAttributes(fontAttributes("HelveticaNeue-Medium"), range);
  label->setAttributedText(text);
}

void TLVSaveRecordingViewController::viewDidAppear(bool animated) {
  UIViewController::viewDidAppear(animated);
  unlessMemoryRunsOut([this] { addVideoViewInChildViewController(); });
}

void TLVSaveRecordingViewController::didReceiveMemoryWarning() {
  UIViewController::didReceiveMemoryWarning();
}

std::string TLVSaveRecordingViewController::getVideoAssetUrlFromLocalidentifier(
    const std::string& identifier) {
  return "assets-library://asset/asset.MP4?id=" + identifier.substr(0, identifier.find('/')) + "&ext=MP4";
}

void TLVSaveRecordingViewController::addVideoViewInChildViewController() {
  const auto url = NSURL::URLWithString(getVideoAssetUrlFromLocalidentifier(assetId_));
  const auto area = playerView();
  if (!url || !area) return;
  const auto controller = std::make_shared<AVPlayerViewController>();
  controller->setPlayer(AVPlayer::playerWithURL(*url));
  addChildViewController(controller);
  area->addSubview(controller->view());
  controller->view()->setFrame(CGRectMake(0, 0, area->bounds().width(), area->bounds().height()));
}

void TLVSaveRecordingViewController::saveVideo(const id&) {
  unlessMemoryRunsOut([this] {
    NSNotificationCenter::defaultCenter()->postNotificationName(TLV_SCREEN_RECORD, nullptr,
                                                                NSDictionary{{"assetId", assetId_}});
  });
  unlessMemoryRunsOut([this] { dismissViewControllerAnimated(true); });
}

void TLVSaveRecordingViewController::deleteVideo(const id&) {
  unlessMemoryRunsOut([this] { TLVPhotoAlbum::deleteFromPhotoAlbum(assetId_); });
  unlessMemoryRunsOut([this] { dismissViewControllerAnimated(true); });
}

}  // namespace tellvane
