// The photo library beside an album of COUNT movies: the time of a save, of a fetch by identifier and of a
// deletion, and of `cp` for the movie that was saved, its copy synced to the disk as the library's is.
//   measure_album COUNT FILLING MOVIE
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "BenchmarkPhone.h"
#include "Device/Device.h"
#include "Dispatch/Queue.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHPhotoLibrary.h"

using namespace ios;

namespace {

constexpr int kRounds = 40, kFetches = 400;
// One transaction of the filling.
constexpr int kPortion = 500;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "%s failed\n", what.c_str());
  std::exit(1);
}

double microseconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> times) {
  std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
  return times[times.size() / 2];
}

void perform(const std::function<void()>& changes) {
  bool done = false;
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(changes, [&done](bool success, const auto& error) {
    if (!success) fail(error->localizedDescription());
    dispatch_async(dispatch_get_main_queue(), [&done] { done = true; });
  });
  if (!Clock::shared().runUntil([&done] { return done; }, std::chrono::minutes(5))) fail("a transaction");
}

std::shared_ptr<PHObject> addMovie(const std::string& path, const std::shared_ptr<PHAssetCollection>& album) {
  const auto request =
      PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(NSURL::fileURLWithPath(path));
  if (!request) fail("reading " + path);
  const auto placeholder = request->placeholderForCreatedAsset();
  PHAssetCollectionChangeRequest::changeRequestForAssetCollection(album)->addAssets({placeholder});
  return placeholder;
}

std::shared_ptr<PHAssetCollection> makeAlbum() {
  std::string identifier;
  perform([&] {
    identifier = PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle("Tellvane")
                     ->placeholderForCreatedAssetCollection()
                     ->localIdentifier();
  });
  return PHAssetCollection::fetchAssetCollectionsWithLocalIdentifiers({identifier}, nullptr)->firstObject();
}

std::shared_ptr<PHAsset> fetch(const std::string& identifier) {
  return PHAsset::fetchAssetsWithLocalIdentifiers({identifier}, nullptr)->firstObject();
}

void copy(std::string from, std::string to) {
  std::string program = "cp";
  char* arguments[] = {program.data(), from.data(), to.data(), nullptr};
  pid_t process = 0;
  int status = 0;
  if (posix_spawnp(&process, "cp", nullptr, nullptr, arguments, environ) != 0 ||
      waitpid(process, &status, 0) != process || status != 0)
    fail("cp");
}

void sync(const std::string& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0 || fsync(descriptor) != 0) fail("fsync");
  close(descriptor);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) fail("reading the arguments");
  const int assets = std::atoi(arguments[1]);
  const std::string filling = arguments[2], movie = arguments[3];
  BenchmarkPhone phone(BenchmarkPhone::Time::real);
  Device::current().setPermission("photos", Permission::authorized);
  const auto album = makeAlbum();
  for (int made = 0; made < assets; made += kPortion) {
    perform([&] {
      for (int index = made; index < std::min(assets, made + kPortion); ++index) addMovie(filling, album);
    });
  }

  std::vector<double> saves, fetches, deletions, copies, syncedCopies;
  std::vector<std::string> identifiers;
  const std::string target = (phone.folder() / "copy.mov").string();
  for (int round = 0; round < kRounds; ++round) {
    saves.push_back(microseconds(
        [&] { perform([&] { identifiers.push_back(addMovie(movie, album)->localIdentifier()); }); }));
    const double copied = microseconds([&] { copy(movie, target); });
    copies.push_back(copied);
    syncedCopies.push_back(copied + microseconds([&] { sync(target); }));
    std::filesystem::remove(target);
  }
  for (int round = 0; round < kFetches; ++round) {
    fetches.push_back(microseconds([&] {
      if (!fetch(identifiers[static_cast<std::size_t>(round) % identifiers.size()])) fail("a fetch");
    }));
  }
  for (const std::string& identifier : identifiers) {
    const auto asset = fetch(identifier);
    deletions.push_back(microseconds([&] { perform([&] { PHAssetChangeRequest::deleteAssets({asset}); }); }));
  }
  std::fprintf(stderr, "save %f\nfetch %f\ndelete %f\ncp %f\ncp_synced %f\n", median(saves), median(fetches),
               median(deletions), median(copies), median(syncedCopies));
}
