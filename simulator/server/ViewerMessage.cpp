#include "simulator/server/ViewerMessage.h"

#include <cmath>
#include <map>

#include "simulator/live/Json.h"

namespace simulator {
namespace {

using ios::PropertyList;
using ios::TouchSample;

constexpr int kFingers = 10;
// Far beyond every screen; what is further out is no place.
constexpr double kFarthest = 100'000;

std::optional<std::uint32_t> count(const PropertyList& value) {
  const std::int64_t* number = value.integer();
  if (!number || *number < 0 || *number > UINT32_MAX) return std::nullopt;
  return static_cast<std::uint32_t>(*number);
}

std::optional<TouchSample> readFinger(const PropertyList& value) {
  static const std::map<std::string_view, TouchSample::Phase> phases = {
      {"began", TouchSample::Phase::began},
      {"moved", TouchSample::Phase::moved},
      {"ended", TouchSample::Phase::ended},
      {"cancelled", TouchSample::Phase::cancelled},
  };
  const ios::NSArray* parts = value.array();
  if (!parts || parts->size() != 4) return std::nullopt;
  const std::int64_t* finger = (*parts)[0].integer();
  const std::string* phase = (*parts)[1].text();
  const auto x = numberIn(&(*parts)[2]), y = numberIn(&(*parts)[3]);
  if (!finger || *finger < 0 || *finger >= kFingers || !phase || !phases.contains(*phase))
    return std::nullopt;
  if (!x || !y || !(std::abs(*x) <= kFarthest) || !(std::abs(*y) <= kFarthest)) return std::nullopt;
  return TouchSample{*finger, phases.at(*phase), {*x, *y}};
}

std::optional<ViewerMessage> readTouches(const PropertyList& number, const PropertyList* fingers) {
  const auto counted = count(number);
  if (!counted || !fingers || !fingers->array() || fingers->array()->size() > kFingers) return std::nullopt;
  TouchMessage message{*counted, {}};
  for (const PropertyList& each : *fingers->array()) {
    const auto finger = readFinger(each);
    if (!finger) return std::nullopt;
    message.samples.push_back(*finger);
  }
  return message;
}

}  // namespace

std::optional<ViewerMessage> readViewerMessage(std::string_view text) {
  auto members = readJson(text);
  if (!members) return std::nullopt;
  const PropertyList message(*members);
  if (const PropertyList* number = message.member("touch"))
    return readTouches(*number, message.member("fingers"));
  if (const PropertyList* shown = message.member("shown")) {
    const auto sequence = count(*shown);
    return sequence ? std::optional<ViewerMessage>(ShownMessage{*sequence}) : std::nullopt;
  }
  const PropertyList* id = message.member("id");
  if (!id || !id->integer() || !message.text("command")) return std::nullopt;
  members->erase("id");
  return CommandMessage{*id->integer(), std::move(*members)};
}

}  // namespace simulator
