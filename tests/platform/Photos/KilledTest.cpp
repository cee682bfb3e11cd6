#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include "Gallery.h"

namespace ios {
namespace {

using namespace testing_support;

/// Kills one saving process after another, each `stride` steps later, until one comes through.
void killAtEveryStep(const Gallery& gallery, bool freshEachTime, int stride) {
  for (int step = 1;; step += stride) {
    SCOPED_TRACE("killed at step " + std::to_string(step));
    const Ended ended = SavingProcess(gallery, 1, step).wait();
    if (ended.status == 0) {
      EXPECT_GT(step, 20) << "it should have been killed more often";
      break;
    }
    ASSERT_EQ(ended.status, 128 + SIGKILL) << ended.out;
    gallery.expectNoHalfAsset();
    if (freshEachTime) std::filesystem::remove_all(gallery.media());
    ASSERT_LT(step, 500);
  }
  // The next to open it puts it in order.
  EXPECT_EQ(SavingProcess(gallery, 1).wait().status, 0);
  gallery.expectWhole();
}

TEST(PhotoLibrary, AProcessKilledWhileItMakesTheLibraryLeavesNoHalfAsset) {
  killAtEveryStep(Gallery(), true, 2);
}

TEST(PhotoLibrary, AProcessKilledWhileItSavesLeavesNoHalfAsset) {
  const Gallery gallery;
  ASSERT_EQ(SavingProcess(gallery, 1).wait().status, 0);
  killAtEveryStep(gallery, false, 1);
}

// Files that the library knows nothing of, as a process leaves them that is killed before its transaction is
// committed, or after it has deleted an asset and before it has deleted the movie.
TEST(PhotoLibrary, StraysAreSweptWhenItIsNextOpened) {
  const Gallery gallery;
  ASSERT_EQ(SavingProcess(gallery, 2).wait().status, 0);
  gallery.query("PRAGMA foreign_keys = ON; DELETE FROM asset WHERE number = 1");
  std::ofstream(gallery.movie(3)) << "not committed";
  const auto copy = gallery.movie(1).parent_path() / ".IMG.MOV.4194304.1.tmp";  // no process has that id
  std::ofstream(copy) << "under way";
  const auto living = gallery.movie(1).parent_path() / (".IMG.MOV." + std::to_string(getpid()) + ".99.tmp");
  std::ofstream(living) << "still under way";
  const auto album = gallery.movie(1).parent_path() / "notes.txt";
  std::ofstream(album) << "no movie";
  std::filesystem::create_directory(gallery.movie(7));
  std::ofstream(gallery.movie(7) / "mine") << "a folder is no stray movie";

  ASSERT_EQ(SavingProcess(gallery, 0).wait().status, 0);
  EXPECT_EQ(gallery.files(),
            (std::vector<std::string>{"DCIM/100TLVNE/" + living.filename().string(),
                                      "DCIM/100TLVNE/IMG_0002.MOV", "DCIM/100TLVNE/IMG_0007.MOV/mine",
                                      "DCIM/100TLVNE/notes.txt", "Photos.sqlite"}));

  std::filesystem::remove(gallery.movie(2));
  ASSERT_EQ(SavingProcess(gallery, 0).wait().status, 0);
  EXPECT_EQ(gallery.query("SELECT count(*) FROM asset; SELECT count(*) FROM membership"), "0\n0\n");
}

}  // namespace
}  // namespace ios
