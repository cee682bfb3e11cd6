#include <gtest/gtest.h>

#include <cstring>

#include "UIKit/UIGraphics.h"
#include "platform/UIKit/Screen.h"

namespace ios {
namespace {

using testing_support::TestPhone;

/// A view that draws a green square of 10 points at its origin, and counts how often.
class DrawingView : public Subclass<DrawingView, UIView> {
 public:
  using Subclass::Subclass;
  static MethodList methods() { return {}; }
  void drawRect(const CGRect&) override {
    ++drawn;
    CGContextSetFillColorWithColor(UIGraphicsGetCurrentContext(), {0, 1, 0, 1});
    CGContextFillRect(UIGraphicsGetCurrentContext(), CGRectMake(0, 0, 10, 10));
    if (whileDrawing) whileDrawing();
  }
  int drawn = 0;
  std::function<void()> whileDrawing;
};

std::shared_ptr<UIImage> snapshot(const std::shared_ptr<UIView>& view, bool afterScreenUpdates) {
  UIGraphicsBeginImageContextWithOptions(view->bounds().size, false, 0);
  const bool drawn =
      view->drawViewHierarchyInRectAfterScreenUpdates({{0, 0}, view->bounds().size}, afterScreenUpdates);
  auto image = UIGraphicsGetImageFromCurrentImageContext();
  UIGraphicsEndImageContext();
  return drawn ? image : nullptr;
}

bool samePixels(const UIImage& a, const UIImage& b) {
  const CGImage &x = *a.CGImageValue(), &y = *b.CGImageValue();
  return x.width() == y.width() && x.height() == y.height() && x.bytesPerRow() == y.bytesPerRow() &&
         std::memcmp(x.pixels(), y.pixels(), x.bytesPerRow() * x.height()) == 0;
}

// White window, a red plate at 100,100 of 100×100 with a green one of 20×20 at its left top.
struct Look {
  const char* name;
  std::function<void(UIView& red, UIView& green)> change;
  CGPoint point;
  const char* color;
};
const Look kLooks[] = {
    {"as it is", nullptr, {105, 105}, "00ff00"},
    {"beside", nullptr, {99.6, 150}, "ffffff"},
    {"first pixel", nullptr, {100, 150}, "ff0000"},
    {"hidden", [](UIView& r, UIView&) { r.setHidden(true); }, {150, 150}, "ffffff"},
    {"faint", [](UIView& r, UIView&) { r.setAlpha(0.2); }, {150, 150}, "ffcccc"},
    {"faint as one group", [](UIView& r, UIView&) { r.setAlpha(0.2); }, {105, 105}, "ccffcc"},
    {"turned by a quarter",
     [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeRotation(M_PI / 2)); },
     {195, 105},
     "00ff00"},
    {"enlarged",
     [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeScale(2, 2)); },
     {85, 85},
     "00ff00"},
    {"scrolled",
     [](UIView& r, UIView&) { r.setBounds(CGRectMake(-30, -30, 100, 100)); },
     {135, 135},
     "00ff00"},
    {"hanging out", [](UIView&, UIView& g) { g.setFrame(CGRectMake(90, 0, 20, 20)); }, {205, 105}, "00ff00"},
    {"hanging out, clipped",
     [](UIView& r, UIView& g) {
       g.setFrame(CGRectMake(90, 0, 20, 20));
       r.setClipsToBounds(true);
     },
     {205, 105},
     "ffffff"},
    {"round background",
     [](UIView& r, UIView& g) {
       g.setHidden(true);
       r.layer()->cornerRadius = 30;
     },
     {103, 103},
     "ffffff"},
    {"round, subview not clipped",
     [](UIView& r, UIView&) { r.layer()->cornerRadius = 30; },
     {103, 103},
     "00ff00"},
    {"round, subview clipped",
     [](UIView& r, UIView&) {
       r.layer()->cornerRadius = 30;
       r.setClipsToBounds(true);
     },
     {103, 103},
     "ffffff"},
    {"border above the subview",
     [](UIView& r, UIView&) {
       r.layer()->borderWidth = 6;
       r.layer()->borderColor = {0, 0, 1, 1};
     },
     {103, 103},
     "0000ff"},
    {"shrunk to nothing",
     [](UIView& r, UIView&) { r.setTransform(CGAffineTransformMakeScale(0, 1)); },
     {150, 150},
     "ffffff"},
};

