#include "Foundation/NSFileManager.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "Device/Files.h"
#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using testing_support::ScratchFolder;

TEST(FileManager, FailuresHaveThePlatformsNumbersAndChangeNothing) {
  const ScratchFolder folder;
  const std::string file = folder.write("folder/file", std::string("kept"));
  const auto& manager = NSFileManager::defaultManager();
  struct Case {
    int fault;
    long code;
  };
  for (const auto& [fault, code] : {Case{EACCES, 513}, Case{ENOSPC, 640}, Case{EROFS, 642}, Case{EIO, 512}}) {
    setDiskFault([fault = fault](const std::string&, const std::filesystem::path&) { return fault; });
    std::shared_ptr<NSError> error;
    EXPECT_FALSE(manager->removeItemAtPath(file, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), code);
    EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
    EXPECT_NE(error->localizedDescription().find("“file”"), std::string::npos) << error->description();
  }
  setDiskFault(nullptr);
  EXPECT_EQ(folder.read("folder/file"), "kept");

  std::shared_ptr<NSError> error;
  EXPECT_TRUE(manager->removeItemAtPath(folder.path() / "folder", error));
  EXPECT_FALSE(manager->fileExistsAtPath(file));
  EXPECT_FALSE(manager->removeItemAtPath(folder.path() / "folder", error));
  EXPECT_EQ(error->code(), 4);
}

}  // namespace
