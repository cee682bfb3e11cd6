#include <array>

#include "UIKit/UIButton.h"
#include "UIKit/UINavigationController.h"
#include "platform/UIKit/Support.h"

namespace controllers_test {
namespace {

/// A stack with one screen, shown, as a host has it.
struct Host {
  TestPhone phone;
  Journal journal = std::make_shared<std::vector<std::string>>();
  std::shared_ptr<JournalController> base = screen("base", journal);
  std::shared_ptr<UINavigationController> root = UINavigationController::withRootViewController(base);
  std::shared_ptr<UIWindow> window = phone.show(root);
  Host() { journal->clear(); }
};

std::string name(const Controller& controller) {
  return controller ? controller->title() : "-";
}

/// presented of the child, of the root, presenting of the modal, being presented, being dismissed.
std::string state(const Host& host, const Controller& modal) {
  return name(host.base->presentedViewController()) + " " + name(host.root->presentedViewController()) + " " +
         (modal->presentingViewController() == host.root ? "root" : "-") +
         (modal->isBeingPresented() ? " up" : "") + (modal->isBeingDismissed() ? " down" : "");
}

TEST(Presentation, StatesFollowACycleFromTheCallToTheEndOfTheTransition) {
  Host host;
  const auto modal = screen("modal", host.journal);
  const auto child = plain("child");
  modal->addChildViewController(child);
  int presented = 0, dismissed = 0;
  EXPECT_EQ("- - -", state(host, modal));

  host.base->presentViewController(modal, true, [&] { ++presented; });
  EXPECT_EQ("modal modal root up", state(host, modal)) << "at once";
  EXPECT_EQ(host.root, child->presentingViewController());
  host.phone.runFor(0.2);
  EXPECT_EQ("modal modal root up", state(host, modal)) << "halfway";
  EXPECT_EQ(0, presented);
  host.phone.runFor(0.3);
  EXPECT_EQ("modal modal root", state(host, modal)) << "shown";
  EXPECT_EQ(1, presented);
  EXPECT_EQ(nullptr, host.root->view()->window()) << "full screen covers all of it";
  EXPECT_EQ(host.window, modal->view()->window());

  modal->dismissViewControllerAnimated(true, [&] {
    ++dismissed;
    EXPECT_EQ("- - -", state(host, modal));
  });
  host.phone.runFor(0.2);
  EXPECT_EQ("modal modal root down", state(host, modal)) << "halfway back";
  EXPECT_EQ(host.window, host.root->view()->window()) << "what comes to light is there already";
  host.phone.runFor(0.3);
  EXPECT_EQ("- - -", state(host, modal));
  EXPECT_EQ(1, dismissed);
  EXPECT_EQ(nullptr, modal->view()->superview());
  EXPECT_EQ(1u, host.window->subviews().size()) << "nothing of it is left in the window";
}

TEST(Presentation, AppearanceCallsComeInThePlatformsOrder) {
  Host host;
  const auto modal = screen("modal", host.journal);
  host.base->presentViewController(modal, true);
  EXPECT_EQ("base willDisappear*, modal willAppear*", taken(host.journal));
  host.phone.runFor(0.5);
  EXPECT_EQ("modal didAppear*, base didDisappear*", taken(host.journal));

  const auto alert = UIAlertController::alertControllerWithTitle("t", "m", UIAlertControllerStyle::alert);
  modal->presentViewController(alert, true);
  host.phone.runFor(0.5);
  alert->dismissViewControllerAnimated(true);
  host.phone.runFor(0.5);
  EXPECT_EQ("", taken(host.journal)) << "an alert leaves what it stands on where it is";

  modal->dismissViewControllerAnimated(false);
  EXPECT_EQ("modal willDisappear, base willAppear, base didAppear, modal didDisappear", taken(host.journal));
}

TEST(Presentation, AWholeChainGoesWithOneDismissal) {
  Host host;
  const auto first = screen("first", host.journal), second = screen("second", host.journal);
  host.base->presentViewController(first, false);
  first->presentViewController(second, false);
  second->presentViewController(
      UIAlertController::alertControllerWithTitle("t", "m", UIAlertControllerStyle::alert), true);
  taken(host.journal);
  int ended = 0;
  host.base->dismissViewControllerAnimated(true, [&] { ++ended; });
  EXPECT_EQ("second willDisappear*, base willAppear*", taken(host.journal)) << "first was covered all along";
  host.phone.runFor(0.5);
  EXPECT_EQ("second didDisappear*, base didAppear*", taken(host.journal));
  EXPECT_EQ(1, ended);
  for (const Controller& controller : {Controller(host.base), Controller(first), Controller(second)}) {
    EXPECT_EQ(nullptr, controller->presentedViewController()) << controller->title();
    EXPECT_EQ(nullptr, controller->presentingViewController()) << controller->title();
  }
  EXPECT_EQ(1u, host.window->subviews().size());
}

TEST(Presentation, RefusalsSayWhyAndChangeNothing) {
  Host host;
  const auto shown = screen("shown", host.journal);
  const auto other = plain("other");
  const auto outside = plain("outside");
  bool called = false;
  const auto refused = [&](const Controller& presenter, const Controller& presented, const std::string& why) {
    const auto said =
        complaintsOf([&] { presenter->presentViewController(presented, true, [&] { called = true; }); });
    EXPECT_NE(std::string::npos, said.find(why)) << said;
    EXPECT_EQ(0u, said.find("tellvane-platform: Attempt to present <"));
    EXPECT_EQ(said.size() - 1, said.find('\n')) << "one line";
  };
  refused(outside, other, "on <UIViewController> whose view is not in the window hierarchy");
  refused(host.base, host.base, "while it is shown already");
  refused(host.base, host.root, "while it is shown already");
  refused(host.base, nullptr, "Attempt to present <nil>");

  host.base->presentViewController(shown, true);
  refused(host.base, other, "which is already presenting <controllers_test.JournalController>");
  refused(host.root, other, "which is already presenting");
  refused(host.base, shown, "while it is shown already");
  host.phone.runFor(0.5);
  shown->dismissViewControllerAnimated(true);
  refused(host.base, other, "which is already presenting");
  refused(shown, other, "which is being dismissed");
  host.phone.runFor(0.5);
  EXPECT_EQ(nullptr, host.base->presentedViewController());
  EXPECT_EQ(nullptr, other->presentingViewController());
  EXPECT_FALSE(called);
  host.base->presentViewController(other, true, [&] { called = true; });
  host.phone.runFor(0.5);
  EXPECT_TRUE(called) << "free again";
}

TEST(Presentation, DismissingAtAnyTimeOrTwiceIsHarmless) {
  Host host;
  struct Row {
    const char* when;
    double wait;
    bool animatedUp, animatedDown;
  };
  const auto rows = std::to_array<Row>({{"at once", 0, true, true},
                                        {"on its way", 0.2, true, true},
                                        {"on its way, without animation", 0.2, true, false},
                                        {"shown", 0.6, true, true},
                                        {"without any animation", 0, false, false}});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.when);
    const auto modal = screen("modal", host.journal);
    std::string ends;
    host.base->presentViewController(modal, row.animatedUp, [&] { ends += "p"; });
    host.phone.runFor(row.wait);
    modal->dismissViewControllerAnimated(row.animatedDown, [&] { ends += "1"; });
    modal->dismissViewControllerAnimated(row.animatedDown, [&] { ends += "2"; });
    if (!row.animatedDown) {
      EXPECT_EQ(nullptr, host.base->presentedViewController()) << "at once";
    }
    host.phone.runFor(1);
    host.base->dismissViewControllerAnimated(true, [&] { ends += "3"; });
    host.phone.runFor(1);
    EXPECT_EQ("p123", ends);
    EXPECT_EQ(nullptr, host.base->presentedViewController());
    EXPECT_EQ(1u, host.window->subviews().size());
    const auto calls = taken(host.journal);
    EXPECT_EQ(calls.find("base didDisappear") < calls.size(), calls.find("base didAppear") < calls.size())
        << calls;
    EXPECT_EQ(std::string::npos, calls.find("didAppear", calls.find("base didAppear") + 6)) << calls;
  }
}

