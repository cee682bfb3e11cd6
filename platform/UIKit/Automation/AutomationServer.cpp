#include "UIKit/Automation/AutomationServer.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <unordered_map>

#include "Device/Device.h"
#include "UIKit/Automation/VisibleElements.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

std::optional<double> number(const PropertyList& request, const char* key) {
  const PropertyList* value = request.member(key);
  if (!value) return std::nullopt;
  if (const double* real = value->real()) return *real;
  if (const std::int64_t* integer = value->integer()) return static_cast<double>(*integer);
  return std::nullopt;
}

std::int64_t integer(const PropertyList& request, const char* key, std::int64_t otherwise) {
  const PropertyList* value = request.member(key);
  const std::int64_t* found = value ? value->integer() : nullptr;
  return found ? *found : otherwise;
}

bool samePixels(const CGImage& a, const CGImage& b) {
  if (a.width() != b.width() || a.height() != b.height()) return false;
  for (std::size_t row = 0; row < a.height(); ++row) {
    if (std::memcmp(a.pixels() + row * a.bytesPerRow(), b.pixels() + row * b.bytesPerRow(), a.width() * 4) !=
        0)
      return false;
  }
  return true;
}

PropertyList describe(const VisibleElement& element) {
  const CGRect& frame = element.frame;
  return NSDictionary{{"text", element.text},   {"x", frame.minX()},        {"y", frame.minY()},
                      {"width", frame.width()}, {"height", frame.height()}, {"control", element.control}};
}

}  // namespace

NSDictionary AutomationServer::answer(const NSDictionary& request) {
  const PropertyList asked(request);
  const std::string* name = asked.text("request");
  NSDictionary answer;
  const std::string problem = name ? perform(*name, asked, answer) : "a request without a name";
  if (!problem.empty()) answer["problem"] = problem;
  // What the application printed must be out before the driver goes on.
  std::fflush(stdout);
  answer["uptime"] = Clock::shared().now().time_since_epoch().count();
  answer["state"] = static_cast<int>(application_.applicationState());
  answer["front"] = application_.front();
  return answer;
}

std::string AutomationServer::perform(const std::string& name, const PropertyList& request,
                                      NSDictionary& answer) {
  Clock& clock = Clock::shared();
  if (name == "runFor") {
    clock.runFor(Clock::Duration(std::max<std::int64_t>(0, integer(request, "nanoseconds", 0))));
  } else if (name == "tap") {
    return tap(request);
  } else if (name == "swipe") {
    return swipe(request);
  } else if (name == "shake") {
    Device::current().input().shake();
    clock.runUntilRest();
  } else if (name == "settle") {
    answer["still"] = settle(integer(request, "limit", 3'000'000'000));
  } else if (name == "elements") {
    clock.runUntilRest();
    NSArray elements;
    for (const VisibleElement& element : visibleElements(application_)) elements.push_back(describe(element));
    answer["elements"] = std::move(elements);
    const CGSize size = UIScreen::mainScreen()->bounds().size;
    answer["width"] = size.width;
    answer["height"] = size.height;
  } else if (name == "screenshot") {
    const auto image = application_.displayImage();
    if (!image || !image->CGImageValue()) return "the display shows nothing";
    answer["png"] = image->CGImageValue()->png();
  } else if (name == "state") {
    clock.runUntilRest();
  } else if (name == "reloadSettings") {
    Device::current().reloadSettings();
    clock.runUntilRest();
  } else if (name == "moveToBackground") {
    const std::string* front = request.text("front");
    application_.moveToBackground(front ? *front : "home");
    clock.runUntilRest();
  } else if (name == "moveToForeground") {
    application_.moveToForeground();
    clock.runUntilRest();
  } else if (name == "openURL") {
    const std::string* url = request.text("url");
    if (!url) return "openURL without a URL";
    openURL(*url, answer);
    clock.runUntilRest();
  } else if (name == "terminate") {
    ended_ = true;
  } else {
    return "no request is called \"" + name + "\"";
  }
  return {};
}

std::string AutomationServer::tap(const PropertyList& request) {
  const auto x = number(request, "x"), y = number(request, "y");
  if (!x || !y) return "a tap without a place";
  Input::Tap tap{.location = {*x, *y}};
  tap.count = static_cast<int>(integer(request, "count", tap.count));
  tap.fingers = static_cast<int>(integer(request, "fingers", tap.fingers));
  tap.hold = Clock::Duration(integer(request, "hold", tap.hold.count()));
  tap.delay = Clock::Duration(integer(request, "delay", tap.delay.count()));
  if (tap.count < 1 || tap.fingers < 1 || tap.hold.count() < 0 || tap.delay.count() < 0)
    return "a tap of nothing";
  Device::current().input().tap(tap);
  return {};
}

std::string AutomationServer::swipe(const PropertyList& request) {
  const auto fromX = number(request, "fromX"), fromY = number(request, "fromY");
  const auto toX = number(request, "toX"), toY = number(request, "toY");
  const std::int64_t duration = integer(request, "duration", 400'000'000);
  if (!fromX || !fromY || !toX || !toY || duration < 0) return "a swipe from nowhere to nowhere";
  Device::current().input().swipe({*fromX, *fromY}, {*toX, *toY}, Clock::Duration(duration));
  return {};
}

bool AutomationServer::settle(std::int64_t limit) {
  // One equal picture may be an animation that is about to start; a few in a row are rest.
  constexpr int kStillFrames = 3;
  Clock& clock = Clock::shared();
  const Clock::Instant end = clock.now() + Clock::Duration(limit);
  auto last = application_.displayImage();
  for (int still = 0; still < kStillFrames;) {
    if (clock.now() >= end) return false;
    clock.advanceFrame();
    auto next = application_.displayImage();
    const bool same = last && next && samePixels(*last->CGImageValue(), *next->CGImageValue());
    still = same ? still + 1 : 0;
    last = std::move(next);
  }
  return true;
}

void AutomationServer::openURL(const std::string& text, NSDictionary& answer) {
  if (application_.applicationState() == UIApplicationState::background) application_.moveToForeground();
  const auto url = NSURL::URLWithString(text);
  const auto& delegate = application_.delegate();
  answer["opened"] = url && delegate && delegate->applicationOpenURL(application_, *url);
}

}  // namespace ios
