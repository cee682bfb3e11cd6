#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "CompanionPhone.h"
#include "Device/Device.h"
#include "companion/Inbox.h"

namespace companion_tests {
namespace {

namespace fs = std::filesystem;
const std::string kReport = "2026-01-05T09-41-07Z-1";

// Another program's archive of hostile texts goes in, and another program reads what comes out.
TEST(Companion, KeepsEachKindOfHandOffAsItCame) {
  const struct {
    const char* kind;
    std::string said;
  } rows[] = {
      {"image", "Tellvane: filed " + kReport + "\n"},
      {"record", "Tellvane: filed " + kReport + "\n"},
      {"video", "Tellvane: filed " + kReport +
                    "\nTellvane: the movie is not in the photo library; the report is without it\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.kind);
    const CompanionPhone phone;
    const fs::path image = phone.root() / "image.jpg";
    write(image, jpeg(750, 1334));
    const Ended made =
        run({{PYTHON, SCRIPTS "/make_handoff.py", phone.pasteboard().string(), image.string(), row.kind},
             {},
             {}});
    ASSERT_EQ(made.status, 0) << made.err;
    const ios::Bytes handedOver = read(phone.pasteboard());

    const Ended ended = phone.open();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, row.said);
    EXPECT_EQ(ended.err, "");
    const Ended checked = run({{PYTHON, SCRIPTS "/check_report.py", phone.pasteboard().string(),
                                (phone.inbox() / kReport).string()},
                               {},
                               {}});
    EXPECT_EQ(checked.status, 0) << checked.err;

    const Snapshot once = snapshot(phone.inbox());
    const Ended again = phone.open();
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.out.rfind("Tellvane: already filed as " + kReport, 0), 0u) << again.out;
    EXPECT_TRUE(snapshot(phone.inbox()) == once);
    EXPECT_EQ(read(phone.pasteboard()), handedOver);
  }
}

// The process ends before the image, with the record written.
TEST(Companion, KilledHalfwayLeavesNothingHalfDone) {
  const CompanionPhone phone;
  write(phone.pasteboard(), pasteboardOf({imageItem()}));
  ASSERT_EQ(phone.open().status, 0);
  const Snapshot before = snapshot(phone.inbox());

  const pid_t child = ::fork();
  if (child == 0) {
    companion::Folder::setFault([](const std::string&, const fs::path& path) {
      if (path.filename() == "image.jpg") ::raise(SIGKILL);
      return 0;
    });
    static_cast<void>(companion::Inbox(phone.home()).file(report("Late", 2), std::chrono::sys_seconds()));
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_FALSE(snapshot(phone.inbox()) == before) << "it should have died with a report under way";

  write(phone.pasteboard(), pasteboardOf({}));
  EXPECT_EQ(phone.open().status, 1);
  EXPECT_TRUE(snapshot(phone.inbox()) == before);
}

TEST(Companion, SaysThatTheDiskRefused) {
  const CompanionPhone phone;
  write(phone.pasteboard(), pasteboardOf({imageItem()}));
  ASSERT_EQ(phone.open().status, 0);
  const Snapshot before = snapshot(phone.inbox());

  write(phone.pasteboard(), pasteboardOf({imageItem()}, 2));
  Program program = phone.program();
  program.longestFile = 1000;
  const Ended ended = run(program);
  EXPECT_EQ(ended.status, 2);
  EXPECT_NE(ended.err.find("the report could not be kept: could not write Containers/"), std::string::npos)
      << ended.err;
  EXPECT_TRUE(snapshot(phone.inbox()) == before);

  fs::remove_all(phone.inbox());
  write(phone.inbox(), bytesOf("a file where the inbox should be"));
  const Ended blocked = phone.open();
  EXPECT_EQ(blocked.status, 2);
  EXPECT_NE(blocked.err.find("Not a directory"), std::string::npos) << blocked.err;
  EXPECT_EQ(read(phone.inbox()), bytesOf("a file where the inbox should be"));
}

// The whole way: installed on a device, found by the URL's scheme, launched by the device at its own time.
TEST(Companion, IsLaunchedThroughItsURL) {
  ios::Clock::shared().useVirtualTime();
  const ScratchFolder folder;
  ios::Device::Options options;
  options.root = folder.path();
  options.bundleIdentifier = "com.example.host";
  ios::Device& device = ios::Device::start(std::move(options));
  ASSERT_EQ(device.applications().install(COMPANION_BUNDLE), std::nullopt);
  write(device.pasteboardFile(), pasteboardOf({imageItem()}));
  const auto application = device.applications().forScheme("tellvane");
  ASSERT_TRUE(application);
  EXPECT_EQ(application->bundleIdentifier, COMPANION_IDENTIFIER);

  ios::Clock::shared().runFor(std::chrono::seconds(67));
  std::optional<ios::LaunchResult> result;
  device.applications().launch(*application, "Tellvane://" COMPANION_IDENTIFIER,
                               [&](const ios::LaunchResult& ended) { result = ended; });
  ASSERT_TRUE(ios::Clock::shared().runUntil([&] { return result.has_value(); }, std::chrono::seconds(1)));
  EXPECT_TRUE(result->started) << result->problem;
  EXPECT_EQ(result->status, 0) << result->problem;
  EXPECT_TRUE(fs::exists(folder.path() / "Containers" / COMPANION_IDENTIFIER / "Documents" / "inbox" /
                         "2026-01-05T09-42-07Z-1" / "record.json"));
}

}  // namespace
}  // namespace companion_tests