TEST(Rendering, DrawsTheTreeAsItsValuesSay) {
  TestPhone phone;
  const auto window = phone.show();
  for (const Look& row : kLooks) {
    SCOPED_TRACE(row.name);
    const auto red = addPlate(window, CGRectMake(100, 100, 100, 100), 0xff0000);
    const auto green = addPlate(red, CGRectMake(0, 0, 20, 20), 0x00ff00);
    if (row.change) row.change(*red, *green);
    red->setNeedsDisplay();
    EXPECT_EQ(row.color, onDisplay(row.point));
    red->removeFromSuperview();
  }
}

TEST(Rendering, AnUnchangedWindowIsNotDrawnAgainAndGivesTheSamePixels) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<DrawingView>(CGRectMake(10, 30, 50, 50));
  window->addSubview(view);
  const auto first = snapshot(window, true);
  const auto second = snapshot(window, true);
  const auto third = snapshot(window, false);
  EXPECT_EQ(1, view->drawn);
  EXPECT_TRUE(samePixels(*first, *second));
  EXPECT_TRUE(samePixels(*first, *third));
  EXPECT_EQ("00ff00", pixel(*first, {15, 35}));

  // Drawing the view by itself gives what the window shows of it.
  const auto alone = snapshot(view, true);
  EXPECT_EQ((CGSize{50, 50}), alone->size());
  EXPECT_EQ("00ff00", pixel(*alone, {5, 5}));
  EXPECT_EQ("000000", pixel(*alone, {20, 20}));
  EXPECT_FALSE(window->drawViewHierarchyInRectAfterScreenUpdates(window->bounds(), true)) << "no context";
}

TEST(Rendering, APictureTakenEarlierDoesNotChange) {
  TestPhone phone;
  const auto window = phone.show();
  const auto plate = addPlate(window, CGRectMake(100, 100, 100, 100), 0xff0000);
  std::vector<std::pair<std::shared_ptr<UIImage>, std::shared_ptr<UIImage>>> kept;
  for (unsigned color : {0xff0000u, 0x00ff00u, 0x0000ffu}) {
    plate->setBackgroundColor(UIColor::colorWithHex(color));
    kept.emplace_back(snapshot(window, true), UIApplication::sharedApplication()->displayImage());
  }
  const char* colors[] = {"ff0000", "00ff00", "0000ff"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(colors[i], pixel(*kept[i].first, {150, 150}));
    EXPECT_EQ(colors[i], pixel(*kept[i].second, {150, 150}));
  }
}

// Without screen updates a picture shows what the last refresh put on the display, not what changed after it.
TEST(Rendering, WithoutScreenUpdatesTheDisplaysLastRefreshShows) {
  TestPhone phone;
  const auto window = phone.show();
  const auto plate = addPlate(window, CGRectMake(100, 100, 100, 100), 0xff0000);
  phone.runFor(0.105);  // between two refreshes
  EXPECT_EQ("ff0000", pixel(*snapshot(window, false), {150, 150}));
  plate->setBackgroundColor(UIColor::colorWithHex(0x00ff00));
  EXPECT_EQ("ff0000", pixel(*snapshot(window, false), {150, 150}));
  Clock::shared().advanceFrame();
  EXPECT_EQ("00ff00", pixel(*snapshot(window, false), {150, 150}));
  plate->setBackgroundColor(UIColor::colorWithHex(0xffff00));
  EXPECT_EQ("ffff00", pixel(*snapshot(window, false), {150, 150})) << "in the refresh's own turn";
  phone.runFor(0.001);
  plate->setBackgroundColor(UIColor::colorWithHex(0x0000ff));
  EXPECT_EQ("0000ff", pixel(*snapshot(window, true), {150, 150}));
  plate->setFrame(CGRectMake(0, 0, 10, 10));
  window->setFrame(CGRectMake(0, 0, 200, 200));
  EXPECT_EQ("ffffff", pixel(*snapshot(window, false), {150, 150}))
      << "a window of another size has no rendering yet";
}

