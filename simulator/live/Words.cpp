#include "simulator/live/Words.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "simulator/live/Json.h"

namespace simulator {
namespace {

constexpr std::pair<int, const char*> kOrientations[] = {
    {1, "portrait"}, {2, "upsideDown"}, {3, "landscapeLeft"}, {4, "landscapeRight"}};

}  // namespace

std::string orientationName(int orientation) {
  for (const auto& [number, name] : kOrientations) {
    if (number == orientation) return name;
  }
  return "portrait";
}

std::optional<int> orientationNamed(const std::string& name) {
  for (const auto& [number, known] : kOrientations) {
    if (name == known) return number;
  }
  return std::nullopt;
}

std::string permissionName(ios::Permission permission) {
  switch (permission) {
    case ios::Permission::authorized:
      return "granted";
    case ios::Permission::notDetermined:
      return "ask";
    default:
      return "refused";
  }
}

std::string permissionWord(ios::Permission permission) {
  if (permission == ios::Permission::notDetermined) return "unset";
  return permission == ios::Permission::authorized ? "allow" : "deny";
}

std::string wallText(std::chrono::sys_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

std::string inYaml(const std::string& text) {
  return jsonText(text);  // which YAML has as one of its own forms
}

bool isSoundSource(const std::string& source, bool realTime) {
  if (source == "silence" || source == "absent" || source == "tone") return true;
  if (source == "machine") return realTime;
  if (source.starts_with("tone:")) {
    char* end = nullptr;
    const double hertz = std::strtod(source.c_str() + 5, &end);
    return *end == '\0' && hertz >= 20 && hertz <= 20'000;
  }
  std::error_code error;
  return source.starts_with("file:") && std::filesystem::is_regular_file(source.substr(5), error);
}

}  // namespace simulator
