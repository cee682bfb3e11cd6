// Any file that is played either fails with a reason, or becomes ready, has a picture, and comes to an end or goes on.

#include <cstddef>
#include <cstdint>
#include <string>

#include "AVFoundation/AVPlayer.h"
#include "Foundation/NSURL.h"
#include "Require.h"
#include "ScratchDevice.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ios;
  static const ScratchDevice device;
  const auto file = device.write("movie.mov", data, size);
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
