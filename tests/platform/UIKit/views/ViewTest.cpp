#include <gtest/gtest.h>

#include <functional>

#include "Foundation/NSRunLoop.h"
#include "UIKit/UIScrollView.h"
#include "platform/UIKit/Screen.h"

namespace ios {
namespace {

using testing_support::TestPhone;

// A red plate at 100,100 of 100×100 with a green one in it, hanging out of it to the right.
TEST(HitTest, FindsTheDeepestViewThatTakesTouches) {
  struct Row {
    const char* name;
    std::function<void(UIView& red, UIView& green)> change;
    CGPoint point;
    const char* hit;
  };
  const Row rows[] = {
      {"the plate", nullptr, {110, 110}, "red"},
      {"its subview", nullptr, {160, 150}, "green"},
      {"its subview outside of it", nullptr, {220, 150}, "window"},
      {"its right edge", nullptr, {200, 110}, "window"},
      {"its left edge", nullptr, {100, 110}, "red"},
      {"subview hidden", [](UIView&, UIView& g) { g.setHidden(true); }, {160, 150}, "red"},
      {"subview as good as clear", [](UIView&, UIView& g) { g.setAlpha(0.005); }, {160, 150}, "red"},
      {"subview faint", [](UIView&, UIView& g) { g.setAlpha(0.02); }, {160, 150}, "green"},
      {"subview takes no touches",
       [](UIView&, UIView& g) { g.setUserInteractionEnabled(false); },
       {160, 150},
       "red"},
      {"plate takes no touches",
       [](UIView& r, UIView&) { r.setUserInteractionEnabled(false); },
       {160, 150},
       "window"},
      {"plate hidden", [](UIView& r, UIView&) { r.setHidden(true); }, {160, 150}, "window"},
      {"plate turned, corner outside",
       [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeRotation(M_PI / 4)); },
       {103, 103},
       "window"},
      {"plate turned, tip inside",
       [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeRotation(M_PI / 4)); },
       {150, 85},
       "red"},
      {"plate enlarged",
       [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeScale(2, 2)); },
       {60, 60},
       "red"},
      {"plate shrunk to nothing",
       [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeScale(0, 0)); },
       {150, 150},
       "window"},
      {"plate scrolled",
       [](UIView& r, UIView&) { r.setBounds(CGRectMake(0, 40, 100, 100)); },
       {160, 115},
       "green"},
      {"beside every window", nullptr, {-5, 5}, "none"},
      {"nowhere", nullptr, {NAN, 5}, "none"},
  };
  TestPhone phone;
  const auto window = phone.show();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto red = addPlate(window, CGRectMake(100, 100, 100, 100), 0xff0000);
    const auto green = addPlate(red, CGRectMake(50, 40, 100, 20), 0x00ff00);
    if (row.change) row.change(*red, *green);
    const auto hit = window->hitTest(row.point, nullptr);
    EXPECT_STREQ(row.hit, hit == red ? "red" : hit == green ? "green" : hit ? "window" : "none");
    red->removeFromSuperview();
  }
}

TEST(HitTest, AsksWindowsFromTheFront) {
  TestPhone phone;
  const auto back = phone.show();
  const auto front = std::make_shared<UIWindow>(CGRectMake(0, 200, 375, 100));
  front->setWindowLevel(1);
  front->makeKeyAndVisible();
  back->makeKeyAndVisible();
  const auto onBack = std::make_shared<Listener>(), onFront = std::make_shared<Listener>();
  addTap(back, onBack);
  const auto tap = addTap(front, onFront);
  phone.tap({100, 250});
  phone.tap({100, 350});
  EXPECT_EQ(1, onFront->count);
  EXPECT_EQ(1, onBack->count);
  EXPECT_EQ((CGPoint{100, 50}), back->convertPointToView({100, 250}, front.get()))
      << "windows share the screen";
}

TEST(View, ConvertsPointsThroughTransformsAndScrolling) {
  TestPhone phone;
  const auto window = phone.show();
  const auto outer = addPlate(window, CGRectMake(100, 100, 100, 100), 0xff0000);
  outer->setTransform(CGAffineTransformMakeScale(2, 2));
  outer->setBounds(CGRectMake(0, 10, 100, 100));
  const auto inner = addPlate(outer, CGRectMake(20, 30, 10, 10), 0x00ff00);
  EXPECT_EQ((CGPoint{90, 90}), inner->convertPointToView({0, 0}, nullptr));
  EXPECT_EQ((CGPoint{5, 5}), inner->convertPointFromView({100, 100}, nullptr));
  const auto side = addPlate(window, CGRectMake(10, 10, 10, 10), 0x0000ff);
  EXPECT_EQ(CGRectMake(80, 80, 20, 20), inner->convertRectToView(inner->bounds(), side.get()));
  EXPECT_EQ(CGRectMake(50, 50, 200, 200), outer->frame()) << "the frame covers the enlarged view";
  outer->setFrame(CGRectMake(0, 0, 100, 100));
  EXPECT_EQ((CGSize{50, 50}), outer->bounds().size);
}

