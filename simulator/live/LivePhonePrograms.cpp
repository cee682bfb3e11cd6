#include <cmath>

#include "CoreGraphics/CGImage.h"
#include "Foundation/NSData.h"
#include "UIKit/UIPasteboard.h"
#include "simulator/flow/Stage.h"
#include "simulator/live/Json.h"
#include "simulator/live/LivePhone.h"
#include "simulator/live/Survey.h"

/// What programs do with the phone beside what its page does.
namespace simulator {
namespace {

using ios::Clock;
using ios::NSDictionary;
using std::chrono::milliseconds;
using Phase = ios::TouchSample::Phase;

constexpr Clock::Duration kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);
constexpr Clock::Duration kRest = std::chrono::seconds(3), kRestAfterTap = std::chrono::seconds(1);
const std::string kTextType = "public.utf8-plain-text";

/// Thrown through a gesture whose program has gone, or whose phone is switched off.
struct GestureStopped {};

NSDictionary problem(const std::string& text) {
  return text.empty() ? NSDictionary{} : NSDictionary{{"problem", text}};
}

std::optional<double> within(const ios::PropertyList& members, const char* key, double missing, double least,
                             double most) {
  const auto* member = members.member(key);
  const auto value = member ? numberIn(member) : std::optional(missing);
  return value && *value >= least && *value <= most ? value : std::nullopt;
}

std::optional<ios::CGPoint> place(const ios::PropertyList& members, const char* x, const char* y) {
  const auto left = within(members, x, -1, 0, 10'000), top = within(members, y, -1, 0, 10'000);
  if (!left || !top) return std::nullopt;
  return ios::CGPoint{*left, *top};
}

}  // namespace

/// Lets `perform` use the phone as a hand does: at the wall's pace, or at once while the phone is paused. Whoever else
/// wants something waits until it is done. Fingers that are down when it is stopped are taken off.
LivePhone::Answer LivePhone::gesture(const std::function<Problem()>& perform) {
  std::map<std::int64_t, ios::TouchSample> down;
  phone_.setPacer([&](Clock::Duration duration, const std::vector<ios::TouchSample>& touches) {
    for (const auto& sample : touches) {
      down[sample.finger] = sample;
      if (sample.phase == Phase::ended) down.erase(sample.finger);
    }
    touches_.insert(touches_.end(), touches.begin(), touches.end());
    return pacedGesture(duration);
  });
  gestureViewer_ = asker_;
  gestureStops_ = false;
  Problem found;
  try {
    found = perform();
  } catch (const GestureStopped&) {
    for (auto& [finger, sample] : down) {
      sample.phase = Phase::cancelled;
      touches_.push_back(sample);
    }
    found = "stopped";
  }
  gestureViewer_ = 0;
  phone_.setPacer({});
  return problem(found);
}

ios::automation::Step::Answer LivePhone::pacedGesture(Clock::Duration duration) {
  const Clock::Instant end = phoneNow() + duration;
  ios::automation::Step::Answer seen;
  if (duration == Clock::Duration::zero()) seen = stepOnce(duration);
  while (phoneNow() < end) {
    const Clock::Instant next = std::min(end, phoneNow() + kFrame);
    Clock::Duration due = next - phoneNow();
    if (!options_.phone.realTime && !pace_.isPaused()) due = pace_.due(wallNow(), phoneNow(), nextDue());
    if (options_.phone.realTime || phoneNow() + due >= next) {
      const auto changed = seen.changedWidth;
      seen = stepOnce(std::min(due, end - phoneNow()));
      seen.changedWidth = std::max(seen.changedWidth, changed);
    }
    tellChanges();
    attend(milliseconds::zero());
    if (gestureStops_ || ended_) throw GestureStopped{};
    if (phoneNow() >= end || options_.phone.realTime || pace_.isPaused()) continue;
    if (const auto wake = pace_.wallTimeOf(std::min(end, phoneNow() + kFrame))) inbox_.waitUntil(*wake);
  }
  return seen;
}

LivePhone::Answer LivePhone::tap(const Members& members) {
  const std::string* text = members.text("text");
  const auto at = place(members, "x", "y");
  const auto count = within(members, "count", 1, 1, 1000), fingers = within(members, "fingers", 1, 1, 5);
  const auto hold = within(members, "hold", 50, 0, 3'600'000),
             delay = within(members, "delay", 100, 0, 3'600'000);
  const auto patience = within(members, "patience", 7000, 0, 3'600'000);
  if (!text == !at) return problem("expected a place on the screen, or a text");
  if (!count || !fingers || !hold || !delay || !patience) return problem("expected numbers that make sense");
  ios::automation::Tap tap{.count = static_cast<int>(*count),
                           .fingers = static_cast<int>(*fingers),
                           .hold = milliseconds(std::llround(*hold)),
                           .delay = milliseconds(std::llround(*delay))};
  return gesture([&]() -> Problem {
    if (text) {
      Selector wanted;
      wanted.text = TextPattern(*text);
      Stage stage(phone_, console_, [](const std::string&, const ios::Bytes&) { return Problem(); });
      if (!stage.await(milliseconds(std::llround(*patience)), [&] { return stage.find(wanted).has_value(); }))
        return "there is no \"" + *text + "\" on the screen";
      phone_.settle(kRest);
      const auto found = stage.find(wanted);
      if (!found) return "\"" + *text + "\" went before it could be tapped";
      tap.location = {found->frame.midX(), found->frame.midY()};
    } else {
      tap.location = *at;
    }
    phone_.tap(tap);
    if (text) phone_.settle(kRestAfterTap);
    return {};
  });
}

