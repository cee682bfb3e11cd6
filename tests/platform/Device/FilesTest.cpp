#include "Device/Files.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>

#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using testing_support::ScratchFolder;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// The disk refuses one kind of operation, with a code, until this is destroyed.
class Refusing {
 public:
  Refusing(const std::string& operation, int code) {
    setDiskFault([=](const std::string& asked, const std::filesystem::path&) {
      return asked == operation ? code : 0;
    });
  }
  ~Refusing() { setDiskFault(nullptr); }
};

TEST(Files, AFailedWriteLeavesTheOldFileAndNothingElse) {
  const ScratchFolder folder;
  nameFilesRelativeTo(folder.path());
  const auto file = folder.path() / "Pasteboard" / "general.plist";
  ASSERT_FALSE(writeFileAtomically(file, bytesOf("old")));

  struct Case {
    const char* operation;
    int code;
    const char* description;
  };
  for (const auto& [operation, code, description] : {
           Case{"write", ENOSPC, "could not write Pasteboard/general.plist: No space left on device"},
           Case{"rename", EROFS, "could not rename Pasteboard/general.plist: Read-only file system"},
       }) {
    const Refusing refusing(operation, code);
    const auto failure = writeFileAtomically(file, bytesOf("new"));
    ASSERT_TRUE(failure) << operation;
    EXPECT_EQ(failure->description(), description);
    EXPECT_EQ(folder.read("Pasteboard/general.plist"), "old");
  }
  {
    // Folders created for a file that could not be written are removed again.
    const Refusing refusing("write", ENOSPC);
    EXPECT_TRUE(writeFileAtomically(folder.path() / "a" / "b" / "c", bytesOf("new")));
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"Pasteboard", "Pasteboard/general.plist"}));
}

TEST(Files, AWriteThatTheSystemCutsShortLeavesTheOldFile) {
  const ScratchFolder folder;
  const auto file = folder.write("file", std::string("old"));
  signal(SIGXFSZ, SIG_IGN);
  const rlimit small{1000, RLIM_INFINITY}, none{RLIM_INFINITY, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &small);
  const auto failure = writeFileAtomically(file, bytesOf(std::string(5000, 'x')));
  setrlimit(RLIMIT_FSIZE, &none);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, ENOSPC);
  EXPECT_EQ(folder.read("file"), "old");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"file"});
}

TEST(Files, ReadingRefusesWhatIsTooLargeOrNotAFile) {
  const ScratchFolder folder;
  folder.write("ten", std::string("0123456789"));
  mkfifo((folder.path() / "pipe").c_str(), 0600);
  struct Case {
    const char* name;
    std::uintmax_t limit;
    int code;
  };
  for (const auto& [name, limit, code] : {Case{"ten", 10, 0}, Case{"ten", 9, EFBIG}, Case{"none", 10, ENOENT},
                                          Case{".", 10, EISDIR}, Case{"pipe", 10, EINVAL}}) {
    FileError error;
    EXPECT_EQ(readFile(folder.path() / name, &error, limit).has_value(), code == 0) << name << " " << limit;
    EXPECT_EQ(error.code, code) << name << " " << limit;
  }
}

TEST(Files, UnfinishedFilesOfKilledProcessesAreSweptAndNothingElse) {
  const ScratchFolder folder;
  // Above the highest possible process number, so it belongs to no process.
  for (const std::string name :
       {".file.99999999.1.tmp", ".hidden", "file.tmp", ".file.tmp", ".file.x.1.tmp"}) {
    folder.write(name, std::string("x"));
  }
  const auto own = temporaryNameBeside(folder.path() / "file");
  folder.write(own.filename(), std::string("x"));
  sweepTemporaryFiles(folder.path());
  std::vector<std::string> kept = {own.filename(), ".file.tmp", ".file.x.1.tmp", ".hidden", "file.tmp"};
  std::sort(kept.begin(), kept.end());
  EXPECT_EQ(folder.names(), kept);
}

TEST(Files, CopiesOfATreeKeepModesAndNeverLeadBackOut) {
  const ScratchFolder folder;
  folder.writeScript("from/run", "exit 0\n");
  folder.write("outside/secret", std::string("copied"));
  std::filesystem::create_symlink("run", folder.path() / "from" / "inner");
  std::filesystem::create_symlink("../outside/secret", folder.path() / "from" / "outer");
  std::filesystem::create_symlink(folder.path() / "outside", folder.path() / "from" / "absolute");
  ASSERT_FALSE(copyTree(folder.path() / "from", folder.path() / "to"));
  EXPECT_EQ(std::filesystem::read_symlink(folder.path() / "to" / "inner"), "run");
  EXPECT_FALSE(std::filesystem::is_symlink(folder.path() / "to" / "outer"));
  EXPECT_EQ(folder.read("to/outer") + folder.read("to/absolute/secret"), "copiedcopied");
  EXPECT_EQ(std::filesystem::status(folder.path() / "to" / "run").permissions() &
                std::filesystem::perms::owner_exec,
            std::filesystem::perms::owner_exec);

  // A link to a folder that contains it would be copied endlessly.
  std::filesystem::create_symlink(folder.path() / "from", folder.path() / "from" / "again");
  const auto failure = copyTree(folder.path() / "from", folder.path() / "endless");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, ELOOP);
}

}  // namespace
