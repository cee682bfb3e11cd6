#include <gtest/gtest.h>

#include "UIKit/AutomationCoding.h"
#include "UIKit/AutomationServer.h"
#include "UIKit/UIButton.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIScrollView.h"
#include "UIKit/UISwitch.h"
#include "UIKit/VisibleElements.h"
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

// With each of these faults, a flow would see or tap what no user can.
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

// What selectors go by: each field wrong would have a flow tap something else.
TEST(VisibleElements, SayWhatTheyAreAndWhatTheyAreIn) {
  TestPhone phone;
  const auto window = phone.show();
  UIView& screen = *window->rootViewController()->view();
  auto box = std::make_shared<UIView>(CGRectMake(0, 100, 375, 200));
  box->setAccessibilityIdentifier("box");
  auto plain = std::make_shared<UIView>(CGRectMake(0, 0, 375, 200));  // neither text nor identifier
  box->addSubview(plain);
  auto tab = std::make_shared<UIButton>(CGRectMake(0, 0, 100, 40));
  tab->setTitle("Tab");
  tab->setSelected(true);
  auto part = label("Tab", CGRectMake(0, 0, 100, 40));
  part->setAccessibilityIdentifier("part");
  tab->addSubview(part);
  plain->addSubview(tab);
  auto toggle = std::make_shared<UISwitch>(CGRectMake(0, 60, 0, 0));
  toggle->setAccessibilityLabel("Wind");
  plain->addSubview(toggle);
  screen.addSubview(box);
  screen.addSubview(label("Half", CGRectMake(315, 400, 100, 20)));

  std::string all;
  const auto describe = [&all] {
    all.clear();
    for (const auto& e : visibleElements(*UIApplication::sharedApplication())) {
      all += e.text + "#" + e.identifier + " " + e.role + " in " + std::to_string(e.parent) +
             (e.selected ? " selected" : "") + (e.on ? " on" : "") + (e.shown < 1 ? " cut" : "") + "\n";
    }
    return all;
  };
  EXPECT_EQ(describe(),
            "#box group in -1\nTab# button in 0 selected\nTab#part text in 1\nWind# switch in 0\n"
            "Half# text in -1 cut\n");
  phone.tap({25, 175});
  EXPECT_TRUE(toggle->isOn());
  EXPECT_NE(describe().find("Wind# switch in 0 on\n"), std::string::npos) << all;
}

TEST(AutomationServer, RefusesWhatMakesNoSense) {
  TestPhone phone;
  phone.show();
  AutomationServer server(*UIApplication::sharedApplication());
  const NSDictionary tap{{"request", "tap"}, {"x", 1.0},  {"y", 1},    {"count", 1},
                         {"fingers", 1},     {"hold", 1}, {"delay", 1}};
  const auto tapWith = [&tap](const std::string& key, const PropertyList& value) {
    NSDictionary changed = tap;
    changed[key] = value;
    return changed;
  };
  const struct {
    NSDictionary request;
    const char* problem;
  } kCases[] = {
      {{}, "a request without a name"},
      {{{"request", 7}}, "a request without a name"},
      {{{"request", "explode"}}, "no request is called \"explode\""},
      {{{"request", "tap"}}, "tap: \"x\" is missing or of another kind"},
      {tapWith("y", "left"), "tap: \"y\" is missing or of another kind"},
      {tapWith("fingers", std::int64_t{1} << 40), "tap: \"fingers\" is missing or of another kind"},
      {tapWith("count", -1), "a tap without taps or fingers"},
      {{{"request", "openURL"}, {"url", 1}}, "openURL: \"url\" is missing or of another kind"},
  };
  for (const auto& c : kCases) {
    const PropertyList answer(server.answer(c.request));
    ASSERT_TRUE(answer.text("problem")) << c.problem;
    EXPECT_EQ(*answer.text("problem"), c.problem);
  }
  EXPECT_EQ(phone.now(), 0);  // and none of it took time
  EXPECT_FALSE(server.hasEnded());
  EXPECT_EQ(*PropertyList(server.answer(tap)).text("problem"), "");
}

/// What a driver learns over the channel: the test plays both ends, through real bytes.
template <class Request>
automation::Reply<Request> askThroughBytes(AutomationServer& server, const Request& request) {
  const auto reply =
      automation::ask(request, [&server](const NSDictionary& asked) -> std::optional<NSDictionary> {
        const auto came = PropertyList::parse(PropertyList(asked).binary());
        const auto answer = PropertyList::parse(PropertyList(server.answer(*came->dictionary())).binary());
        return *answer->dictionary();
      });
  EXPECT_TRUE(reply) << Request::kName;
  return reply.value_or(automation::Reply<Request>());
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
  const auto reply = askThroughBytes(server, automation::Settle{std::chrono::seconds(3)});
  EXPECT_TRUE(reply.answer.still);
  EXPECT_EQ(reply.status.uptime, Clock::shared().now().time_since_epoch());
  EXPECT_GE(phone.now() - start, 0.5);
  EXPECT_LE(phone.now() - start, 0.7);

  UIView::animateWithDuration(5, [&] { block->setFrame(CGRectMake(0, 100, 50, 50)); });
  EXPECT_FALSE(askThroughBytes(server, automation::Settle{std::chrono::seconds(1)}).answer.still);
}

TEST(AutomationServer, TellsAndDoesThroughTheChannelsBytes) {
  TestPhone phone;
  const auto window = phone.show();
  auto button = std::make_shared<UIButton>(CGRectMake(20, 400, 100, 40));
  button->setTitle("Go");
  window->rootViewController()->view()->addSubview(button);
  AutomationServer server(*UIApplication::sharedApplication());

  const auto elements = askThroughBytes(server, automation::Elements()).answer.elements;
  ASSERT_EQ(elements.size(), 1u);
  EXPECT_EQ(elements[0].text, "Go");
  EXPECT_EQ(elements[0].frame, CGRectMake(20, 400, 100, 40));
  EXPECT_TRUE(elements[0].control);
  const Bytes png = askThroughBytes(server, automation::Screenshot()).answer.png;
  ASSERT_GT(png.size(), 8u);
  EXPECT_EQ(png[1], 'P');

  askThroughBytes(server,
                  automation::Tap{.location = {70, 420}, .count = 2, .hold = std::chrono::seconds(1)});
  EXPECT_NEAR(phone.now(), 2.1, 0.1);
  const auto status = askThroughBytes(server, automation::MoveToBackground{"home"}).status;
  EXPECT_EQ(status.front, "home");
  EXPECT_EQ(status.state, static_cast<int>(UIApplicationState::background));
  askThroughBytes(server, automation::Terminate());
  EXPECT_TRUE(server.hasEnded());
}

}  // namespace
