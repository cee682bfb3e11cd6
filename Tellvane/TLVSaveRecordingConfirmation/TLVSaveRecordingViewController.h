#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Foundation/NSKeyedUnarchiver.h"
#include "Tellvane/Platform.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIViewController.h"

namespace tellvane {

/// The confirmation screen of a recording: plays it and asks what to do with it. Saving hands it over to the
/// companion application, deleting takes it out of the photo library again. While the screen is presented no
/// trigger is announced. Its interface file has its name. Main thread.
class TLVSaveRecordingViewController : public Subclass<TLVSaveRecordingViewController, UIViewController> {
 public:
  /// `assetId` is the recording's identifier in the photo library.
  TLVSaveRecordingViewController(std::string assetId, std::optional<std::string> nibName,
                                 std::shared_ptr<NSBundle> bundle);
  /// For a recording without an identifier.
  TLVSaveRecordingViewController(std::optional<std::string> nibName, std::shared_ptr<NSBundle> bundle);
  /// Not supported: stops the process, with a message.
  [[noreturn]] explicit TLVSaveRecordingViewController(const NSKeyedUnarchiver& coder);
  static MethodList methods();

  // Outlets. A part of the screen whose outlet is not connected is left out.
  /// Where the player goes.
  std::shared_ptr<UIView> playerView() const { return playerView_.lock(); }
  void setPlayerView(const std::shared_ptr<UIView>& view) { playerView_ = view; }
  /// The question.
  std::shared_ptr<UILabel> infoLabel() const { return infoLabel_.lock(); }
  void setInfoLabel(const std::shared_ptr<UILabel>& label) { infoLabel_ = label; }

  void viewDidLoad() override;
  /// Every appearance adds a player, on top of those of earlier ones.
  void viewDidAppear(bool animated) override;
  void didReceiveMemoryWarning() override;

  /// Posts TLV_SCREEN_RECORD with the identifier under "assetId", then dismisses the screen.
  void saveVideo(const id& sender);
  /// Orders the recording's deletion and dismisses the screen, without waiting for it.
  void deleteVideo(const id& sender);

 private:
  static std::string getVideoAssetUrlFromLocalidentifier(const std::string& identifier);
  void showQuestion();
  void addVideoViewInChildViewController();

  std::weak_ptr<UIView> playerView_;
  std::weak_ptr<UILabel> infoLabel_;
  std::string assetId_;
};

}  // namespace tellvane