TEST(Presentation, TheNextOneMayStartFromTheEndOfTheLast) {
  Host host;
  const auto first = screen("first", host.journal), second = screen("second", host.journal),
             third = screen("third", host.journal);
  host.base->presentViewController(first, true);
  host.phone.runFor(0.5);
  host.base->onDidAppear = [&] { host.base->presentViewController(second, true); };
  first->dismissViewControllerAnimated(true);
  host.phone.runFor(1);
  EXPECT_EQ(second, host.base->presentedViewController()) << "from viewDidAppear";
  second->dismissViewControllerAnimated(true, [&] { host.base->presentViewController(third, true); });
  host.phone.runFor(1);
  EXPECT_EQ(third, host.base->presentedViewController()) << "from the completion";
  EXPECT_EQ(host.window, third->view()->window());
}

TEST(Presentation, SurvivesTheLossOfItsWindowOrRoot) {
  for (const bool midway : {true, false}) {
    for (const bool window : {true, false}) {
      Journal journal = std::make_shared<std::vector<std::string>>();
      static TestPhone phone;
      auto root = screen("root", journal);
      auto lost = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
      lost->setRootViewController(root);
      lost->makeKeyAndVisible();
      auto modal = screen("modal", journal);
      root->presentViewController(modal, true);
      phone.runFor(midway ? 0.2 : 1);
      modal->presentViewController(
          UIAlertController::alertControllerWithTitle("t", "m", UIAlertControllerStyle::alert), true);
      const std::weak_ptr<UIViewController> weakRoot = root, weakModal = modal;
      root.reset();
      modal.reset();
      if (window) {
        lost.reset();
      } else {
        const auto next = screen("next", journal);
        lost->setRootViewController(next);
        EXPECT_EQ(1u, lost->subviews().size()) << "the old root took along what it presented";
        phone.runFor(1);
        next->presentViewController(plain(), false);
        EXPECT_NE(nullptr, next->presentedViewController());
      }
      phone.runFor(1);
      EXPECT_TRUE(weakRoot.expired());
      EXPECT_TRUE(weakModal.expired());
    }
  }
}

