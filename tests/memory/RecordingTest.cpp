#include <gtest/gtest.h>

#include "AVFoundation/Microphone.h"
#include "Photos/PHPhotoLibrary.h"
#include "ScarceMemory.h"
#include "Tellvane/TLVManager.h"
#include "Tellvane/Tellvane.h"
#include "info/TLVConstants.h"
#include "recording/TLVCaptureScreenRecording.h"
#include "support/MovieProbe.h"
#include "support/TestPhone.h"

namespace tellvane {
namespace {

using namespace testing_support;

/// A phone with a screen that changes, a microphone, and permission for everything.
class Studio : public TestPhone {
 public:
  Studio() : TestPhone({.profile = "iPhone SE"}) {
    Microphone::shared().setSound(Microphone::Tone{});
    device().setPermission("photos", Permission::authorized);
    device().setPermission("microphone", Permission::authorized);
    root_ = show()->rootViewController();
    Tellvane::instantiateSDK(true, true);
    runFor(3);
  }

  static bool isRecording() { return session().isRecording(); }
  bool start() const {
    session().captureScreenRecording();
    runFor(0.01);
    return isRecording();
  }
  /// With pictures that differ.
  void use() const {
    for (int i = 0; i < 3; ++i) {
      root_->view()->setBackgroundColor(UIColor::colorWithWhiteAlpha(0.2 + 0.3 * i, 1));
      runFor(0.04);
    }
  }
  void stop() const {
    session().stopRecording();
    runFor(1);
  }
  /// Back to the host's own screen, whatever came of the recording.
  void goBack() const {
    runFor(0.5);
    if (root_->presentedViewController()) root_->dismissViewControllerAnimated(false);
    runFor(4);
    if (root_->presentedViewController()) root_->dismissViewControllerAnimated(false);
    runFor(0.5);
  }
  std::vector<std::filesystem::path> movies() const {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder() / "Media/DCIM/100TLVNE"))
      found.push_back(entry.path());
    return found;
  }

 private:
  static TLVCaptureScreenRecording& session() { return *TLVCaptureScreenRecording::shared(); }
  std::shared_ptr<UIViewController> root_;
};

class ScarceRecording : public testing::Test {
 protected:
  ScarceRecording() {
    record();
    phone_.goBack();
  }
  void record() {
    phone_.start();
    phone_.use();
    phone_.stop();
    phone_.tapText("Delete");
  }
  void check() {
    phone_.goBack();
    ASSERT_FALSE(phone_.isRecording());
    ASSERT_TRUE(phone_.start()) << "the next recording";
    phone_.use();
    phone_.stop();
    ASSERT_TRUE(phone_.tapText("Delete"));
    phone_.goBack();
    ASSERT_TRUE(std::filesystem::is_empty(std::filesystem::path(TLV_SCREEN_RECORDING_PATH()).parent_path()));
  }

 private:
  Studio phone_;
};

TEST_F(ScarceRecording, CostsTheRecordingAndNothingElse) {
  const long all = ScarceMemory::failEach(
      &ScarceMemory::failLibrarys, [this] { record(); }, [this] { check(); });
  EXPECT_GT(all, 1000) << "the library's allocations were not met";
}

TEST_F(ScarceRecording, CostsTheRecordingWhereALargeBufferFails) {
  if (!ScarceMemory::kFailsLarge) GTEST_SKIP() << "not with a sanitizer";
  const long all = ScarceMemory::failEach([](long skipped) { ScarceMemory::failLarge(skipped, 64 << 10); },
                                          [this] { record(); }, [this] { check(); });
  EXPECT_GE(all, 10) << "the buffers were not met";
}

}  // namespace
}  // namespace tellvane
