#include <gtest/gtest.h>

#include "ScarceMemory.h"
#include "Tellvane/TLVManager.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UILabel.h"
#include "UIKit/UIPasteboard.h"
#include "media/CaptureScreenshot.h"
#include "support/TestPhone.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

using namespace testing_support;

std::shared_ptr<UILabel> showNote(TestPhone& phone) {
  const auto window = phone.show();
  auto label = std::make_shared<UILabel>(CGRectMake(20, 40, 280, 30));
  label->setText("A note");
  window->rootViewController()->view()->addSubview(label);
  return label;
}

/// From the trigger to the offer of the companion, as far as one gets.
void captureStill(const TestPhone& phone) {
  phone.device().input().shake();
  phone.runFor(1);
  phone.tapText("Capture Screen");
  phone.runFor(4.5);
  phone.tapText("Install");
  phone.runFor(1);
}

void goBack(const TestPhone& phone) {
  UIApplication::sharedApplication()->moveToForeground();
  phone.runFor(1);
  const auto root = UIApplication::sharedApplication()->keyWindow()->rootViewController();
  if (root->presentedViewController()) root->dismissViewControllerAnimated(false);
  phone.runFor(4);
}

class ScarceStillImage : public testing::Test {
 protected:
  ScarceStillImage() {
    label_ = showNote(phone_);
    Tellvane::instantiateSDK(true, false);
    phone_.runFor(3);
    captureStill(phone_);
    goBack(phone_);
    first_ = CaptureScreenshot::shared()->getSavedScreenshot();
  }
  void capture() {
    label_->setNeedsDisplay();
    captureStill(phone_);
  }
  void check() {
    goBack(phone_);
    ASSERT_EQ(first_->bytes(), CaptureScreenshot::shared()->getSavedScreenshot()->bytes());
    ASSERT_TRUE(UIPasteboard::generalPasteboard()->items().empty());
    phone_.device().input().shake();
    phone_.runFor(1);
    ASSERT_TRUE(phone_.tapText("Cancel")) << "the next sheet";
    phone_.runFor(1);
    ASSERT_TRUE(phone_.shows("A note"));
  }

 private:
  TestPhone phone_{{.profile = "iPhone SE"}};
  std::shared_ptr<UILabel> label_;
  std::shared_ptr<NSData> first_;
};

TEST_F(ScarceStillImage, CostsTheImageAndNothingElse) {
  const long all = ScarceMemory::failEach(
      &ScarceMemory::failLibrarys, [this] { capture(); }, [this] { check(); });
  EXPECT_GT(all, 500) << "the library's allocations were not met";
}

TEST_F(ScarceStillImage, CostsTheImageWhereALargeBufferFails) {
  if (!ScarceMemory::kFailsLarge) GTEST_SKIP() << "not with a sanitizer";
  const long all = ScarceMemory::failEach([](long skipped) { ScarceMemory::failLarge(skipped, 64 << 10); },
                                          [this] { capture(); }, [this] { check(); });
  EXPECT_GE(all, 2) << "the buffers were not met";
}

}  // namespace
}  // namespace tellvane
