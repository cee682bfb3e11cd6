#include <gtest/gtest.h>

#include <cerrno>

#include "Device/Files.h"
#include "Gallery.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHError.h"

namespace ios {
namespace {

using namespace testing_support;

/// A disk that is full from its n-th step on, or at that step alone, as one where space comes free again.
class FullDisk {
 public:
  FullDisk(int step, bool forGood) {
    setDiskFault([this, step, forGood](const std::string&, const std::filesystem::path&) {
      const int now = ++steps_;
      return now == step || (forGood && now > step) ? ENOSPC : 0;
    });
  }
  ~FullDisk() { setDiskFault(nullptr); }
  int steps() const { return steps_; }

 private:
  std::atomic<int> steps_ = 0;
};

void saveOnDisksThatFillUp(const Gallery& gallery, bool forGood) {
  int assets = 0;
  for (int step = 1; assets == 0; ++step) {
    SCOPED_TRACE("full at step " + std::to_string(step));
    std::shared_ptr<NSError> error;
    int reached = 0;
    {
      const FullDisk disk(step, forGood);
      error = gallery.perform([&] {
        const auto placeholder = PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(
                                     NSURL::fileURLWithPath(gallery.sample()))
                                     ->placeholderForCreatedAsset();
        PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle("Tellvane")
            ->addAssets({placeholder});
      });
      reached = disk.steps();
    }
    if (reached < step) {
      EXPECT_EQ(error, nullptr) << error->localizedDescription();
      ++assets;
    } else {
      ASSERT_TRUE(error) << "at step " << step << " of " << reached;
      EXPECT_EQ(error->code(), PHPhotosErrorNotEnoughSpace) << error->localizedDescription();
      EXPECT_NE(error->localizedDescription().find("could not "), std::string::npos);
    }
    if (std::filesystem::exists(gallery.media() / "Photos.sqlite")) gallery.expectNoHalfAsset();
    ASSERT_LT(step, 500);
  }
  EXPECT_EQ(gallery.query("SELECT count(*) FROM asset"), std::to_string(assets) + "\n");
  EXPECT_EQ(gallery.query("SELECT count(*) FROM album"), std::to_string(assets) + "\n");
  gallery.expectWhole();
}

TEST(PhotoLibrary, AFullDiskAtAnyStepOfASaveLeavesNothing) {
  saveOnDisksThatFillUp(Gallery(), true);
}

TEST(PhotoLibrary, AStepThatADiskRefusesOnceLeavesNothing) {
  saveOnDisksThatFillUp(Gallery(), false);
}

}  // namespace
}  // namespace ios
