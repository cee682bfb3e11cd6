#include "Gallery.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "Device/Device.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHPhotoLibrary.h"
#include "support/SampleMovie.h"

namespace testing_support {

using namespace ios;

namespace {

std::string bytesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace

Gallery::Gallery() : sample_(sampleMovie(scratch.path() / "sample.mov")) {
  Clock::shared().useVirtualTime();
  DeviceSettings settings;
  for (const char* application : {"com.test", "unbundled"})
    settings.permissions[application]["photos"] = Permission::authorized;
  Device::start({.root = device(), .mainBundle = {}, .bundleIdentifier = "com.test", .settings = settings});
}

std::filesystem::path Gallery::movie(int number) const {
  char name[32];
  std::snprintf(name, sizeof name, "IMG_%04d.MOV", number);
  return media() / "DCIM" / "100TLVNE" / name;
}

std::shared_ptr<NSError> Gallery::perform(const std::function<void()>& changes) const {
  std::optional<std::shared_ptr<NSError>> result;
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
      changes, [&result](bool success, const std::shared_ptr<NSError>& error) {
        EXPECT_FALSE(Clock::shared().isMainThread());
        EXPECT_EQ(success, !error);
        Clock::shared().postToMain([&result, error] {
          EXPECT_FALSE(result) << "a completion came twice";
          result = error;
        });
      });
  Clock::shared().runUntilRest();
  EXPECT_TRUE(result) << "no completion came";
  return result.value_or(nullptr);
}

std::shared_ptr<PHAssetCollection> Gallery::makeAlbum(const std::string& title) const {
  std::string identifier;
  EXPECT_EQ(perform([&] {
              identifier = PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle(title)
                               ->placeholderForCreatedAssetCollection()
                               ->localIdentifier();
            }),
            nullptr);
  return PHAssetCollection::fetchAssetCollectionsWithLocalIdentifiers({identifier}, nullptr)->firstObject();
}

std::optional<std::string> Gallery::save(const std::filesystem::path& file,
                                         const std::shared_ptr<PHAssetCollection>& album,
                                         std::shared_ptr<NSError>* error) const {
  std::optional<std::string> identifier;
  const auto problem = perform([&] {
    const auto request =
        PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(NSURL::fileURLWithPath(file));
    if (!request) return;
    const auto placeholder = request->placeholderForCreatedAsset();
    if (album)
      PHAssetCollectionChangeRequest::changeRequestForAssetCollection(album)->addAssets({placeholder});
    identifier = placeholder->localIdentifier();
  });
  if (error) *error = problem;
  return problem ? std::nullopt : identifier;
}

std::string Gallery::query(const std::string& statement) const {
  const auto output = scratch.path() / "query.txt";
  const std::string command = "sqlite3 '" + (media() / "Photos.sqlite").string() + "' \"" + statement +
                              "\" > '" + output.string() + "' 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << statement << "\n" << bytesOf(output);
  return bytesOf(output);
}

std::vector<std::string> Gallery::members(const PHAssetCollection& album) const {
  return linesOf(
      query("SELECT asset.uuid || '/L0/001' FROM membership JOIN album ON album.id = membership.album"
            " JOIN asset ON asset.id = membership.asset WHERE album.uuid || '/L0/040' = '" +
            album.localIdentifier() + "' ORDER BY membership.id"));
}

std::vector<std::string> Gallery::files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(media())) {
    const std::string name = entry.path().lexically_relative(media()).string();
    const bool passing = name.ends_with("-wal") || name.ends_with("-shm") || name == ".Photos.lock";
    if (entry.is_regular_file() && !passing) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

void Gallery::expectNoHalfAsset() const {
  if (!std::filesystem::exists(media() / "Photos.sqlite")) return;
  const std::string tables = query(
      "PRAGMA integrity_check; PRAGMA foreign_key_check; SELECT count(*) FROM sqlite_master WHERE type = "
      "'table'");
  if (tables == "ok\n0\n") return;  // killed before there were any
  EXPECT_EQ(tables, "ok\n4\n");
  const std::string whole = bytesOf(sample_);
  for (const std::string& file : linesOf(query("SELECT file FROM asset")))
    EXPECT_EQ(bytesOf(media() / file) == whole, true) << file << " is not whole";
}

void Gallery::expectWhole() const {
  expectNoHalfAsset();
  std::vector<std::string> expected = linesOf(query("SELECT file FROM asset"));
  expected.push_back("Photos.sqlite");
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(files(), expected);
}

SavingProcess::SavingProcess(const Gallery& gallery, int count, int step, bool real) {
  static int outputs = 0;
  output_ = gallery.scratch.path() / ("output-" + std::to_string(++outputs));
  const std::string movie = gallery.sample(), counted = std::to_string(count), at = std::to_string(step);
  const std::string device = gallery.device();
  process_ = ::fork();
  if (process_ != 0) return;
  ::setenv("IOS_DEVICE", device.c_str(), 1);
  if (!real) ::setenv("IOS_VIRTUAL_TIME", "0 1767606060000000000", 1);
  const int output = ::open(output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  ::dup2(output, STDOUT_FILENO);
  ::execl(SAVER, SAVER, movie.c_str(), counted.c_str(), step ? at.c_str() : nullptr, nullptr);
  ::_exit(127);
}

Ended SavingProcess::wait() {
  int status = 0;
  ::waitpid(process_, &status, 0);
  return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), bytesOf(output_)};
}

}  // namespace testing_support
