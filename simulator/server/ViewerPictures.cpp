#include "simulator/server/ViewerPictures.h"

#include <utility>

namespace simulator {

void ViewerPictures::changed(const PixelRect& rect, Instant now) {
  changed_ = changed_.unitedWith(rect);
  lastChange_ = now;
}

std::optional<ViewerPictures::Task> ViewerPictures::next(Instant now) {
  if (!isFree()) return std::nullopt;
  if (!changed_.isEmpty()) {
    encoding_ = true;
    lossy_ = lossy_.unitedWith(changed_);
    return Task{std::exchange(changed_, {}), false};
  }
  if (lossy_.isEmpty() || now < lastChange_ + kRest) return std::nullopt;
  encoding_ = true;
  return Task{std::exchange(lossy_, {}), true};
}

std::optional<ViewerPictures::Instant> ViewerPictures::due() const {
  if (!isFree() || lossy_.isEmpty()) return std::nullopt;
  return lastChange_ + kRest;
}

void ViewerPictures::sent(std::uint32_t sequence) {
  encoding_ = false;
  inFlight_.insert(sequence);
}

bool ViewerPictures::shown(std::uint32_t sequence) {
  return inFlight_.erase(sequence) > 0;
}

}  // namespace simulator
