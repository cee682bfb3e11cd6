// Any file that is played either fails with a reason, or becomes ready, has a picture, and comes to an end or goes on.

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "AVFoundation/AVPlayer.h"
#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "Foundation/NSURL.h"

namespace {

using namespace ios;

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

std::filesystem::path freshFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "movie-XXXXXX").string();
  const std::filesystem::path folder = ::mkdtemp(name.data());
  Clock::shared().useVirtualTime();
  Device::start({.root = folder, .mainBundle = folder, .bundleIdentifier = {}, .settings = DeviceSettings{}});
  return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::filesystem::path folder = freshFolder();
  const auto file = folder / "movie.mov";
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  const auto player = AVPlayer::playerWithURL(NSURL::fileURLWithPath(file));
  const auto run = [](double seconds) {
    Clock::shared().runFor(
        std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(seconds)));
  };
  run(0.1);
  require(player->status() != AVPlayerStatusUnknown, "neither ready nor failed");
  player->play();
  run(0.5);
  player->seekToTime(CMTimeMake(1, 1));
  run(0.5);
  require((player->status() == AVPlayerStatusFailed) == (player->error() != nullptr),
          "a failure without a reason");
  return 0;
}
