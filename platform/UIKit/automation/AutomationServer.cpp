#include "UIKit/AutomationServer.h"

#include <sys/resource.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

#include "Device/Device.h"
#include "UIKit/AutomationCoding.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

bool samePixels(const CGImage& a, const CGImage& b) {
  if (a.width() != b.width() || a.height() != b.height()) return false;
  for (std::size_t row = 0; row < a.height(); ++row) {
    if (std::memcmp(a.pixels() + row * a.bytesPerRow(), b.pixels() + row * b.bytesPerRow(), a.width() * 4) !=
        0)
      return false;
  }
  return true;
}

/// Groups these changes into events: fingers that change together share one, and a finger's next change starts another.
/// Changes that fingers cannot make are left out.
std::vector<std::vector<TouchSample>> touchEvents(const std::vector<automation::Step::Touch>& touches) {
  std::vector<std::vector<TouchSample>> events;
  for (const auto& touch : touches) {
    if (touch.phase < 0 || touch.phase > static_cast<int>(TouchSample::Phase::cancelled)) continue;
    const bool again =
        events.empty() || std::any_of(events.back().begin(), events.back().end(),
                                      [&](const TouchSample& each) { return each.finger == touch.finger; });
    if (again) events.emplace_back();
    events.back().push_back({touch.finger, static_cast<TouchSample::Phase>(touch.phase), touch.location});
  }
  return events;
}

}  // namespace

using namespace automation;

template <>
std::string AutomationServer::perform(const RunFor& request, Done&) {
  Clock::shared().runFor(std::max(Clock::Duration::zero(), request.duration));
  return {};
}

template <>
std::string AutomationServer::perform(const Tap& request, Done&) {
  if (request.count < 1 || request.fingers < 1 || request.hold.count() < 0 || request.delay.count() < 0)
    return "a tap without taps or fingers";
  Device::current().input().tap(
      {request.location, request.count, request.fingers, request.hold, request.delay});
  return {};
}

template <>
std::string AutomationServer::perform(const Swipe& request, Done&) {
  if (request.duration.count() < 0) return "a swipe of negative duration";
  Device::current().input().swipe(request.from, request.to, request.duration);
  return {};
}

template <>
std::string AutomationServer::perform(const Shake&, Done&) {
  Device::current().input().shake();
  Clock::shared().runUntilRest();
  return {};
}

template <>
std::string AutomationServer::perform(const Settle& request, Settle::Answer& answer) {
  // One equal picture may be an animation that is about to start; a few in a row are rest.
  constexpr int kStillFrames = 3;
  // While something moves, not every picture has to be drawn.
  constexpr int kMovingFrames = 3;
  Clock& clock = Clock::shared();
  const Clock::Instant end = clock.now() + request.limit;
  auto last = application_.displayImage();
  int frames = 1;
  for (int still = 0; still < kStillFrames;) {
    if (clock.now() >= end) return {};
    for (int frame = 0; frame < frames && clock.now() < end; ++frame) clock.advanceFrame();
    auto next = application_.displayImage();
    const bool same =
        last && next && (last == next || samePixels(*last->CGImageValue(), *next->CGImageValue()));
    still = same ? still + 1 : 0;
    frames = same ? 1 : kMovingFrames;
    last = std::move(next);
  }
  answer.still = true;
  return {};
}

template <>
std::string AutomationServer::perform(const Elements&, Elements::Answer& answer) {
  Clock::shared().runUntilRest();
  answer.elements = visibleElements(application_);
  return {};
}

template <>
std::string AutomationServer::perform(const Tree&, Tree::Answer& answer) {
  Clock::shared().runUntilRest();
  answer.top = topViewControllerName(application_);
  answer.windows = viewTree(application_);
  return {};
}

template <>
std::string AutomationServer::perform(const Screenshot&, Screenshot::Answer& answer) {
  const auto image = application_.displayImage();
  if (image && image->CGImageValue()) answer.png = image->CGImageValue()->png();
  return {};
}

template <>
std::string AutomationServer::perform(const State&, Done&) {
  Clock::shared().runUntilRest();
  return {};
}

