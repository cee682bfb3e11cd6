#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <fstream>

#include "Device/Files.h"
#include "DeviceClock/Clock.h"
#include "Gallery.h"
#include "Photos/PHError.h"

namespace ios {
namespace {

using namespace testing_support;

void fill(const std::filesystem::path& file, std::streamoff from, std::size_t count) {
  std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
  stream.seekp(from);
  stream << std::string(count, 'x');
}

TEST(PhotoLibrary, ADamagedOneIsSetAsideAndItsMoviesStay) {
  const struct {
    const char* what;
    std::function<void(const Gallery&)> damage;
  } rows[] = {
      {"another file",
       [](const Gallery& g) { std::ofstream(g.media() / "Photos.sqlite") << "no database at all"; }},
      {"a header overwritten", [](const Gallery& g) { fill(g.media() / "Photos.sqlite", 0, 200); }},
      {"pages overwritten", [](const Gallery& g) { fill(g.media() / "Photos.sqlite", 4096, 20000); }},
      {"cut short",
       [](const Gallery& g) { std::filesystem::resize_file(g.media() / "Photos.sqlite", 9000); }},
      {"a table gone", [](const Gallery& g) { g.query("DROP TABLE membership"); }},
      {"somebody else's",
       [](const Gallery& g) {
         std::filesystem::remove(g.media() / "Photos.sqlite");
         g.query("CREATE TABLE theirs (x)");
       }},
  };
  const Gallery gallery;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::filesystem::remove_all(gallery.media());
    ASSERT_EQ(SavingProcess(gallery, 2).wait().status, 0);
    row.damage(gallery);
    std::ifstream was(gallery.media() / "Photos.sqlite", std::ios::binary);
    const std::string damaged(std::istreambuf_iterator<char>(was), {});

    testing::internal::CaptureStderr();
    const Ended ended = SavingProcess(gallery, 1).wait();
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(ended.status, 0) << ended.out << said;
    EXPECT_NE(said.find("it was set aside as Media/Photos.sqlite.damaged, and its movies stay"),
              std::string::npos)
        << said;
    // Set aside as it was.
    EXPECT_EQ(gallery.scratch.read("device/Media/Photos.sqlite.damaged") == damaged, true);
    EXPECT_EQ(gallery.query("SELECT number FROM asset"), "3\n") << ended.out << said;
    // Neither now nor later are they strays of the new one.
    ASSERT_EQ(SavingProcess(gallery, 0).wait().status, 0);
    EXPECT_TRUE(std::filesystem::exists(gallery.movie(1)));
    EXPECT_TRUE(std::filesystem::exists(gallery.movie(2)));
    EXPECT_TRUE(std::filesystem::exists(gallery.movie(3)));
  }

  // A second one does not take the first one's name.
  std::ofstream(gallery.media() / "Photos.sqlite") << "damaged again";
  ASSERT_EQ(SavingProcess(gallery, 1).wait().status, 0);
  EXPECT_EQ(gallery.scratch.read("device/Media/Photos.sqlite.damaged-2"), "damaged again");
}

TEST(PhotoLibrary, OneThatIsDamagedWhileItIsInUseIsSetAsideToo) {
  const Gallery gallery;
  const Ended ended = SavingProcess(gallery, 1).wait();
  const std::string lost = ended.out.substr(0, ended.out.find('\n'));
  EXPECT_EQ(PHAsset::fetchAssetsWithLocalIdentifiers({lost}, nullptr)->count(), 1u);
  Clock::shared().runUntilRest();
  // As if the disk had lost the file, and another had come in its place.
  std::filesystem::remove(gallery.media() / "Photos.sqlite");
  std::ofstream(gallery.media() / "Photos.sqlite") << std::string(5000, 'x');
  EXPECT_EQ(PHAsset::fetchAssetsWithLocalIdentifiers({lost}, nullptr)->count(), 0u);
  EXPECT_TRUE(gallery.save(gallery.sample()));
  EXPECT_EQ(gallery.query("SELECT number FROM asset"), "2\n");
  EXPECT_TRUE(std::filesystem::exists(gallery.media() / "Photos.sqlite.damaged"));
}

// SQLite finds a library's log and shared memory by their names: a reader between the renames, with the old file open,
// would truncate the memory that the new one's writer works in.
TEST(PhotoLibrary, NobodyReadsOneThatIsBeingSetAside) {
  const Gallery gallery;
  ASSERT_EQ(SavingProcess(gallery, 1).wait().status, 0);
  fill(gallery.media() / "Photos.sqlite", 0, 200);
  std::atomic<int> renames = 0;
  setDiskFault([&](const std::string& operation, const std::filesystem::path& path) {
    if (operation != "rename" || path.filename().string().find(".damaged") == std::string::npos) return 0;
    const int folder = ::open(gallery.media().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(::flock(folder, LOCK_SH | LOCK_NB), -1) << "a reader would come in";
    ::close(folder);
    ++renames;
    return 0;
  });
  EXPECT_TRUE(gallery.save(gallery.sample()));
  setDiskFault(nullptr);
  EXPECT_GE(renames, 1);
}

// The numbers of the movies that stay are found on disk. A new library that did not know them would take
// those movies for strays of its own.
TEST(PhotoLibrary, NoNewOneIsBegunBesideMoviesThatCannotBeListed) {
  const Gallery gallery;
  ASSERT_EQ(SavingProcess(gallery, 2).wait().status, 0);
  std::filesystem::remove(gallery.media() / "Photos.sqlite");
  setDiskFault([&](const std::string& operation, const std::filesystem::path& path) {
    return operation == "read" && path == gallery.movie(1).parent_path() ? EIO : 0;
  });
  std::shared_ptr<NSError> error;
  EXPECT_FALSE(gallery.save(gallery.sample(), nullptr, &error));
  ASSERT_TRUE(error);
  EXPECT_NE(error->localizedDescription().find("Media/DCIM/100TLVNE"), std::string::npos);
  setDiskFault(nullptr);
  ASSERT_EQ(SavingProcess(gallery, 1).wait().status, 0);
  ASSERT_EQ(SavingProcess(gallery, 0).wait().status, 0);
  EXPECT_EQ(gallery.query("SELECT number FROM asset"), "3\n");
  EXPECT_TRUE(std::filesystem::exists(gallery.movie(1)));
  EXPECT_TRUE(std::filesystem::exists(gallery.movie(2)));
}

TEST(PhotoLibrary, OneOfANewerSystemIsLeftAlone) {
  const Gallery gallery;
  ASSERT_EQ(SavingProcess(gallery, 1).wait().status, 0);
  gallery.query("PRAGMA user_version = 2");
  std::shared_ptr<NSError> error;
  EXPECT_FALSE(gallery.save(gallery.sample(), nullptr, &error));
  ASSERT_TRUE(error);
  EXPECT_NE(error->localizedDescription().find("newer system"), std::string::npos);
  gallery.expectWhole();
}

}  // namespace
}  // namespace ios
