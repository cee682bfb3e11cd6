#include <gtest/gtest.h>
#include <stdio.h>

#include "CompanionPhone.h"
#include "Device/Device.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHPhotoLibrary.h"
#include "companion/Inbox.h"
#include "support/SampleMovie.h"

namespace companion_tests {
namespace {

namespace fs = std::filesystem;
const std::string kReport = "2026-01-05T09-41-07Z-1";
const std::string kWithout = "Tellvane: filed " + kReport +
                             "\nTellvane: the movie is not in the photo library; the report is without it\n";

/// A phone on which a host, this process, has saved a movie, and still has the library open.
class Recorded : public CompanionPhone {
 public:
  Recorded() : movie(testing_support::sampleMovie(root() / "movie.mov")) {
    ios::Clock::shared().useVirtualTime();
    ios::DeviceSettings settings;
    settings.permissions["com.example.host"]["photos"] = ios::Permission::authorized;
    ios::Device::start(
        {.root = root(), .mainBundle = {}, .bundleIdentifier = "com.example.host", .settings = settings});
    ios::PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
        [this] {
          identifier = ios::PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(
                           ios::NSURL::fileURLWithPath(movie))
                           ->placeholderForCreatedAsset()
                           ->localIdentifier();
        },
        [](bool saved, const std::shared_ptr<ios::NSError>&) { EXPECT_TRUE(saved); });
    ios::Clock::shared().runUntilRest();
  }
  void handOver(const std::string& identifier, int changeCount = 1) const {
    companion::Record record = videoRecord();
    record["videoInPhotosAlbum"] = identifier;
    write(pasteboard(),
          pasteboardOf({ios::NSDictionary{{"TLVScreenVideoDetails", archiveOf(dictionaryOf(record))}}},
                       changeCount));
  }
  fs::path report() const { return inbox() / kReport; }
  fs::path asset() const { return root() / "Media" / "DCIM" / "100TLVNE" / "IMG_0001.MOV"; }
  std::string page(const fs::path& folder) const {
    const ios::Bytes bytes = read(folder / "index.html");
    return std::string(bytes.begin(), bytes.end());
  }

  const fs::path movie;
  std::string identifier;
};

TEST(CompanionMovie, IsTakenIntoTheReportWhileTheHostHasTheLibraryOpen) {
  const Recorded phone;
  const Snapshot library = snapshot(phone.root() / "Media");
  phone.handOver(phone.identifier);
  const Ended ended = phone.open();
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(ended.err, "");
  EXPECT_EQ(ended.out, "Tellvane: filed " + kReport + "\n");
  EXPECT_TRUE(read(phone.report() / "movie.mov") == read(phone.movie));
  EXPECT_NE(phone.page(phone.report()).find("<video src=\"movie.mov#t=0.001\" controls aria-label=\""),
            std::string::npos);
  EXPECT_NE(phone.page(phone.inbox()).find("<video src=\"" + kReport + "/movie.mov#t=0.001\""),
            std::string::npos);
  Snapshot after = snapshot(phone.root() / "Media");
  // The readers of the write-ahead log keep their marks beside it.
  after["Photos.sqlite-shm"] = library.at("Photos.sqlite-shm");
  EXPECT_TRUE(after == library) << "it only reads";

  // The asset may go; the report keeps its movie.
  fs::remove_all(phone.root() / "Media");
  EXPECT_EQ(phone.open().out, "Tellvane: already filed as " + kReport + "\n");
  EXPECT_TRUE(read(phone.report() / "movie.mov") == read(phone.movie));
}

TEST(CompanionMovie, NothingButAnAssetsIdentifierLeadsToOne) {
  const Recorded phone;
  const std::string uuid = phone.identifier.substr(0, 36);
  std::string lower = phone.identifier;
  for (char& c : lower) c = static_cast<char>(std::tolower(c));
  const std::string rows[] = {
      "",
      uuid,
      uuid + "/L0/040",
      uuid + "/L0/001/",
      uuid + "/L0/001\n",
      uuid + "/../../Photos.sqlite",
      lower,
      "%/L0/001",
      "*/L0/001",
      std::string(36, '_') + "/L0/001",
      uuid.substr(0, 35) + "?/L0/001",
      uuid.substr(0, 35) + "'/L0/001",
      "x' OR '1'='1' --/L0/001",
      "../../Media/DCIM/100TLVNE/IMG_0001.MOV",
      "/etc/passwd",
      "file:///etc/passwd",
      "9F983DBA-EC35-42B8-8773-B597CF782EDD/L0/001",
  };
  for (const std::string& identifier : rows) {
    SCOPED_TRACE(identifier);
    fs::remove_all(phone.inbox());
    phone.handOver(identifier);
    const Ended ended = phone.open();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, kWithout);
    EXPECT_EQ(ended.err, "");
    EXPECT_FALSE(fs::exists(phone.report() / "movie.mov"));
    EXPECT_EQ(phone.page(phone.report()).find("<video"), std::string::npos);
    EXPECT_NE(phone.page(phone.report()).find("The movie is not in the device’s photo library"),
              std::string::npos);
  }
}

