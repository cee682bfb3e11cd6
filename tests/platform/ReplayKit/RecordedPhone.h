#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "AVFoundation/Microphone.h"
#include "Dispatch/Queue.h"
#include "ReplayKit/RPScreenRecorder.h"
#include "UIKit/UIColor.h"
#include "support/MovieProbe.h"
#include "support/TestPhone.h"

namespace testing_support {

/// A phone with a plain red screen whose application may record, and what the recorder told it.
class RecordedPhone : public TestPhone {
 public:
  explicit RecordedPhone(const Options& options = {}) : TestPhone(options) {
    device().setPermission("screen", ios::Permission::authorized);
    window = show();
    paint(1, 0, 0);
    runFor(0.5);
  }

  void paint(double red, double green, double blue) const {
    window->rootViewController()->view()->setBackgroundColor(
        ios::UIColor::colorWithRedGreenBlueAlpha(red, green, blue, 1));
  }

  /// The start's error; empty when it records.
  std::shared_ptr<ios::NSError> start(bool microphone = false) const {
    auto told = std::make_shared<std::vector<std::shared_ptr<ios::NSError>>>();
    recorder()->startRecordingWithMicrophoneEnabled(microphone, [told](const auto& error) {
      EXPECT_FALSE(ios::isMainThread());
      told->push_back(error);
    });
    runFor(0);
    EXPECT_EQ(1u, told->size());
    return told->empty() ? nullptr : told->front();
  }

  struct End {
    std::shared_ptr<ios::RPPreviewViewController> preview;
    std::shared_ptr<ios::NSError> error;
    int count = 0;
  };
  End stop() const {
    auto end = std::make_shared<End>();
    recorder()->stopRecordingWithHandler([end](const auto& preview, const auto& error) {
      EXPECT_FALSE(ios::isMainThread());
      *end = {preview, error, end->count + 1};
    });
    EXPECT_FALSE(recorder()->isRecording());
    runFor(0);
    EXPECT_EQ(1, end->count);
    return *end;
  }

  static const std::shared_ptr<ios::RPScreenRecorder>& recorder() {
    return ios::RPScreenRecorder::sharedRecorder();
  }
  /// Presents the preview and taps on it; what the taps lead to comes to rest.
  void tapOnPreview(const std::shared_ptr<ios::RPPreviewViewController>& preview,
                    const std::vector<std::string>& texts) const {
    window->rootViewController()->presentViewController(preview, true);
    runFor(1);
    for (const auto& text : texts) {
      EXPECT_TRUE(tapText(text)) << text;
      runFor(1);
    }
  }
  std::filesystem::path savedMovie() const { return folder() / "Media/DCIM/100TLVNE/IMG_0001.MOV"; }
  /// Names below the folder in which the system keeps recordings.
  static std::vector<std::string> namesOfRecordings(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "ReplayKit", none))
      names.push_back(entry.path().filename());
    return names;
  }

  std::shared_ptr<ios::UIWindow> window;
};

}  // namespace testing_support
