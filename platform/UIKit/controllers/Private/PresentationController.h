#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "UIKit/Private/PopoverBubble.h"
#include "UIKit/Private/PresentationStyle.h"
#include "UIKit/UIViewController.h"

namespace ios {

class UIControl;

/// One presentation, from the call that presents until its dismissal has ended: the views around the
/// presented controller's view, its two transitions, and the states of both controllers. Held by the
/// presented controller, and by a transition that is under way. Main thread.
class PresentationController : public Subclass<PresentationController, NSObject> {
 public:
  static MethodList methods();
  /// Why no controller can present `controller`; empty if one can.
  static std::string obstacle(UIViewController& controller);
  /// The caller has checked both: `presenter` is an outermost container in a window, and presents nothing.
  static void present(const std::shared_ptr<UIViewController>& presenter,
                      const std::shared_ptr<UIViewController>& presented, bool animated,
                      std::function<void()> completion);
  void dismiss(bool animated, std::function<void()> completion);
  /// Removes everything that `root` and those above it present, at once and without completions: its window
  /// has another root now.
  static void abandon(UIViewController& root);

  /// Where the presenter's view was before a full-screen presentation took it away.
  std::shared_ptr<UIView> presenterSuperview() const { return presenterSuperview_.lock(); }

  /// Of the container view: lays the presented view out for the container's size.
  void layout();
  bool inTransition() const { return state_ == State::presenting || state_ == State::dismissing; }

  PresentationController(const std::shared_ptr<UIViewController>& presenter,
                         const std::shared_ptr<UIViewController>& presented);

 private:
  using Style = PresentationStyle;
  enum class State { presenting, shown, dismissing, ended };
  using Completions = std::vector<std::function<void()>>;

  bool coversPresenter() const { return style_ == Style::fullScreen; }
  double duration() const;
  void begin(bool animated);
  void build();
  void endPresenting(bool nextTurn);
  void beginDismissing(bool animated);
  void endDismissing(bool nextTurn);
  void removePresenterView();
  void restorePresenterView();
  void takeDown();
  std::shared_ptr<PresentationController> above() const;
  /// Moves the views to where they are shown, or to where they come from and leave to.
  void place(bool shown);
  void placePanel(const std::shared_ptr<UIView>& view, const CGRect& frame, CGFloat shift);
  PopoverPlacement popoverPlacement();
  void tappedBeside();
  static void run(Completions completions, bool nextTurn);

  std::weak_ptr<UIViewController> presenter_;
  std::weak_ptr<UIViewController> presented_;
  Style style_;
  State state_ = State::presenting;
  bool dismissalWaits_ = false;
  bool placedShown_ = false;
  Completions presentCompletions_, dismissCompletions_;
  std::shared_ptr<UIView> container_;
  std::shared_ptr<UIControl> dimming_;
  std::shared_ptr<PopoverBubble> bubble_;
  CGRect anchor_;  // of a popover, in the container; the last one while the source view is away
  std::weak_ptr<UIView> presenterSuperview_;
  std::size_t presenterIndex_ = 0;
};

}  // namespace ios
