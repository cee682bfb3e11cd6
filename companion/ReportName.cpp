#include "ReportName.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace companion {
namespace {

struct Moment {
  std::chrono::year_month_day day;
  std::chrono::hh_mm_ss<std::chrono::seconds> time;
};

Moment momentOf(std::chrono::sys_seconds instant) {
  const auto midnight = std::chrono::floor<std::chrono::days>(instant);
  return {midnight, std::chrono::hh_mm_ss<std::chrono::seconds>(instant - midnight)};
}

std::string formatted(std::chrono::sys_seconds instant, const char* format) {
  const Moment moment = momentOf(instant);
  char text[64];
  std::snprintf(text, sizeof text, format, static_cast<int>(moment.day.year()),
                static_cast<unsigned>(moment.day.month()), static_cast<unsigned>(moment.day.day()),
                static_cast<int>(moment.time.hours().count()),
                static_cast<int>(moment.time.minutes().count()),
                static_cast<int>(moment.time.seconds().count()));
  return text;
}

std::optional<unsigned> number(std::string_view digits) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return value;
}

}  // namespace

std::string ReportName::timestamp() const {
  return formatted(received, "%04d-%02u-%02uT%02d:%02d:%02dZ");
}

std::string ReportName::text() const {
  return formatted(received, "%04d-%02u-%02uT%02d-%02d-%02dZ-") + std::to_string(number);
}

std::optional<ReportName> ReportName::parse(std::string_view text) {
  constexpr std::size_t kNumber = sizeof "2026-01-05T09-41-07Z-" - 1;
  if (text.size() <= kNumber) return std::nullopt;
  const auto year = companion::number(text.substr(0, 4)), month = companion::number(text.substr(5, 2)),
             day = companion::number(text.substr(8, 2)), hour = companion::number(text.substr(11, 2)),
             minute = companion::number(text.substr(14, 2)), second = companion::number(text.substr(17, 2)),
             last = companion::number(text.substr(kNumber));
  if (!year || !month || !day || !hour || !minute || !second || !last) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                         std::chrono::month(*month), std::chrono::day(*day));
  if (!date.ok()) return std::nullopt;
  const ReportName name{std::chrono::sys_days(date) + std::chrono::hours(*hour) +
                            std::chrono::minutes(*minute) + std::chrono::seconds(*second),
                        *last};
  // Catches every other deviation: the text must be exactly what this name is written as.
  if (name.text() != text) return std::nullopt;
  return name;
}

std::string ReportName::date() const {
  static constexpr std::array kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                       "Thursday", "Friday", "Saturday"};
  static constexpr std::array kMonths = {"January",   "February", "March",    "April",
                                         "May",       "June",     "July",     "August",
                                         "September", "October",  "November", "December"};
  const auto day = momentOf(received).day;
  const std::chrono::weekday weekday{std::chrono::sys_days(day)};
  return std::string(kDays[weekday.c_encoding()]) + ", " + std::to_string(static_cast<unsigned>(day.day())) +
         " " + kMonths[static_cast<unsigned>(day.month()) - 1] + " " +
         std::to_string(static_cast<int>(day.year()));
}

std::string ReportName::time() const {
  const std::string stamp = timestamp();
  return stamp.substr(stamp.find('T') + 1, 8) + " UTC";
}

}  // namespace companion