class TapCounter : public Subclass<TapCounter, NSObject> {
 public:
  static MethodList methods() { return {{"tapped", &TapCounter::tapped}}; }
  void tapped() { ++taps; }
  int taps = 0;
};

TEST(Presentation, KeepsTouchesFromWhatLiesBelow) {
  TestPhone phone;
  const auto counter = std::make_shared<TapCounter>();
  const auto root = plain();
  const auto button = std::make_shared<UIButton>(CGRectMake(0, 0, 375, 667));
  button->addTarget(counter, "tapped", UIControlEventTouchUpInside);
  root->view()->addSubview(button);
  phone.show(root);
  phone.tap({20, 100});
  EXPECT_EQ(1, counter->taps);

  const auto alert = UIAlertController::alertControllerWithTitle("t", "m", UIAlertControllerStyle::alert);
  root->presentViewController(alert, true);
  phone.tap({20, 100});
  phone.runFor(1);
  phone.tap({20, 100});
  alert->dismissViewControllerAnimated(true);
  phone.tap({20, 100});
  EXPECT_EQ(1, counter->taps);
  phone.runFor(1);
  phone.tap({20, 100});
  EXPECT_EQ(2, counter->taps);
}

TEST(Presentation, FollowsTheScreensSize) {
  TestPhone phone;
  const auto root = plain();
  const auto window = phone.show(root);
  const auto modal = plain();
  const auto sheet =
      UIAlertController::alertControllerWithTitle("t", "m", UIAlertControllerStyle::actionSheet);
  sheet->addAction(UIAlertAction::actionWithTitle("a", UIAlertActionStyle::default_, nullptr));
  root->presentViewController(modal, true);
  modal->presentViewController(sheet, true);
  phone.runFor(1);
  window->setFrame(CGRectMake(0, 0, 667, 375));
  phone.runFor(0.1);
  EXPECT_EQ(CGRectMake(0, 0, 667, 375), modal->view()->frame());
  const CGRect panel = sheet->view()->frame();
  EXPECT_EQ(355, panel.width()) << "as wide as in portrait";
  EXPECT_EQ(365, panel.maxY());
  EXPECT_EQ(333.5, panel.midX());
  modal->dismissViewControllerAnimated(false);
  root->dismissViewControllerAnimated(false);
  EXPECT_EQ(CGRectMake(0, 0, 667, 375), root->view()->frame()) << "it was off the window when it was turned";
}

}  // namespace
}  // namespace controllers_test
