#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "Tellvane/Tellvane.h"
#include "UIKit/UIApplication.h"
#include "recording/TLVCaptureScreenRecording.h"
#include "support/TestPhone.h"

namespace tellvane {
namespace {

using testing_support::TestPhone;

double residentMegabytes() {
  std::ifstream file("/proc/self/statm");
  double all = 0, resident = 0;
  file >> all >> resident;
  return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

// What a recording lets go of must go back to the system, whichever threads it was taken on.
TEST(RecordingSession, TakesNoMoreMemoryTheThirtiethTimeThanTheFirst) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer keeps what was freed";
#endif
  TestPhone phone;
  phone.device().setPermission("photos", Permission::authorized);
  const auto root = phone.show()->rootViewController();
  Tellvane::instantiateSDK(true, false);
  phone.runFor(2.5);
  const auto record = [&] {
    TLVCaptureScreenRecording::shared()->captureScreenRecording();
    for (int step = 0; step < 8; ++step) {
      root->view()->setBackgroundColor(UIColor::colorWithWhiteAlpha(0.1 * step, 1));
      phone.runFor(0.05);
    }
    TLVCaptureScreenRecording::shared()->stopRecording();
    phone.runFor(1);
    EXPECT_TRUE(phone.tapText("Delete"));
    phone.runFor(1);
  };
  record();
  const double first = residentMegabytes();
  for (int i = 2; i <= 30; ++i) record();
  EXPECT_LE(residentMegabytes(), first + 10) << "after the first one " << first;
}

}  // namespace
}  // namespace tellvane
