#include "UIKit/UIImageView.h"

#include <gtest/gtest.h>

#include "platform/UIKit/Picture.h"

using namespace ios;

TEST(UIImageView, FitsItsImageAsItsModeSays) {
  const Picture wide = Picture::of({20, 10}, [] {
    CGContextSetFillColorWithColor(UIGraphicsGetCurrentContext(), {1, 0, 0, 1});
    CGContextFillRect(UIGraphicsGetCurrentContext(), {{0, 0}, {20, 10}});
  });
  UIImageView view(wide.image);
  EXPECT_EQ(CGRectMake(0, 0, 20, 10), view.frame());
  view.setFrame({{0, 0}, {40, 40}});
  struct Row {
    UIViewContentMode mode;
    CGRect expected;
  };
  for (const Row& row : {Row{UIViewContentMode::scaleToFill, {{30, 30}, {40, 40}}},
                         Row{UIViewContentMode::scaleAspectFit, {{30, 40}, {40, 20}}},
                         Row{UIViewContentMode::scaleAspectFill, {{10, 30}, {80, 40}}}}) {
    view.setContentMode(row.mode);
    const Picture picture = Picture::of({100, 100}, [&] {
      CGContextTranslateCTM(UIGraphicsGetCurrentContext(), 30, 30);
      view.drawRect(view.bounds());
    });
    EXPECT_EQ(row.expected, picture.ink()) << static_cast<int>(row.mode);
  }
  view.setImage(nullptr);
  EXPECT_EQ(CGRectZero, Picture::of({40, 40}, [&] { view.drawRect(view.bounds()); }).ink());
}
