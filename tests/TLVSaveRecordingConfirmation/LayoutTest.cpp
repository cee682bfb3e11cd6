#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "UIKit/UIControl.h"
#include "info/TLVConstants.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::TestPhone;

namespace {

/// Everything that is visible below `view`: the player's area, the label and the buttons.
void collect(const std::shared_ptr<UIView>& view, std::vector<std::shared_ptr<UIView>>& parts,
             const std::shared_ptr<UIView>& player) {
  for (const auto& part : view->subviews()) {
    if (part == player || !part->accessibilityLabel().empty()) {
      parts.push_back(part);
    } else {
      collect(part, parts, player);
    }
  }
}

std::string described(const CGRect& r) {
  return "(" + std::to_string(r.minX()) + ", " + std::to_string(r.minY()) + ") to (" +
         std::to_string(r.maxX()) + ", " + std::to_string(r.maxY()) + ")";
}

/// A folder to leave pictures of the screens in, for looking at them; none without the variable.
void keepPicture(const std::string& name) {
  const char* folder = std::getenv("TELLVANE_TEST_PICTURES");
  if (!folder) return;
  const auto png = UIImagePNGRepresentation(UIApplication::sharedApplication()->displayImage());
  std::ofstream(std::string(folder) + "/" + name + ".png", std::ios::binary)
      .write(reinterpret_cast<const char*>(png->bytes().data()),
             static_cast<std::streamsize>(png->bytes().size()));
}

/// Whether the whole text of a label or a button can be seen, at its full size.
bool isWhole(const UIView& part) {
  const CGSize size = part.bounds().size;
  const CGSize wanted = part.sizeThatFits({size.width, 0});
  return wanted.width <= size.width && wanted.height <= size.height;
}

/// Every part is on the screen, whole, large enough and covers no other; as much space is left of it as right.
void expectRoomForAll(const std::vector<std::shared_ptr<UIView>>& parts, const UIView& player,
                      const CGSize& size) {
  const CGFloat statusBar = 20, smallestTarget = 44;
  std::size_t buttons = 0;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const UIView& part = *parts[i];
    const CGRect frame = part.convertRectToView(part.bounds(), nullptr);
    SCOPED_TRACE(part.accessibilityLabel() + " " + described(frame));
    EXPECT_TRUE(frame.minX() >= 0 && frame.maxX() <= size.width && frame.minY() >= statusBar &&
                frame.maxY() <= size.height);
    if (!dynamic_cast<const UIControl*>(&part)) {
      EXPECT_DOUBLE_EQ(frame.minX(), size.width - frame.maxX());
    } else {
      ++buttons;
      EXPECT_GE(frame.height(), smallestTarget);
      EXPECT_GE(frame.width(), smallestTarget);
    }
    if (&part != &player) {
      EXPECT_TRUE(isWhole(part));
    } else {
      EXPECT_GE(frame.height(), size.height / 3);
    }
    for (std::size_t other = i + 1; other < parts.size(); ++other) {
      EXPECT_FALSE(
          CGRectIntersectsRect(frame, parts[other]->convertRectToView(parts[other]->bounds(), nullptr)));
    }
  }
  EXPECT_EQ(2u, buttons);
}

class Layout : public testing::TestWithParam<const char*> {};

}  // namespace

TEST_P(Layout, FitsEveryLanguageAndOrientation) {
  TestPhone::Options options;
  options.profile = GetParam();
  TestPhone phone(options);
  const auto window = phone.show();
  for (const char* language :
       {"en", "ar", "de", "es", "fr", "he", "it", "ja", "ko", "pt-BR", "ru", "zh-Hans"}) {
    for (const int orientation : {1, 3}) {
      SCOPED_TRACE(std::string(language) + (orientation == 1 ? ", upright" : ", sideways"));
      phone.device().changeSettings([&](DeviceSettings& settings) {
        settings.languages = {language};
        settings.orientation = orientation;
      });
      const auto screen = std::make_shared<TLVSaveRecordingViewController>(
          "A1/L0/001", "TLVSaveRecordingViewController", TLV_BUNDLE());
      window->rootViewController()->presentViewController(screen, false);
      phone.runFor(0.5);
      keepPicture(std::string(GetParam()) + " " + language + " " + std::to_string(orientation));

      std::vector<std::shared_ptr<UIView>> parts;
      collect(screen->view(), parts, screen->playerView());
      ASSERT_EQ(4u, parts.size());
      expectRoomForAll(parts, *screen->playerView(), phone.device().screenSize());
      // No text was left in English, and none is the same twice.
      EXPECT_NE(parts[2]->accessibilityLabel(), parts[3]->accessibilityLabel());
      EXPECT_EQ(std::string(language) == "en", parts[3]->accessibilityLabel() == "Save");
      // Saving is where a line of the language ends.
      const bool fromTheRight = std::string(language) == "ar" || std::string(language) == "he";
      const auto middle = [](const UIView& part) {
        return part.convertPointToView({part.bounds().midX(), part.bounds().midY()}, nullptr).x;
      };
      EXPECT_EQ(fromTheRight, middle(*parts[3]) < middle(*parts[2]));
      screen->dismissViewControllerAnimated(false);
      phone.runFor(0.5);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Confirmation, Layout,
                         testing::Values("iPhone SE", "iPhone 6", "iPhone 6 Plus", "iPad Air 2"));