LivePhone::Answer LivePhone::swipe(const Members& members) {
  const auto from = place(members, "x1", "y1"), to = place(members, "x2", "y2");
  const auto duration = within(members, "duration", 400, 1, 3'600'000);
  if (!from || !to || !duration) return problem("expected two places on the screen, and a duration");
  return gesture([&]() -> Problem {
    phone_.swipe(*from, *to, milliseconds(std::llround(*duration)));
    return {};
  });
}

LivePhone::Answer LivePhone::elements(const Members&) {
  return elementsValue(phone_.elements());
}

LivePhone::Answer LivePhone::picture(const Members& members) {
  const std::string* type = members.text("type");
  if (type && *type != "png" && *type != "jpeg") return problem("expected the type png or jpeg");
  ios::Bytes bytes = phone_.picture();
  if (bytes.empty()) return problem("the display shows nothing");
  if (type && *type == "jpeg") {
    constexpr double kQuality = 0.9;
    const auto image = ios::CGImage::decode(bytes);
    auto jpeg = image ? image->jpeg(kQuality) : std::nullopt;
    if (!jpeg) return problem("the picture could not be encoded");
    bytes = std::move(*jpeg);
  }
  return {{"bytes", std::move(bytes)}};
}

LivePhone::Answer LivePhone::copyText(const Members& members) {
  const std::string* text = members.text("text");
  if (!text) return problem("expected a text");
  ios::UIPasteboardItem item;
  item[kTextType] = std::make_shared<ios::NSData>(ios::Bytes(text->begin(), text->end()));
  ios::UIPasteboard::generalPasteboard()->setItems({item});
  return {};
}

LivePhone::Answer LivePhone::pasteText(const Members&) {
  for (const auto& item : ios::UIPasteboard::generalPasteboard()->items()) {
    if (const auto found = item.find(kTextType); found != item.end()) {
      const ios::Bytes& bytes = found->second->bytes();
      return {{"bytes", bytes}};
    }
  }
  return {{"bytes", ios::Bytes()}};
}

LivePhone::Answer LivePhone::recordMovie(const Members& members) {
  const auto* on = members.member("on");
  const std::string* file = members.text("file");
  if (!on || !on->boolean()) return problem("expected on to be true or false");
  if (!*on->boolean()) {
    if (!movie_ || movieViewer_ != asker_) return problem("no movie is being recorded");
    const std::string wrong = movie_->end(phoneNow().time_since_epoch());
    movie_.reset();
    return problem(wrong);
  }
  if (!file) return problem("expected a file");
  if (movie_) return problem("a movie is being recorded already");
  const Display::Shape shape = display_.shape();
  if (shape.width == 0) return problem("the display shows nothing");
  std::string wrong;
  movie_ = ScreenMovie::begin(*file, shape, phoneNow().time_since_epoch(), wrong);
  if (!movie_) return problem(wrong);
  movieViewer_ = asker_;
  movie_->show(phone_.displayBytes(), shape, phoneNow().time_since_epoch());
  return {};
}

LivePhone::Answer LivePhone::addMovie(const Members& members) {
  const std::string* file = members.text("file");
  if (!file) return problem("expected a file");
  return problem(phone_.addMovie(*file));
}

LivePhone::Answer LivePhone::contentSize(const Members& members) {
  const auto* size = members.member("size");
  if (!size) return {{"size", std::string(ios::textSizeName(ios::Device::current().settings().textSize))}};
  const auto named = size->text() ? ios::textSizeNamed(*size->text()) : std::nullopt;
  if (!named) return problem("no text size of that name");
  if (recorder_.isRecording()) return problem("a flow cannot say this; end the recording first");
  phone_.changeSettings([&](ios::DeviceSettings& settings) { settings.textSize = *named; });
  return {};
}

LivePhone::Answer LivePhone::statusBar(const Members& members) {
  const std::string* time = members.text("time");
  constexpr std::size_t kLongest = 64;
  if (!time || time->size() > kLongest) return problem("expected a text of at most 64 bytes");
  phone_.changeSettings([&](ios::DeviceSettings& settings) { settings.statusBarTime = *time; });
  return {};
}

/// What a program has begun and not ended goes with it.
void LivePhone::abandon(ViewerId viewer) {
  if (movie_ && movieViewer_ == viewer) movie_.reset();
  if (playback_ && playback_->viewer == viewer && playback_->fromProgram) flowStops_ = true;
  if (recorder_.isRecording() && recordingViewer_ == viewer) {
    recorder_.end(phoneNow().time_since_epoch());
    recordingViewer_ = 0;
    tellFlow();
  }
}

}  // namespace simulator
