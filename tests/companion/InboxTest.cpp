#include "companion/Inbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "CompanionPhone.h"

namespace companion_tests {
namespace {

using companion::FileError;
using companion::Folder;
using companion::Inbox;
namespace fs = std::filesystem;

constexpr std::chrono::sys_seconds kNine41{std::chrono::seconds(1767606067)};
const std::string kFirst = "2026-01-05T09-41-07Z-1";
const std::string kSecond = "2026-01-05T09-41-07Z-2";

std::string outcomeOf(const std::variant<Inbox::Filed, FileError>& result) {
  if (const auto* error = std::get_if<FileError>(&result)) return error->description();
  const auto& filed = std::get<Inbox::Filed>(result);
  return filed.name.text() + (filed.already ? ", already" : "") + (filed.indexProblem ? ", no index" : "");
}

class InboxTest : public testing::Test {
 protected:
  InboxTest() { fs::create_directory(home_); }
  ~InboxTest() override { Folder::setFault(nullptr); }

  std::string file(const companion::Report& report) { return outcomeOf(Inbox(home_).file(report, kNine41)); }
  /// Expects that every report's folder is complete, the index lists exactly these, and nothing half done is left.
  void expectHealthy() {
    const Snapshot all = snapshot(inbox_);
    const std::string index = all.contains("index.html") ? all.at("index.html") : "";
    std::size_t reports = 0;
    for (const auto& [path, content] : all) {
      EXPECT_FALSE(path.starts_with(".incoming")) << path;
      if (content != "folder" || path.ends_with("/item")) continue;
      ++reports;
      for (const char* file : {"record.json", "received.json", "image.jpg", "item/dictionaryInApp",
                               "item/imageData", "index.html"}) {
        EXPECT_TRUE(all.contains(path + "/" + file)) << path << "/" << file;
      }
      EXPECT_NE(index.find("href=\"" + path + "/index.html\""), std::string::npos) << path;
    }
    EXPECT_EQ(listed(index), reports);
  }

  ScratchFolder folder_;
  const fs::path home_ = folder_.path() / "home", documents_ = home_ / "Documents",
                 inbox_ = documents_ / "inbox";
  const fs::path outside_ = folder_.path() / "outside";