template <>
std::string AutomationServer::perform(const ReloadSettings&, Done&) {
  Device::current().reloadSettings();
  Clock::shared().runUntilRest();
  return {};
}

template <>
std::string AutomationServer::perform(const MoveToBackground& request, Done&) {
  application_.moveToBackground(request.front);
  Clock::shared().runUntilRest();
  return {};
}

template <>
std::string AutomationServer::perform(const MoveToForeground&, Done&) {
  application_.moveToForeground();
  Clock::shared().runUntilRest();
  return {};
}

template <>
std::string AutomationServer::perform(const OpenURL& request, OpenURL::Answer& answer) {
  if (application_.applicationState() == UIApplicationState::background) application_.moveToForeground();
  const auto url = NSURL::URLWithString(request.url);
  const auto& delegate = application_.delegate();
  answer.opened = url && delegate && delegate->applicationOpenURL(application_, *url);
  Clock::shared().runUntilRest();
  return {};
}

template <>
std::string AutomationServer::perform(const LimitFiles& request, Done&) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_FSIZE, &limit) != 0) return "files cannot be limited";
  limit.rlim_cur = request.bytes < 0 ? limit.rlim_max
                                     : std::min<rlim_t>(static_cast<rlim_t>(request.bytes), limit.rlim_max);
  return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 ? "" : "files cannot be limited";
}

template <>
std::string AutomationServer::perform(const ShareDisplay& request, Done&) {
  if (request.descriptor < 0 || request.descriptor > INT_MAX) return "no display has this descriptor";
  std::string problem;
  display_ = DisplayMemory::adopt(FileDescriptor(static_cast<int>(request.descriptor)), problem);
  return problem;
}

template <>
std::string AutomationServer::perform(const Step& request, Step::Answer& answer) {
  Clock& clock = Clock::shared();
  for (const auto& touches : touchEvents(request.touches)) {
    Device::current().input().touches(touches);
    clock.runUntilRest();
  }
  clock.runFor(std::max(Clock::Duration::zero(), request.duration));
  const auto picture = request.shown && display_ ? application_.displayImage() : nullptr;
  if (picture && picture->CGImageValue()) {
    const CGImage& image = *picture->CGImageValue();
    const DisplayMemory::Change change = display_->show(image);
    answer.width = static_cast<int>(image.width());
    answer.height = static_cast<int>(image.height());
    answer.x = change.x;
    answer.y = change.y;
    answer.changedWidth = change.width;
    answer.changedHeight = change.height;
  }
  if (const auto next = clock.nextEvent()) answer.nextEvent = next->time_since_epoch();
  return {};
}

template <>
std::string AutomationServer::perform(const Terminate&, Done&) {
  ended_ = true;
  return {};
}

template <class Request>
std::string AutomationServer::performEncoded(const PropertyList& asked, NSDictionary& answer) {
  Request request;
  if (const std::string bad = firstBadField(asked, request); !bad.empty())
    return std::string(Request::kName) + ": \"" + bad + "\" is missing or of another kind";
  typename Request::Answer result;
  std::string problem = perform(request, result);
  encodeInto(answer, result);
  return problem;
}

struct AutomationServer::Table {
  using Perform = std::string (AutomationServer::*)(const PropertyList&, NSDictionary&);
  template <class... Each>
  static std::map<std::string_view, Perform> made(RequestList<Each...>) {
    return {{Each::kName, &AutomationServer::performEncoded<Each>}...};
  }
};

NSDictionary AutomationServer::answer(const NSDictionary& request) {
  static const auto& table = *new auto(Table::made(Requests()));
  const PropertyList asked(request);
  const std::string* name = asked.text("request");
  const auto found = name ? table.find(*name) : table.end();
  NSDictionary answer;
  Status status;
  status.problem = !name                  ? "a request without a name"
                   : found == table.end() ? "no request is called \"" + *name + "\""
                                          : (this->*found->second)(asked, answer);
  // What the application printed must be out before the driver goes on.
  std::fflush(stdout);
  status.uptime = Clock::shared().now().time_since_epoch();
  status.state = static_cast<int>(application_.applicationState());
  status.front = application_.front();
  encodeInto(answer, status);
  return answer;
}

}  // namespace ios