TEST(View, FollowsItsSuperviewAsTheMaskSays) {
  struct Row {
    const char* name;
    unsigned mask;
    CGRect frame, resized;  // in a superview of 100×100 that becomes 200×300
  };
  constexpr unsigned kAllMargins =
      UIViewAutoresizingFlexibleLeftMargin | UIViewAutoresizingFlexibleRightMargin |
      UIViewAutoresizingFlexibleTopMargin | UIViewAutoresizingFlexibleBottomMargin;
  const Row rows[] = {
      {"none", UIViewAutoresizingNone, CGRectMake(10, 20, 30, 40), CGRectMake(10, 20, 30, 40)},
      {"both sizes", UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight,
       CGRectMake(10, 20, 30, 40), CGRectMake(10, 20, 130, 240)},
      {"sticks to the far corner", UIViewAutoresizingFlexibleLeftMargin | UIViewAutoresizingFlexibleTopMargin,
       CGRectMake(60, 50, 30, 40), CGRectMake(160, 250, 30, 40)},
      {"stays in the middle", kAllMargins, CGRectMake(35, 30, 30, 40), CGRectMake(85, 130, 30, 40)},
      {"from nothing", UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight,
       CGRectMake(0, 0, 0, 0), CGRectMake(0, 0, 100, 200)},
      {"in proportion", UIViewAutoresizingFlexibleLeftMargin | UIViewAutoresizingFlexibleWidth,
       CGRectMake(20, 0, 60, 10), CGRectMake(45, 0, 135, 10)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto superview = std::make_shared<UIView>(CGRectMake(0, 0, 100, 100));
    const auto view = addPlate(superview, row.frame, 0xff0000);
    view->setAutoresizingMask(row.mask);
    superview->setFrame(CGRectMake(0, 0, 200, 300));
    const CGRect now = view->frame();
    EXPECT_NEAR(row.resized.minX(), now.minX(), 1e-9);
    EXPECT_NEAR(row.resized.minY(), now.minY(), 1e-9);
    EXPECT_NEAR(row.resized.width(), now.width(), 1e-9);
    EXPECT_NEAR(row.resized.height(), now.height(), 1e-9);
  }
}

class RestlessView : public Subclass<RestlessView, UIView> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  void layoutSubviews() override {
    ++layouts;
    setNeedsLayout();
  }
  int layouts = 0;
};

TEST(View, IsLaidOutAtTheNextRefreshAndNotForEver) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<RestlessView>(CGRectMake(0, 0, 10, 10));
  window->addSubview(view);
  EXPECT_EQ(0, view->layouts);
  Clock::shared().advanceFrame();
  EXPECT_GT(view->layouts, 0);
  phone.runFor(1);
  const int settled = view->layouts;
  phone.runFor(10);
  EXPECT_LE(view->layouts - settled, 2 * 601)
      << "one that always asks is asked once a refresh, not in a loop";
}

class MovingView : public Subclass<MovingView, UIView> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  void didMoveToWindow() override { log += window() ? "in " : "out "; }
  void didMoveToSuperview() override { log += superview() ? "on " : "off "; }
  std::string log;
};

TEST(View, IsNotifiedOfItsMoves) {
  TestPhone phone;
  const auto window = phone.show();
  const auto parent = std::make_shared<UIView>();
  const auto view = std::make_shared<MovingView>();
  parent->addSubview(view);
  EXPECT_EQ("on ", std::exchange(view->log, ""));
  window->addSubview(parent);
  EXPECT_EQ("in ", std::exchange(view->log, ""));
  window->addSubview(view);
  EXPECT_EQ("on ", std::exchange(view->log, "")) << "the window is the same";
  parent->removeFromSuperview();
  view->removeFromSuperview();
  EXPECT_EQ("out off ", std::exchange(view->log, ""));
}

TEST(View, ReordersAndRefusesALoop) {
  const auto parent = std::make_shared<UIView>();
  std::vector<std::shared_ptr<UIView>> made;
  for (int i = 0; i < 3; ++i) made.push_back(addPlate(parent, CGRectZero, 0));
  const auto order = [&] {
    std::string text;
    for (const auto& view : parent->subviews()) {
      text += static_cast<char>('0' + (std::find(made.begin(), made.end(), view) - made.begin()));
    }
    return text;
  };
  parent->bringSubviewToFront(parent->subviews().front());
  EXPECT_EQ("120", order());
  parent->insertSubviewAtIndex(parent->subviews()[2], 1);
  EXPECT_EQ("102", order());
  parent->insertSubviewAtIndex(parent->subviews()[0], 99);
  EXPECT_EQ("021", order());
  EXPECT_DEATH(made[1]->addSubview(parent), "subview of itself");
}

