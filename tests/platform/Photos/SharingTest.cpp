#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "Gallery.h"

namespace ios {
namespace {

using namespace testing_support;

TEST(PhotoLibrary, SeveralProcessesSaveAtOnce) {
  const Gallery gallery;
  const auto album = gallery.makeAlbum();
  std::vector<SavingProcess> others;
  // Two count their identifiers, in virtual time, and two make them up, in real time.
  for (const bool real : {false, false, true, true}) others.emplace_back(gallery, 10, 0, real);
  for (int count = 0; count < 10; ++count) EXPECT_TRUE(gallery.save(gallery.sample(), album));

  std::set<std::string> identifiers;
  for (SavingProcess& other : others) {
    const Ended ended = other.wait();
    EXPECT_EQ(ended.status, 0) << ended.out;
    std::istringstream lines(ended.out);
    for (std::string line; std::getline(lines, line);) {
      identifiers.insert(line);
      EXPECT_EQ(PHAsset::fetchAssetsWithLocalIdentifiers({line}, nullptr)->count(), 1u) << line;
    }
  }
  EXPECT_EQ(identifiers.size(), 40u);
  EXPECT_EQ(gallery.members(*album).size(), 50u);
  gallery.expectWhole();
}

// All of them find the same damaged library at the same moment; the first new one must not be taken for it.
TEST(PhotoLibrary, SeveralProcessesBeginANewOneTogether) {
  const Gallery gallery;
  for (int round = 1; round <= 5; ++round) {
    std::filesystem::remove_all(gallery.media());
    std::filesystem::create_directories(gallery.media());
    std::ofstream(gallery.media() / "Photos.sqlite") << "no database at all";
    std::vector<SavingProcess> processes;
    for (int count = 0; count < 4; ++count) processes.emplace_back(gallery, 2);
    std::set<std::string> identifiers;
    for (SavingProcess& process : processes) {
      const Ended ended = process.wait();
      EXPECT_EQ(ended.status, 0) << ended.out;
      std::istringstream lines(ended.out);
      for (std::string line; std::getline(lines, line);) identifiers.insert(line);
    }
    EXPECT_EQ(identifiers.size(), 8u);
    EXPECT_EQ(gallery.query("SELECT count(*) FROM asset; SELECT count(*) FROM membership"), "8\n8\n");
    EXPECT_FALSE(std::filesystem::exists(gallery.media() / "Photos.sqlite.damaged-2"));
  }
}

TEST(PhotoLibrary, TheSameFlowGivesTheSameBytes) {
  const Gallery gallery;
  ScratchFolder folder;
  std::vector<std::string> libraries;
  for (int round = 0; round < 2; ++round) {
    std::filesystem::remove_all(gallery.media());
    const Ended ended = SavingProcess(gallery, 3).wait();
    ASSERT_EQ(ended.status, 0) << ended.out;
    // The whole library is in its one file when the process has ended.
    EXPECT_FALSE(std::filesystem::exists(gallery.media() / "Photos.sqlite-wal"));
    libraries.push_back(ended.out + gallery.scratch.read("device/Media/Photos.sqlite"));
  }
  EXPECT_EQ(libraries[0] == libraries[1], true);

  // Started once more at the same time of the same day, it does not give the same identifiers again.
  const Ended again = SavingProcess(gallery, 3).wait();
  ASSERT_EQ(again.status, 0);
  EXPECT_NE(again.out, libraries[0].substr(0, again.out.size()));
  EXPECT_EQ(gallery.query("SELECT count(*) FROM asset"), "6\n");
}

}  // namespace
}  // namespace ios