TEST(Rendering, ClearWindowsLetThroughWhatIsBehindThem) {
  TestPhone phone;
  const auto back = phone.show();
  addPlate(back, CGRectMake(100, 100, 100, 100), 0xff0000);
  const auto front = std::make_shared<UIWindow>(CGRectMake(0, 100, 375, 200));
  front->setWindowLevel(1);
  const auto plate = addPlate(front, CGRectMake(150, 0, 100, 100), 0x0000ff);
  front->makeKeyAndVisible();
  EXPECT_EQ("ff0000", onDisplay({120, 150}));
  EXPECT_EQ("0000ff", onDisplay({180, 150}));
  for (int i = 0; i < 3; ++i) {
    plate->removeFromSuperview();
    EXPECT_EQ("ff0000", onDisplay({180, 150}))
        << "the old picture must be gone from memory that is used again";
    front->addSubview(plate);
    EXPECT_EQ("0000ff", onDisplay({180, 150}));
  }
  front->setBackgroundColor(UIColor::blackColor());
  front->setAlpha(0.2);
  EXPECT_EQ("cc0000", onDisplay({120, 150}));
  front->setHidden(true);
  EXPECT_EQ("ff0000", onDisplay({120, 150}));
}

TEST(Rendering, TheStatusBarShowsTheTimeUntilItChanges) {
  TestPhone phone;
  const auto application = UIApplication::sharedApplication();
  const auto window = phone.show();
  const auto at941 = application->displayImage();
  EXPECT_EQ("ffffff", pixel(*at941, {100, 10}));
  EXPECT_EQ("000000", pixel(*at941, {9.25, 10})) << "the first dot of the signal";
  phone.runFor(30);
  EXPECT_EQ(at941, application->displayImage()) << "nothing changed";
  phone.runFor(60);
  EXPECT_FALSE(samePixels(*at941, *application->displayImage())) << "9:42";
}

// Drawing is the host's code.
TEST(Rendering, ADrawingViewMayChangeTheTreeAndAskForPictures) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<DrawingView>(CGRectMake(10, 30, 50, 50));
  const auto sibling = addPlate(window, CGRectMake(100, 100, 100, 100), 0xff0000);
  window->insertSubviewAtIndex(view, 0);
  view->whileDrawing = [&] {
    sibling->removeFromSuperview();
    window->drawViewHierarchyInRectAfterScreenUpdates(CGRectMake(0, 0, 10, 10), true);
    view->removeFromSuperview();
  };
  snapshot(window, true);
  EXPECT_EQ("ffffff", onDisplay({150, 150}));
  EXPECT_EQ("ffffff", onDisplay({15, 35}));
  EXPECT_EQ(1, view->drawn);
}