TEST(CompanionMovie, IsNotTakenWhenItIsMissingOrNotAFile) {
  const Recorded phone;
  phone.handOver(phone.identifier);
  const auto openedWithout = [&](const char* what) {
    SCOPED_TRACE(what);
    fs::remove_all(phone.inbox());
    const Ended ended = phone.open();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, kWithout);
    EXPECT_FALSE(fs::exists(phone.report() / "movie.mov"));
    return ended.err;
  };
  fs::remove(phone.asset());
  EXPECT_EQ(openedWithout("no file"), "");
  fs::create_symlink("/etc/passwd", phone.asset());
  EXPECT_EQ(openedWithout("a link"), "");
  fs::remove(phone.asset());
  fs::create_directory(phone.asset());
  EXPECT_EQ(openedWithout("a folder"), "");
  fs::remove_all(phone.root() / "Media");
  EXPECT_EQ(openedWithout("no library"), "");
  EXPECT_FALSE(fs::exists(phone.root() / "Media"));
  write(phone.root() / "Media" / "Photos.sqlite", bytesOf(std::string(5000, 'x')));
  EXPECT_NE(openedWithout("a damaged library").find("could not read the photo library"), std::string::npos);
}

// The last process to close a library holds it while the log is written back, which a slow disk makes long.
TEST(CompanionMovie, IsWaitedForWhileAnotherProcessHoldsTheLibrary) {
  const Recorded phone;
  phone.handOver(phone.identifier);
  // Another file of the same content: this process has the first one open, so nobody could hold that.
  const fs::path media = phone.root() / "Media", copy = phone.root() / "Copy";
  fs::copy(media, copy, fs::copy_options::recursive);
  fs::remove_all(media);
  fs::rename(copy, media);
  const std::string holder =
      PYTHON " " SCRIPTS "/hold_library.py '" + (media / "Photos.sqlite").string() + "'";
  FILE* held = ::popen(holder.c_str(), "r");
  ASSERT_TRUE(held);
  char line[16] = {};
  EXPECT_STREQ(std::fgets(line, sizeof line, held), "held\n");
  const Ended ended = phone.open();
  EXPECT_EQ(::pclose(held), 0);
  EXPECT_EQ(ended.out, "Tellvane: filed " + kReport + "\n");
  EXPECT_EQ(ended.err, "");
  EXPECT_TRUE(read(phone.report() / "movie.mov") == read(phone.movie));
}

// As with every other file of a report: whole or not at all, whichever operation of the disk fails.
TEST(CompanionMovie, IsCompleteOrTheReportDoesNotAppear) {
  const ScratchFolder folder;
  const fs::path home = folder.path() / "home", source = folder.path() / "movie.mov";
  write(source, ios::Bytes(300'000, 7));
  fs::create_directories(home);
  companion::Report report;
  report.kind = companion::ReportKind::recording;
  report.record = videoRecord();
  report.representations = {{"TLVScreenVideoDetails", archiveOf(dictionaryOf(report.record))}};
  report.movie = source;
  const std::chrono::sys_seconds received{std::chrono::seconds(1767606067)};
  bool filed = false;
  for (int failing = 0; !filed; ++failing) {
    SCOPED_TRACE(failing);
    ASSERT_LT(failing, 100);
    int operation = 0;
    companion::Folder::setFault(
        [&](const std::string&, const fs::path&) { return operation++ == failing ? ENOSPC : 0; });
    const auto result = companion::Inbox(home).file(report, received);
    companion::Folder::setFault(nullptr);
    filed = std::holds_alternative<companion::Inbox::Filed>(result);
    const fs::path folderOfReport = home / "Documents" / "inbox" / kReport;
    EXPECT_EQ(fs::exists(folderOfReport), filed);
    if (filed) {
      EXPECT_TRUE(read(folderOfReport / "movie.mov") == read(source));
    }
  }
}

}  // namespace
}  // namespace companion_tests
