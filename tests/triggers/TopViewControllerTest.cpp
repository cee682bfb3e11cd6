#include <gtest/gtest.h>

#include "UIKit/UIAlertController.h"
#include "UIKit/UINavigationController.h"
#include "UIKit/UISplitViewController.h"
#include "UIKit/UITabBarController.h"
#include "support/TestPhone.h"
#include "triggers/UIApplication+TopViewController.h"

using namespace tellvane;
using testing_support::TestPhone;
using Controller = std::shared_ptr<UIViewController>;

namespace {
Controller plain() {
  return std::make_shared<UIViewController>();
}
}  // namespace

TEST(TopViewController, IsAbsentWithoutAWindowARootOrABase) {
  TestPhone phone;
  EXPECT_EQ(nullptr, topViewController());
  EXPECT_EQ(nullptr, topViewController(nullptr));
  const auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
  window->makeKeyAndVisible();
  EXPECT_EQ(nullptr, topViewController());
}

TEST(TopViewController, FindsTheEndOfContainersAndPresentations) {
  TestPhone phone;
  const auto emptyStack = std::make_shared<UINavigationController>();
  EXPECT_EQ(nullptr, topViewController(emptyStack)) << "not the stack itself";

  const Controller leaf = plain();
  EXPECT_EQ(leaf, topViewController(leaf));
  EXPECT_EQ(leaf, topViewController(UINavigationController::withRootViewController(leaf)));

  const auto split = std::make_shared<UISplitViewController>();
  EXPECT_EQ(split, topViewController(split));
  const Controller detail = plain();
  split->setViewControllers({plain(), detail});
  EXPECT_EQ(detail, topViewController(split));

  const Controller parent = plain(), first = plain(), last = plain();
  parent->addChildViewController(first);
  parent->addChildViewController(last);
  EXPECT_EQ(last, topViewController(parent));
}

TEST(TopViewController, OfTabsIsTheSelectedOneOrMoreWhileItShows) {
  TestPhone phone;
  const auto tabs = std::make_shared<UITabBarController>();
  const Controller child = plain();
  tabs->addChildViewController(child);
  EXPECT_EQ(child, topViewController(tabs)) << "no tab: the last child";

  std::vector<Controller> screens;
  for (int i = 0; i < 7; ++i) screens.push_back(plain());
  const auto bar = std::make_shared<UITabBarController>();
  bar->setViewControllers(screens);
  phone.show(bar);
  phone.runFor(0.1);
  EXPECT_EQ(screens[0], topViewController());
  bar->setSelectedIndex(2);
  EXPECT_EQ(screens[2], topViewController());
  bar->setSelectedViewController(bar->moreNavigationController());
  phone.runFor(0.1);
  EXPECT_EQ(bar->moreNavigationController()->topViewController(), topViewController()) << "the More list";
  bar->setSelectedIndex(1);
  phone.runFor(0.1);
  EXPECT_EQ(screens[1], topViewController());
}

TEST(TopViewController, IsWhatIsPresentedTheSheetIncluded) {
  TestPhone phone;
  const Controller leaf = plain();
  const auto stack = UINavigationController::withRootViewController(leaf);
  phone.show(stack);
  const Controller modal = plain();
  leaf->presentViewController(modal, true);
  EXPECT_EQ(modal, topViewController()) << "from the start of its animation";
  phone.runFor(1);
  const auto sheet =
      UIAlertController::alertControllerWithTitle("t", std::nullopt, UIAlertControllerStyle::actionSheet);
  modal->presentViewController(sheet, true);
  phone.runFor(1);
  EXPECT_EQ(sheet, topViewController());
  const auto application = UIApplication::sharedApplication();
  EXPECT_EQ(sheet, send<Controller>(*application, "topViewController:", Controller(stack))) << "by selector";
}