TEST(Animation, ShowsValuesOnTheirWayWhileTouchesFindTheEnd) {
  TestPhone phone;
  const auto window = phone.show();
  const auto plate = addPlate(window, CGRectMake(0, 100, 100, 100), 0xff0000);
  const auto fading = addPlate(window, CGRectMake(0, 400, 100, 100), 0x000000);
  int completed = 0;
  UIView::animateWithDuration(
      1,
      [&] {
        plate->setFrame(CGRectMake(200, 100, 100, 200));
        fading->setAlpha(0);
      },
      [&] { ++completed; });
  EXPECT_EQ("ff0000", onDisplay({50, 150}));
  EXPECT_EQ(CGRectMake(200, 100, 100, 200), plate->frame());
  EXPECT_EQ(plate, window->hitTest({250, 250}, nullptr));

  phone.runFor(0.5);  // the curve is half way at half time: 100 to 200, 150 high
  EXPECT_EQ("ff0000", onDisplay({110, 240}));
  EXPECT_EQ("ff0000", onDisplay({190, 240}));
  EXPECT_EQ("ffffff", onDisplay({90, 150}));
  EXPECT_EQ("ffffff", onDisplay({210, 150}));
  EXPECT_EQ("ffffff", onDisplay({150, 255}));
  EXPECT_NEAR(0x80, std::stoi(onDisplay({50, 450}).substr(0, 2), nullptr, 16), 8);
  EXPECT_EQ(0, completed);

  phone.runFor(0.6);
  EXPECT_EQ("ff0000", onDisplay({250, 250}));
  EXPECT_EQ("ffffff", onDisplay({150, 150}));
  EXPECT_EQ(1, completed);
}

TEST(Animation, StretchesWhatAViewDrewToTheSizeOnItsWay) {
  TestPhone phone;
  const auto window = phone.show();
  const auto view = std::make_shared<DrawingView>(CGRectMake(0, 100, 200, 200));
  window->addSubview(view);
  UIView::animateWithDuration(1, [&] { view->setFrame(CGRectMake(0, 100, 20, 20)); });
  EXPECT_EQ("00ff00", onDisplay({95, 195})) << "half of the view, large or small";
  EXPECT_EQ("ffffff", onDisplay({105, 195}));
  phone.runFor(2);
  EXPECT_EQ("00ff00", onDisplay({9, 109}));
  EXPECT_EQ("ffffff", onDisplay({11, 109}));
}

TEST(Animation, ANewOneStartsFromWhatIsShownAndAPlainChangeEndsIt) {
  TestPhone phone;
  const auto window = phone.show();
  const auto plate = addPlate(window, CGRectMake(0, 100, 20, 20), 0xff0000);
  const auto moveTo = [&](CGFloat x) {
    UIView::animateWithDuration(1, [&] { plate->setFrame(CGRectMake(x, 100, 20, 20)); });
  };
  moveTo(200);
  phone.runFor(0.5);
  moveTo(0);
  EXPECT_EQ("ff0000", onDisplay({110, 110}));
  phone.runFor(0.5);
  EXPECT_EQ("ff0000", onDisplay({60, 110}));
  plate->setFrame(CGRectMake(300, 100, 20, 20));
  EXPECT_EQ("ff0000", onDisplay({310, 110}));
  phone.runFor(2);
  EXPECT_EQ("ff0000", onDisplay({310, 110}));
}

TEST(Animation, OutlivesItsViews) {
  TestPhone phone;
  auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
  window->makeKeyAndVisible();
  auto plate = addPlate(window, CGRectMake(0, 100, 20, 20), 0xff0000);
  int completed = 0;
  UIView::animateWithDuration(
      1, [&] { plate->setAlpha(0); }, [&] { ++completed; });
  phone.runFor(0.5);
  plate->removeFromSuperview();
  plate.reset();
  window.reset();
  phone.runFor(1);
  EXPECT_EQ(1, completed);
}

TEST(Rendering, ALayerOutlivesItsView) {
  TestPhone phone;
  auto view = std::make_shared<DrawingView>(CGRectMake(0, 0, 20, 20));
  const auto layer = view->layer();
  UIGraphicsBeginImageContextWithOptions({20, 20}, true, 1);
  layer->renderInContext(UIGraphicsGetCurrentContext());
  EXPECT_EQ("00ff00", pixel(*UIGraphicsGetImageFromCurrentImageContext(), {5, 5}));
  view.reset();
  layer->renderInContext(UIGraphicsGetCurrentContext());
  UIGraphicsEndImageContext();
}

}  // namespace
}  // namespace ios
