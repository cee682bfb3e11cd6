#include "AVFoundation/PictureQueue+Private.h"

#include <algorithm>
#include <utility>

#include "AVFoundation/MoviePicture+Private.h"
#include "AVFoundation/MovieReader+Private.h"

namespace ios {
namespace {

// Differences of times that are meant to be equal.
constexpr double kRounding = 1e-6;

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
  dispatch_async(queue_, [self = shared_from_this()] { self->decode(); });
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

MediaFailure PictureQueue::failure() const {
  MutexLock lock(mutex_);
  return failure_;
}

double PictureQueue::duration() const {
  MutexLock lock(mutex_);
  return duration_;
}

bool PictureQueue::open(MediaFailure& failure) {
  if (reader_) return true;
  const auto path = find_();
  if (!path) {
    failure = MediaError::refusal("open the movie", "there is none");
    return false;
  }
  reader_ = MovieReader::open(*path, AVMEDIA_TYPE_VIDEO, failure);
  return reader_ != nullptr;
}

std::optional<PictureQueue::Picture> PictureQueue::next(MediaFailure& failure) {
  if (held_) return std::exchange(held_, std::nullopt);
  const AVFrame* frame = reader_->next(failure);
  if (!frame) return std::nullopt;
  Picture picture{reader_->timeOf(*frame), imageOf(*frame, failure)};
  return picture.image ? std::optional(std::move(picture)) : std::nullopt;
}

bool PictureQueue::isSuperseded(std::uint64_t generation) const {
  MutexLock lock(mutex_);
  return cancelled_ || generation != generation_;
}

// One picture a block, so that a seek or a release is heeded at once and other queues get their turns.
void PictureQueue::decode() {
  MediaFailure failure;
  const bool isOpen = open(failure);
  std::optional<double> seek;
  std::uint64_t generation = 0;
  {
    MutexLock lock(mutex_);
    if (isOpen) duration_ = std::max(duration_, reader_->duration());
    seek = std::exchange(wanted_, std::nullopt);
    generation = generation_;
  }
  std::optional<Picture> picture;
  if (isOpen && seek) {
    held_ = std::nullopt;
    failure = reader_->seek(*seek);
    if (!failure) picture = next(failure);
    // The picture shown at that time is the last that is not later. It may be seconds of movie away from
    // where reading can begin, and a finger on the bar asks for the next one long before.
    while (picture && !failure && !isSuperseded(generation)) {
      auto following = next(failure);
      if (following && following->time <= *seek + kRounding) {
        picture = std::move(following);
        continue;
      }
      held_ = std::move(following);
      break;
    }
  } else if (isOpen) {
    picture = next(failure);
  }

  bool news = false, more = false;
  {
    MutexLock lock(mutex_);
    queued_ = false;
    if (cancelled_) return;
    if (generation != generation_) {
      more = true;
    } else if (failure) {
      failure_ = failure;
      news = true;
    } else if (!picture) {
      ended_ = true;
      if (!any_) failure_ = MediaError::refusal("play the movie", "it has no pictures");
      news = true;
    } else {
      any_ = true;
      // A movie may say that it is shorter than it is, or not say it at all.
      duration_ = std::max(duration_, picture->time);
      news = ready_.empty();
      ready_.push_back(std::move(*picture));
      more = ready_.size() < kAhead;
    }
  }
  if (news) dispatch_async(dispatch_get_main_queue(), came_);
  if (more) fill();
}

}  // namespace ios
