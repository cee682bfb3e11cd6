#include "AVFoundation/Private/PictureQueue.h"

#include <algorithm>
#include <new>
#include <utility>

#include "AVFoundation/Private/MoviePicture.h"
#include "AVFoundation/Private/MovieReader.h"

namespace ios {
namespace {

// Tolerance for times that are meant to be equal.
constexpr double kRounding = 1e-6;

const std::string kPlay = "play the movie";

}  // namespace

PictureQueue::PictureQueue(std::function<std::optional<std::filesystem::path>()> find,
                           std::function<void()> came)
    : find_(std::move(find)), came_(std::move(came)), queue_(dispatch_queue_create("AVPlayer.pictures")) {}

PictureQueue::~PictureQueue() = default;

void PictureQueue::fill() {
  {
    MutexLock lock(mutex_);
    if (queued_ || cancelled_ || failure_ || (ended_ && !wanted_)) return;
    if (ready_.size() >= kAhead && !wanted_) return;
    queued_ = true;
  }
  try {
    dispatch_async(queue_, [self = shared_from_this()] { self->decode(); });
  } catch (...) {
    MutexLock lock(mutex_);
    queued_ = false;
    throw;
  }
}

void PictureQueue::seek(double seconds) {
  {
    MutexLock lock(mutex_);
    ready_.clear();
    wanted_ = seconds;
    ended_ = false;
    ++generation_;
  }
  fill();
}

void PictureQueue::cancel() {
  MutexLock lock(mutex_);
  cancelled_ = true;
  ready_.clear();
}

std::optional<PictureQueue::Picture> PictureQueue::takeUntil(double seconds) {
  std::optional<Picture> newest;
  MutexLock lock(mutex_);
  while (!ready_.empty() && ready_.front().time <= seconds + kRounding) {
    newest = std::move(ready_.front());
    ready_.pop_front();
  }
  return newest;
}

std::optional<PictureQueue::Picture> PictureQueue::takeNext() {
  MutexLock lock(mutex_);
  if (ready_.empty()) return std::nullopt;
  std::optional<Picture> picture = std::move(ready_.front());
  ready_.pop_front();
  return picture;
}

bool PictureQueue::isAtEnd() const {
  MutexLock lock(mutex_);
  return ended_ && ready_.empty() && !wanted_;
}

std::optional<MediaError> PictureQueue::failure() const {
  MutexLock lock(mutex_);
  return failure_;
}

double PictureQueue::duration() const {
  MutexLock lock(mutex_);
  return duration_;
}

MediaResult<> PictureQueue::open() {
  if (reader_) return {};
  const auto path = find_();
  if (!path) return refused("open the movie", "it does not exist");
  reader_ = IOS_TRY(MovieReader::open(*path, AVMEDIA_TYPE_VIDEO));
  return {};
}

MediaResult<std::optional<PictureQueue::Picture>> PictureQueue::next() {
  if (held_) return std::exchange(held_, std::nullopt);
  const AVFrame* frame = IOS_TRY(reader_->next());
  if (!frame) return std::nullopt;
  return Picture{reader_->timeOf(*frame), IOS_TRY(imageOf(*frame))};
}

MediaResult<std::optional<PictureQueue::Picture>> PictureQueue::seekTo(double seconds,
                                                                       std::uint64_t generation) {
  held_ = std::nullopt;
  IOS_TRY(reader_->seek(seconds));
  auto picture = IOS_TRY(next());
  // The picture shown at that time is the last that is not later. It may be seconds of movie after the point where
  // decoding can begin, and a finger on the seek bar asks for another picture long before it is reached.
  while (picture && !isSuperseded(generation)) {
    auto following = IOS_TRY(next());
    if (!following || following->time > seconds + kRounding) {
      held_ = std::move(following);
      break;
    }
    picture = std::move(following);
  }
  return picture;
}

bool PictureQueue::isSuperseded(std::uint64_t generation) const {
  MutexLock lock(mutex_);
  return cancelled_ || generation != generation_;
}

// One picture per block, so that a seek or a release takes effect at once and other queues get their turns.
void PictureQueue::decode() {
  const auto opened = withinMemory(kPlay, [this] { return open(); });
  std::optional<double> seek;
  std::uint64_t generation = 0;
  {
    MutexLock lock(mutex_);
    if (opened) duration_ = std::max(duration_, reader_->duration());
    seek = std::exchange(wanted_, std::nullopt);
    generation = generation_;
  }
  const auto decoded = withinMemory(kPlay, [&]() -> MediaResult<std::optional<Picture>> {
    if (!opened) return ios::failure(opened.error());
    return seek ? seekTo(*seek, generation) : next();
  });
  keep(decoded, generation);
}

void PictureQueue::keep(const MediaResult<std::optional<Picture>>& decoded, std::uint64_t generation) {
  bool news = true, more = false;
  {
    MutexLock lock(mutex_);
    queued_ = false;
    if (cancelled_) return;
    if (generation != generation_) {
      news = false;
      more = true;
    } else if (!decoded) {
      failure_ = decoded.error();
    } else if (!*decoded) {
      ended_ = true;
      if (!any_) failure_ = MediaError{kPlay, 0, "it has no pictures"};
    } else {
      const Picture& picture = **decoded;
      any_ = true;
      // A movie may say that it is shorter than it is, or not say it at all.
      duration_ = std::max(duration_, picture.time);
      news = ready_.empty();
      ready_.push_back(picture);
      more = ready_.size() < kAhead;
    }
  }
  try {
    if (news) dispatch_async(dispatch_get_main_queue(), came_);
    if (more) fill();
  } catch (const std::bad_alloc&) {
    // Whoever takes the next picture asks for more.
  }
}

}  // namespace ios
