#include "UIKit/UINavigationController.h"
#include "UIKit/UISplitViewController.h"
#include "UIKit/UITabBarController.h"
#include "platform/UIKit/Support.h"

namespace controllers_test {
namespace {

Journal newJournal() {
  return std::make_shared<std::vector<std::string>>();
}

TEST(NavigationController, StackAndAppearanceFollowPushesAndPops) {
  TestPhone phone;
  const auto journal = newJournal();
  const auto list = screen("List", journal), detail = screen("Detail", journal);
  const auto stack = UINavigationController::withRootViewController(list);
  phone.show(stack);
  EXPECT_EQ("List willAppear, List didAppear", taken(journal));

  stack->pushViewController(detail, true);
  EXPECT_EQ(detail, stack->topViewController()) << "with the call";
  EXPECT_EQ("List willDisappear*, Detail willAppear*", taken(journal));
  EXPECT_EQ(stack, detail->navigationController());
  phone.runFor(0.5);
  EXPECT_EQ("List didDisappear*, Detail didAppear*", taken(journal));
  EXPECT_EQ(nullptr, list->view()->window());

  const auto modal = plain();
  detail->presentViewController(modal, false);
  EXPECT_EQ(modal, stack->visibleViewController());
  EXPECT_EQ(detail, stack->topViewController());
  modal->dismissViewControllerAnimated(false);
  taken(journal);

  EXPECT_TRUE(phone.tapText("List")) << "the way back bears the title it leads to";
  EXPECT_EQ(list, stack->topViewController());
  phone.runFor(0.5);
  EXPECT_EQ("Detail willDisappear*, List willAppear*, Detail didDisappear*, List didAppear*", taken(journal));
  EXPECT_EQ(nullptr, detail->navigationController());
  stack->popViewControllerAnimated(true);
  EXPECT_EQ(list, stack->topViewController()) << "the last one stays";
}

TEST(NavigationController, CallsInTheMiddleOfASlideLeaveOneScreen) {
  TestPhone phone;
  const auto journal = newJournal();
  const auto a = screen("A", journal), b = screen("B", journal), c = screen("C", journal);
  const auto stack = UINavigationController::withRootViewController(a);
  phone.show(stack);
  stack->pushViewController(b, true);
  phone.runFor(0.1);
  stack->pushViewController(c, true);
  phone.runFor(0.1);
  stack->popToRootViewControllerAnimated(true);
  phone.runFor(0.1);
  stack->pushViewController(c, true);
  phone.runFor(1);
  EXPECT_EQ(c, stack->topViewController());
  EXPECT_NE(nullptr, c->view()->window());
  EXPECT_EQ(nullptr, a->view()->window());
  EXPECT_EQ(nullptr, b->view()->window());
  int shown = 0;
  for (const auto& call : *journal) {
    shown += call.ends_with("didAppear*") || call.ends_with("didAppear");
    shown -= call.ends_with("didDisappear*") || call.ends_with("didDisappear");
  }
  EXPECT_EQ(1, shown) << taken(journal);
  const std::weak_ptr<UINavigationController> weak = stack;
  stack->pushViewController(b, true);
  // The window and the stack go in the middle of the slide.
  UIApplication::sharedApplication()->keyWindow()->setRootViewController(plain());
  phone.runFor(1);
}

TEST(TabBarController, MoreLeadsToTheScreensWithoutAPlace) {
  TestPhone phone;
  const auto journal = newJournal();
  std::vector<Controller> screens;
  for (const char* title : {"One", "Two", "Three", "Four", "Five", "Six", "Seven"}) {
    screens.push_back(screen(title, journal));
  }
  const auto tabs = std::make_shared<UITabBarController>();
  tabs->setViewControllers(screens);
  phone.show(tabs);
  const auto more = tabs->moreNavigationController();
  EXPECT_EQ(screens[0], tabs->selectedViewController());
  EXPECT_EQ("One willAppear, One didAppear", taken(journal));
  EXPECT_FALSE(phone.shows("Five"));

  EXPECT_TRUE(phone.tapText("Two"));
  EXPECT_EQ(screens[1], tabs->selectedViewController());
  EXPECT_EQ("One willDisappear, Two willAppear, One didDisappear, Two didAppear", taken(journal));
  EXPECT_EQ(nullptr, more->topViewController()->isViewLoaded() ? more->topViewController()->view()->window()
                                                               : nullptr);

  EXPECT_TRUE(phone.tapText("More"));
  EXPECT_EQ(more, tabs->selectedViewController());
  EXPECT_NE(nullptr, more->topViewController()->view()->window());
  EXPECT_TRUE(phone.tapText("Six"));
  phone.runFor(0.5);
  EXPECT_EQ(screens[5], more->topViewController());
  EXPECT_EQ(tabs, screens[5]->tabBarController());
  EXPECT_TRUE(phone.tapText("One"));
  EXPECT_EQ(nullptr, screens[5]->view()->window());
  tabs->setSelectedIndex(6);
  EXPECT_EQ(more, tabs->selectedViewController());
  EXPECT_EQ(screens[6], more->topViewController());
  EXPECT_EQ(2u, more->viewControllers().size());
  phone.runFor(0.1);
  EXPECT_TRUE(phone.tapText("More")) << "once more: back to the list";
  phone.runFor(0.5);
  EXPECT_EQ(1u, more->viewControllers().size());
  EXPECT_EQ(tabs, screens[5]->parentViewController()) << "what was shown there belongs to the tabs again";
  tabs->setSelectedIndex(99);
  EXPECT_EQ(more, tabs->selectedViewController());

  tabs->setViewControllers({screens[0], screens[4]});
  EXPECT_EQ(screens[0], tabs->selectedViewController());
  EXPECT_EQ(nullptr, screens[6]->parentViewController());
  phone.runFor(0.1);
  EXPECT_TRUE(phone.shows("Five"));
  EXPECT_FALSE(phone.shows("More"));
}

TEST(SplitViewController, ShowsBothOnAWideDisplayAndTheLastOnANarrowOne) {
  for (const bool wide : {true, false}) {
    static TestPhone phone({.profile = "iPad Air 2"});
    const auto journal = newJournal();
    const auto list = screen("List", journal), detail = screen("Detail", journal);
    const auto split = std::make_shared<UISplitViewController>();
    split->setViewControllers({list, detail});
    const auto window = phone.show(split);
    if (!wide) {
      window->setFrame(CGRectMake(0, 0, 375, 667));
      phone.runFor(0.1);
    }
    EXPECT_EQ(wide, list->view()->window() != nullptr);
    EXPECT_EQ(window->bounds().width(), detail->view()->frame().maxX());
    EXPECT_EQ(wide, detail->view()->frame().minX() >= 320);
    EXPECT_EQ(
        wide ? "List willAppear, Detail willAppear, List didAppear, Detail didAppear"
             : "List willAppear, Detail willAppear, List didAppear, Detail didAppear, List willDisappear, "
               "List didDisappear",
        taken(journal));
    const auto other = screen("Other", journal);
    split->setViewControllers({list, other});
    phone.runFor(0.1);
    EXPECT_EQ("Detail willDisappear, Detail didDisappear, Other willAppear, Other didAppear", taken(journal));
    EXPECT_EQ(split->viewControllers(), split->childViewControllers());
  }
}

}  // namespace
}  // namespace controllers_test
