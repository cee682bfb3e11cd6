// Saves a movie into the album "Tellvane" of the device in IOS_DEVICE, which is made if there is none:
// `Saver MOVIE COUNT [STEP]`. Prints each asset's identifier, or what went wrong. With STEP, the process
// kills itself at that step of its work on the library's folder.

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Device/Device.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHPhotoLibrary.h"

using namespace ios;

namespace {

void killAtStep(int step) {
  static std::atomic<int> reached = 0;
  setDiskFault([step](const std::string&, const std::filesystem::path& path) {
    const bool ofTheLibrary = path.string().find("/Media") != std::string::npos;
    if (ofTheLibrary && ++reached == step) ::kill(::getpid(), SIGKILL);
    return 0;
  });
}

void perform(const std::function<void()>& changes) {
  bool done = false;
  PHPhotoLibrary::sharedPhotoLibrary()->performChanges(
      changes, [&done](bool, const std::shared_ptr<NSError>& error) {
        if (error) std::printf("%s\n", error->localizedDescription().c_str());
        Clock::shared().postToMain([&done] { done = true; });
      });
  static_cast<void>(Clock::shared().runUntil([&done] { return done; }, std::chrono::minutes(1)));
}

std::shared_ptr<PHAssetCollection> album() {
  const auto options = std::make_shared<PHFetchOptions>();
  options->setPredicate(NSPredicate::predicateWithFormat("title == %@", {"Tellvane"}));
  return PHAssetCollection::fetchAssetCollectionsWithType(PHAssetCollectionType::album,
                                                          PHAssetCollectionSubtype::any, options)
      ->firstObject();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // nothing said is lost, however this ends
  Device::current();
  if (argc > 3) killAtStep(std::atoi(argv[3]));
  static_cast<void>(album());
  Clock::shared().runUntilRest();  // a first look puts the library in order
  if (!album()) {
    perform([] { PHAssetCollectionChangeRequest::creationRequestForAssetCollectionWithTitle("Tellvane"); });
  }
  for (int count = std::atoi(argv[2]); count > 0; --count) {
    perform([&] {
      const auto request =
          PHAssetChangeRequest::creationRequestForAssetFromVideoAtFileURL(NSURL::fileURLWithPath(argv[1]));
      const auto collection = PHAssetCollectionChangeRequest::changeRequestForAssetCollection(album());
      if (!collection) {
        std::printf("the album is not there\n");
        return;
      }
      collection->addAssets({request->placeholderForCreatedAsset()});
      std::printf("%s\n", request->placeholderForCreatedAsset()->localIdentifier().c_str());
    });
  }
  return 0;
}
