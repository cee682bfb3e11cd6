#include <gtest/gtest.h>

#include "UIKit/Automation/AutomationServer.h"
#include "UIKit/Automation/VisibleElements.h"
#include "UIKit/UIControl.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScrollView.h"
#include "support/TestPhone.h"

namespace {

using namespace ios;
using testing_support::TestPhone;

std::shared_ptr<UILabel> label(const std::string& text, CGRect frame) {
  auto made = std::make_shared<UILabel>(frame);
  made->setText(text);
  return made;
}

std::shared_ptr<UIView> cover(CGRect frame, CGFloat alpha) {
  auto made = std::make_shared<UIView>(frame);
  made->setBackgroundColor(UIColor::colorWithWhiteAlpha(0, alpha));
  return made;
}

std::string seen() {
  std::string texts;
  for (const auto& element : visibleElements(*UIApplication::sharedApplication())) {
    if (element.text.size() == 1) texts += element.text;
  }
  return texts;
}

// Each of these would make a flow see, or tap on, what nobody can.
TEST(VisibleElements, AreThoseThatAPersonWouldSee) {
  TestPhone phone;
  const auto window = phone.show();
  UIView& screen = *window->rootViewController()->view();
  const auto at = [](CGFloat y) { return CGRectMake(20, y, 100, 20); };

  screen.addSubview(label("a", at(50)));
  auto hidden = label("b", at(80));
  hidden->setHidden(true);
  screen.addSubview(hidden);
  auto faint = cover(CGRectMake(0, 100, 200, 60), 0);
  faint->setAlpha(0.01);
  faint->addSubview(label("c", CGRectMake(0, 0, 50, 20)));
  screen.addSubview(faint);
  screen.addSubview(label("d", CGRectMake(400, 50, 100, 20)));  // beyond the right edge
  screen.addSubview(label("e", at(200)));
  screen.addSubview(cover(CGRectMake(0, 190, 375, 40), 0.4));  // dims, does not hide
  screen.addSubview(label("f", at(250)));
  screen.addSubview(cover(CGRectMake(0, 240, 375, 40), 1));
  screen.addSubview(label("g", at(250)));  // in front of what covers "f"
  auto scroll = std::make_shared<UIScrollView>(CGRectMake(0, 300, 375, 50));
  scroll->setContentSize({375, 500});
  scroll->addSubview(label("h", CGRectMake(0, 10, 50, 20)));
  scroll->addSubview(label("i", CGRectMake(0, 60, 50, 20)));  // scrolled out
  screen.addSubview(scroll);
  auto button = std::make_shared<UIButton>(at(400));
  button->setTitle("j");
  button->addSubview(cover(CGRectMake(0, 0, 100, 20), 1));  // a part of the button hides nothing of it
  button->addSubview(label("j", CGRectMake(0, 0, 100, 20)));
  screen.addSubview(button);
  EXPECT_EQ(seen(), "aeghj");

  scroll->setContentOffset({0, 50});
  EXPECT_EQ(seen(), "aegij");
}

TEST(AutomationServer, RefusesWhatMakesNoSense) {
  TestPhone phone;
  phone.show();
  AutomationServer server(*UIApplication::sharedApplication());
  const struct {
    NSDictionary request;
    const char* problem;
  } kCases[] = {
      {{}, "a request without a name"},
      {{{"request", 7}}, "a request without a name"},
      {{{"request", "explode"}}, "no request is called \"explode\""},
      {{{"request", "tap"}, {"x", "left"}, {"y", 1.0}}, "a tap without a place"},
      {{{"request", "tap"}, {"x", 1.0}, {"y", 1}, {"count", -1}}, "a tap of nothing"},
      {{{"request", "swipe"}, {"fromX", 1.0}}, "a swipe from nowhere to nowhere"},
      {{{"request", "openURL"}}, "openURL without a URL"},
  };
  for (const auto& c : kCases) {
    const PropertyList answer(server.answer(c.request));
    ASSERT_TRUE(answer.text("problem")) << c.problem;
    EXPECT_EQ(*answer.text("problem"), c.problem);
  }
  EXPECT_EQ(phone.now(), 0);  // and none of it took time
  EXPECT_FALSE(server.hasEnded());
}

TEST(AutomationServer, SettlesWhenAnAnimationHasEnded) {
  TestPhone phone;
  const auto window = phone.show();
  auto block = cover(CGRectMake(0, 100, 50, 50), 1);
  window->rootViewController()->view()->addSubview(block);
  phone.runFor(0.1);
  AutomationServer server(*UIApplication::sharedApplication());
  const double start = phone.now();
  UIView::animateWithDuration(0.5, [&] { block->setFrame(CGRectMake(300, 100, 50, 50)); });
  const NSDictionary answer = server.answer({{"request", "settle"}, {"limit", std::int64_t{3'000'000'000}}});
  EXPECT_EQ(answer.at("still"), PropertyList(true));
  EXPECT_GE(phone.now() - start, 0.5);
  EXPECT_LE(phone.now() - start, 0.7);

  UIView::animateWithDuration(5, [&] { block->setFrame(CGRectMake(0, 100, 50, 50)); });
  const NSDictionary later = server.answer({{"request", "settle"}, {"limit", std::int64_t{1'000'000'000}}});
  EXPECT_EQ(later.at("still"), PropertyList(false));
}

}  // namespace