 private:
  static std::size_t listed(const std::string& index) {
    std::size_t count = 0;
    for (auto at = index.find("class=\"card\""); at != std::string::npos;
         at = index.find("class=\"card\"", at + 1))
      ++count;
    return count;
  }
};

TEST_F(InboxTest, NumbersReportsOfOneSecondAndRecognisesOneItHas) {
  EXPECT_EQ(file(report("List", 1)), kFirst);
  EXPECT_EQ(file(report("List", 2)), kSecond);
  const Snapshot both = snapshot(inbox_);
  EXPECT_EQ(file(report("List", 2)), kSecond + ", already");
  EXPECT_TRUE(snapshot(inbox_) == both);
  // A pasteboard that was lost counts from the start again: the same count is another item.
  EXPECT_EQ(file(report("Detail", 2)), "2026-01-05T09-41-07Z-3");
  expectHealthy();
}

// Each operation on the disk fails in turn, alone or with all that come after it, such as cleaning up.
TEST_F(InboxTest, LosesNothingWhicheverOperationOfTheDiskFails) {
  ASSERT_EQ(file(report("List", 1)), kFirst);
  const Snapshot before = snapshot(inbox_);
  for (const bool forGood : {false, true}) {
    std::string outcome;
    for (int failing = 0; outcome != kSecond; ++failing) {
      SCOPED_TRACE((forGood ? "from operation " : "operation ") + std::to_string(failing));
      ASSERT_LT(failing, 100);
      int operation = 0;
      Folder::setFault([&](const std::string&, const fs::path&) {
        const int now = operation++;
        return now == failing || (forGood && now > failing) ? ENOSPC : 0;
      });
      outcome = file(report("Detail", 2));
      Folder::setFault(nullptr);
      EXPECT_EQ(outcome == kSecond, operation <= failing);
      Snapshot after = snapshot(inbox_);
      const auto strays =
          std::erase_if(after, [](const auto& entry) { return entry.first.starts_with(".incoming"); });
      // Cleaning up can fail only where more than one operation does.
      if (!forGood) {
        EXPECT_EQ(strays, 0u);
      }
      if (!outcome.starts_with(kSecond)) {
        EXPECT_NE(outcome.find("No space left on device"), std::string::npos) << outcome;
        EXPECT_TRUE(after == before);
      }
      EXPECT_EQ(Inbox(home_).tend(), std::nullopt);
      expectHealthy();
      fs::remove_all(inbox_ / kSecond);
      ASSERT_EQ(Inbox(home_).tend(), std::nullopt);
      ASSERT_TRUE(snapshot(inbox_) == before);
    }
  }
}

using InboxDeathTest = InboxTest;

TEST_F(InboxDeathTest, KilledAtAnyStepLeavesAWholeReportOrNone) {
  // Who is killed works in the folder of this process, which has one thread.
  GTEST_FLAG_SET(death_test_style, "fast");
  ASSERT_EQ(file(report("List", 1)), kFirst);
  const Snapshot before = snapshot(inbox_);
  int operations = 0;
  Folder::setFault([&](const std::string&, const fs::path&) { return ++operations, 0; });
  ASSERT_EQ(file(report("Detail", 2)), kSecond);
  Folder::setFault(nullptr);
  const Snapshot withSecond = snapshot(inbox_);
  ASSERT_GT(operations, 10);

  int whole = 0;
  for (int last = 0; last < operations; ++last) {
    SCOPED_TRACE(last);
    fs::remove_all(inbox_ / kSecond);
    ASSERT_EQ(Inbox(home_).tend(), std::nullopt);
    EXPECT_EXIT(
        {
          int operation = 0;
          Folder::setFault([&](const std::string&, const fs::path&) {
            if (operation++ == last) std::raise(SIGKILL);
            return 0;
          });
          file(report("Detail", 2));
        },
        testing::KilledBySignal(SIGKILL), "");
    ASSERT_EQ(Inbox(home_).tend(), std::nullopt);
    const Snapshot after = snapshot(inbox_);
    EXPECT_TRUE(after == before || after == withSecond);
    whole += after == withSecond;
  }
  // Only the index comes after the step that lets the report appear.
  EXPECT_GE(whole, 1);
  EXPECT_LE(whole, 4);
}

TEST_F(InboxTest, NeverFollowsALinkOutOfIt) {
  const struct {
    std::string name;
    fs::path link;
    fs::path target;
    bool filed;
  } rows[] = {
      {"documents", documents_, outside_, false},
      {"inbox", inbox_, outside_, false},
      {"incoming report", inbox_ / ".incoming-report", outside_, true},
      {"incoming index", inbox_ / ".incoming-index.html", outside_ / "file", true},
      {"index", inbox_ / "index.html", outside_ / "file", true},
      {"report", inbox_ / kFirst, outside_, true},
      {"report that is not there", inbox_ / kFirst, outside_ / "new", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(documents_);
    fs::remove_all(outside_);
    write(outside_ / "file", bytesOf("precious"));
    write(outside_ / "received.json", bytesOf("{\"pasteboardChangeCount\": 1}"));
    const Snapshot before = snapshot(outside_);
    fs::create_directories(row.link.parent_path());
    fs::create_symlink(row.target, row.link);

    const std::string outcome = file(report());
    EXPECT_EQ(outcome.starts_with("2026-01-05T09-41-07Z-"), row.filed) << outcome;
    EXPECT_TRUE(snapshot(outside_) == before);
    if (row.filed) expectHealthy();
  }
}

// A person, or a fault, may have left anything in the inbox; none of it stops the next
// report or harms the index.
TEST_F(InboxTest, CopesWithForeignAndDamagedEntries) {
  ASSERT_EQ(file(report("List", 1)), kFirst);
  const auto place = [&](const std::string& path, const std::string& text) {
    write(inbox_ / path, bytesOf(text));
  };
  place("2020-01-01T00-00-00Z-1/record.json", "{\"screenName\": 3}");
  place("2020-01-01T00-00-00Z-2/record.json", std::string(200'000, '['));
  place("2020-01-01T00-00-00Z-3/record.json", "\xFF\xFE{}");
  fs::create_directories(inbox_ / "2020-01-01T00-00-00Z-4" / "record.json");
  fs::create_directories(inbox_ / "2020-01-01T00-00-00Z-5");
  ASSERT_EQ(::mkfifo((inbox_ / "2020-01-01T00-00-00Z-5" / "record.json").c_str(), 0600), 0);
  place("2020-01-01T00-00-00Z-6/record.json",
        R"({"screenName": "<script>alert(1)</script>", "appName": "\u202e\u0000"})");
  place("2020-01-01T00-00-00Z-6/received.json", R"({"pasteboardChangeCount": 99999999999999999999999})");
  write(outside_ / "secret.json", bytesOf(R"({"screenName": "secret"})"));
  fs::create_directories(inbox_ / "2020-01-01T00-00-00Z-7");
  fs::create_symlink(outside_ / "secret.json", inbox_ / "2020-01-01T00-00-00Z-7" / "record.json");
  place("2021-02-29T00-00-00Z-1/record.json", "{}");  // no such day
  place("2020-01-01T00-00-00Z-01/record.json", "{}");
  place("<b>/record.json", "{}");
  place("notes.txt", "mine");
  place(kSecond, "a file in the next report's place");
  const Snapshot before = snapshot(inbox_);

  EXPECT_EQ(file(report("Detail", 2)), "2026-01-05T09-41-07Z-3");

  Snapshot after = snapshot(inbox_);
  std::erase_if(after, [](const auto& entry) { return entry.first.starts_with("2026-01-05T09-41-07Z-3"); });
  const std::string index = after.at("index.html");
  after["index.html"] = before.at("index.html");
  EXPECT_TRUE(after == before);
  std::vector<std::size_t> positions;
  for (const char* name : {"2026-01-05T09-41-07Z-3/", "2026-01-05T09-41-07Z-1/", "2020-01-01T00-00-00Z-6/",
                           "2020-01-01T00-00-00Z-5/", "2020-01-01T00-00-00Z-1/"}) {
    positions.push_back(index.find(std::string("href=\"") + name));
    EXPECT_NE(positions.back(), std::string::npos) << name;
  }
  EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end())) << "newest first";
  EXPECT_EQ(index.find("2021-02-29"), std::string::npos);
  EXPECT_EQ(index.find("00Z-01"), std::string::npos);
  EXPECT_EQ(index.find("secret"), std::string::npos);
  EXPECT_EQ(index.find("<script"), std::string::npos);
  EXPECT_EQ(index.find("<b>"), std::string::npos);
  EXPECT_EQ(index.find("\u202e"), std::string::npos);
}

}  // namespace
}  // namespace companion_tests
