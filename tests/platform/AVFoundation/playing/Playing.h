#pragma once

#include <cmath>
#include <memory>

#include "AVFoundation/AVPlayer.h"
#include "DeviceClock/Clock.h"
#include "platform/AVFoundation/Studio.h"
#include "platform/AVFoundation/playing/ColouredMovie.h"

namespace testing_support {

/// A device with one player and nothing that shows it.
class Playing : public Studio {
 public:
  void open(const ios::NSURL& url) {
    player = ios::AVPlayer::playerWithURL(url);
    runFor(0.2);
  }
  void open(const std::filesystem::path& path) { open(ios::NSURL::fileURLWithPath(path)); }
  std::filesystem::path movies() const { return folder().path() / "movies"; }
  void runFor(double seconds) const {
    ios::Clock::shared().runFor(std::chrono::nanoseconds(std::llround(seconds * 1e9)));
  }
  double time() const { return ios::CMTimeGetSeconds(player->currentTime()); }
  /// The colour in the middle of the picture that is shown now; far from any colour without one.
  Colour picture() const {
    const auto& image = player->currentPicture();
    if (!image) return {-1000, -1000, -1000};
    const std::uint8_t* pixel =
        image->pixels() + image->height() / 2 * image->bytesPerRow() + 4 * (image->width() / 2);
    return {pixel[2], pixel[1], pixel[0]};
  }

  std::shared_ptr<ios::AVPlayer> player;
};

}  // namespace testing_support
