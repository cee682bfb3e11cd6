#pragma once

#include <memory>
#include <set>
#include <string>

#include "ObjectiveC/NSObject.h"
#include "UIKit/UIViewController.h"

namespace ios {

class PreviewBar;
class RecordedMovie;

inline const std::string UIActivityTypeSaveToCameraRoll = "com.apple.UIKit.activity.SaveToCameraRoll";
inline const std::string UIActivityTypeCopyToPasteboard = "com.apple.UIKit.activity.CopyToPasteboard";

/// The callbacks of a preview screen, on the main thread.
class RPPreviewViewControllerDelegate {
 public:
  virtual ~RPPreviewViewControllerDelegate() = default;
  /// The user has finished: `activityTypes` names what they did with the movie, nothing when they cancelled. The screen
  /// stays until its presenter dismisses it.
  virtual void previewControllerDidFinishWithActivityTypes(
      const std::shared_ptr<class RPPreviewViewController>& previewController,
      const std::set<std::string>& activityTypes) {
    (void)previewController, (void)activityTypes;
  }
};

/// Plays a recording and lets the user save it to the photo library, copy it, or leave it. The movie is deleted
/// with this screen. Only the recorder makes them. Main thread; one that was not presented may be released on
/// any thread.
class RPPreviewViewController : public Subclass<RPPreviewViewController, UIViewController> {
 public:
  explicit RPPreviewViewController(std::shared_ptr<RecordedMovie> movie);
  ~RPPreviewViewController() override;
  static MethodList methods();

  /// Not kept alive.
  std::shared_ptr<RPPreviewViewControllerDelegate> previewControllerDelegate() const {
    return delegate_.lock();
  }
  void setPreviewControllerDelegate(const std::shared_ptr<RPPreviewViewControllerDelegate>& delegate) {
    delegate_ = delegate;
  }

  void viewDidLoad() override;
  void viewWillLayoutSubviews() override;

 private:
  void cancel();
  void save();
  void share();
  void copy();
  void finish(const std::set<std::string>& activityTypes);
  void explain(const std::string& title, const std::string& reason);

  const std::shared_ptr<RecordedMovie> movie_;
  std::weak_ptr<RPPreviewViewControllerDelegate> delegate_;
  std::shared_ptr<PreviewBar> bar_;
  std::shared_ptr<UIView> picture_;
  bool finished_ = false;
};

}  // namespace ios