TEST(Scrolling, ADragTakesTheTouchFromTheButtonUnderIt) {
  TestPhone phone;
  const auto window = phone.show();
  const auto scroll = std::make_shared<UIScrollView>(CGRectMake(0, 100, 375, 300));
  scroll->setContentSize({375, 1000});
  window->addSubview(scroll);
  const auto view = std::make_shared<TouchedView>(CGRectMake(0, 0, 375, 1000));
  scroll->addSubview(view);

  play({down(0, {{1, {100, 300}}}), move(20, {{1, {100, 295}}}), up(40, {{1, {100, 292}}})});
  EXPECT_EQ("began moved ended", std::exchange(view->log, "")) << "too short for a drag";
  EXPECT_EQ(0, scroll->contentOffset().y);

  play({down(0, {{1, {100, 300}}}), move(20, {{1, {100, 280}}})});
  EXPECT_EQ("began cancelled", std::exchange(view->log, ""));
  EXPECT_TRUE(scroll->isDragging());
  play({move(20, {{1, {100, 240}}}), move(200, {{1, {100, 230}}}), up(500, {{1, {100, 230}}})});
  EXPECT_EQ(50, scroll->contentOffset().y);
  EXPECT_FALSE(scroll->isDragging());
  phone.runFor(2);
  EXPECT_EQ(50, scroll->contentOffset().y) << "the finger rested before it left";
}

TEST(Scrolling, GlidesOnAndStopsAtTheEndOrUnderAFinger) {
  TestPhone phone;
  const auto window = phone.show();
  const auto scroll = std::make_shared<UIScrollView>(CGRectMake(0, 0, 375, 667));
  scroll->setContentSize({375, 5000});
  window->addSubview(scroll);
  phone.device().input().swipe({100, 500}, {100, 300}, std::chrono::milliseconds(200));
  const CGFloat atLift = scroll->contentOffset().y;
  phone.runFor(0.3);
  EXPECT_GT(scroll->contentOffset().y, atLift + 50);
  play({down(0, {{1, {100, 300}}})});
  const CGFloat held = scroll->contentOffset().y;
  phone.runFor(1);
  EXPECT_EQ(held, scroll->contentOffset().y);
  play({up(0, {{1, {100, 300}}})});

  for (int i = 0; i < 12; ++i)
    phone.device().input().swipe({100, 600}, {100, 100}, std::chrono::milliseconds(100));
  phone.runFor(5);
  EXPECT_EQ(5000 - 667, scroll->contentOffset().y);
}

TEST(Scrolling, OnlyAViewWithRoomInThatDirectionFollowsTheFinger) {
  TestPhone phone;
  const auto window = phone.show();
  const auto outer = std::make_shared<UIScrollView>(CGRectMake(0, 0, 375, 667));
  outer->setContentSize({375, 2000});
  const auto inner = std::make_shared<UIScrollView>(CGRectMake(0, 0, 375, 300));
  inner->setContentSize({1000, 300});
  window->addSubview(outer);
  outer->addSubview(inner);
  play({down(0, {{1, {200, 200}}}), move(20, {{1, {200, 180}}}), move(40, {{1, {200, 150}}}),
        up(400, {{1, {200, 150}}})});
  EXPECT_EQ(30, outer->contentOffset().y);
  play({down(0, {{1, {200, 200}}}), move(20, {{1, {180, 200}}}), move(40, {{1, {150, 200}}}),
        up(400, {{1, {150, 200}}})});
  EXPECT_EQ(30, inner->contentOffset().x);
  EXPECT_EQ(30, outer->contentOffset().y);
}

// A drag that ends with the view's removal or destruction must not leave the run loop tracking: the whole
// application's delayed performs would never run.
TEST(Scrolling, TheRunLoopTracksWhileADragLastsHoweverItEnds) {
  TestPhone phone;
  for (const char* end : {"lifted", "removed", "destroyed", "with its window", "background"}) {
    SCOPED_TRACE(end);
    auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
    window->makeKeyAndVisible();
    auto scroll = std::make_shared<UIScrollView>(CGRectMake(0, 0, 375, 667));
    scroll->setContentSize({375, 2000});
    window->addSubview(scroll);
    play({down(0, {{1, {100, 300}}}), move(20, {{1, {100, 250}}})});
    EXPECT_EQ(UITrackingRunLoopMode, NSRunLoop::mainRunLoop()->currentMode());
    const std::string how = end;
    if (how == "removed") scroll->removeFromSuperview();
    if (how == "destroyed") std::exchange(scroll, nullptr)->removeFromSuperview();
    if (how == "with its window") {
      scroll.reset();
      window.reset();
    }
    if (how == "background") UIApplication::sharedApplication()->moveToBackground("home");
    const auto& meanwhile = how == "lifted" ? UITrackingRunLoopMode : NSDefaultRunLoopMode;
    EXPECT_EQ(meanwhile, NSRunLoop::mainRunLoop()->currentMode());
    play({up(20, {{1, {100, 250}}})});
    EXPECT_EQ(NSDefaultRunLoopMode, NSRunLoop::mainRunLoop()->currentMode());
    UIApplication::sharedApplication()->moveToForeground();
  }
}

}  // namespace
}  // namespace ios
