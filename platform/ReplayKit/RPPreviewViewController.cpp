#include "ReplayKit/RPPreviewViewController.h"

#include <utility>

#include "AVFoundation/AVPlayer.h"
#include "AVKit/AVPlayerViewController.h"
#include "Device/Files.h"
#include "Photos/SystemSaving.h"
#include "ReplayKit/Private/PreviewBar.h"
#include "ReplayKit/Private/RecordedMovie.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIPasteboard.h"
#include "UIKit/UIPopoverPresentationController.h"

namespace ios {
namespace {

constexpr CGFloat kStatusBar = 20;
constexpr const char* kMovieType = "com.apple.quicktime-movie";

}  // namespace

RPPreviewViewController::RPPreviewViewController(std::shared_ptr<RecordedMovie> movie)
    : movie_(std::move(movie)) {}

RPPreviewViewController::~RPPreviewViewController() = default;

MethodList RPPreviewViewController::methods() {
  return {{"cancel", &RPPreviewViewController::cancel},
          {"save", &RPPreviewViewController::save},
          {"share", &RPPreviewViewController::share}};
}

void RPPreviewViewController::viewDidLoad() {
  view()->setBackgroundColor(UIColor::blackColor());
  const auto player = std::make_shared<AVPlayerViewController>();
  player->setPlayer(AVPlayer::playerWithURL(NSURL::fileURLWithPath(movie_->path())));
  addChildViewController(player);
  picture_ = player->view();
  bar_ = std::make_shared<PreviewBar>();
  bar_->cancel()->addTarget(shared_from_this(), "cancel", UIControlEventTouchUpInside);
  bar_->share()->addTarget(shared_from_this(), "share", UIControlEventTouchUpInside);
  bar_->save()->addTarget(shared_from_this(), "save", UIControlEventTouchUpInside);
  view()->addSubview(picture_);
  view()->addSubview(bar_);
}

void RPPreviewViewController::viewWillLayoutSubviews() {
  const CGSize size = view()->bounds().size;
  const CGFloat top = kStatusBar + PreviewBar::kHeight;
  bar_->setFrame(CGRectMake(0, 0, size.width, top));
  picture_->setFrame(CGRectMake(0, top, size.width, size.height - top));
}

void RPPreviewViewController::cancel() {
  finish({});
}

void RPPreviewViewController::save() {
  bar_->setOffersEnabled(false);
  saveMovieAsTheSystem(movie_->path(),
                       [self = sharedAs<RPPreviewViewController>()](const std::shared_ptr<NSError>& error) {
                         self->bar_->setOffersEnabled(true);
                         if (error) {
                           self->explain("The Recording Was Not Saved", error->localizedDescription());
                         } else {
                           self->finish({UIActivityTypeSaveToCameraRoll});
                         }
                       });
}

void RPPreviewViewController::share() {
  const auto sheet = UIAlertController::alertControllerWithTitle(std::nullopt, std::nullopt,
                                                                 UIAlertControllerStyle::actionSheet);
  const std::weak_ptr<RPPreviewViewController> weak = sharedAs<RPPreviewViewController>();
  const auto add = [&](const char* title, UIAlertActionStyle style,
                       void (RPPreviewViewController::*chosen)()) {
    sheet->addAction(
        UIAlertAction::actionWithTitle(title, style, [weak, chosen](const std::shared_ptr<UIAlertAction>&) {
          const auto self = weak.lock();
          if (self && chosen) (self.get()->*chosen)();
        }));
  };
  add("Copy", UIAlertActionStyle::default_, &RPPreviewViewController::copy);
  add("Save Video", UIAlertActionStyle::default_, &RPPreviewViewController::save);
  add("Cancel", UIAlertActionStyle::cancel, nullptr);
  if (const auto popover = sheet->popoverPresentationController()) {
    popover->sourceView = bar_->share();
    popover->sourceRect = bar_->share()->bounds();
  }
  presentViewController(sheet, true);
}

void RPPreviewViewController::copy() {
  FileError problem;
  auto bytes = readFile(movie_->path(), &problem);
  if (!bytes) return explain("The Recording Was Not Copied", problem.description());
  const auto pasteboard = UIPasteboard::generalPasteboard();
  const long before = pasteboard->changeCount();
  pasteboard->setItems({{{kMovieType, std::make_shared<NSData>(std::move(*bytes))}}});
  // A pasteboard that cannot be written keeps its old items, and the movie must not go.
  if (pasteboard->changeCount() == before)
    return explain("The Recording Was Not Copied", "The pasteboard could not be written.");
  finish({UIActivityTypeCopyToPasteboard});
}

void RPPreviewViewController::finish(const std::set<std::string>& activityTypes) {
  if (std::exchange(finished_, true)) return;  // cancelled while the movie was being saved
  if (const auto told = delegate_.lock()) {
    told->previewControllerDidFinishWithActivityTypes(sharedAs<RPPreviewViewController>(), activityTypes);
  }
}

void RPPreviewViewController::explain(const std::string& title, const std::string& reason) {
  const auto alert =
      UIAlertController::alertControllerWithTitle(title, reason, UIAlertControllerStyle::alert);
  alert->addAction(UIAlertAction::actionWithTitle("OK", UIAlertActionStyle::default_, nullptr));
  presentViewController(alert, true);
}

}  // namespace ios
