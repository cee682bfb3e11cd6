#include "simulator/live/Json.h"

#include <nlohmann/json.hpp>

namespace simulator {
namespace {

using ios::PropertyList;
using nlohmann::json;

constexpr int kDeepest = 8;

json toJson(const PropertyList& value) {
  if (const auto* text = value.text()) return *text;
  if (const auto* flag = value.boolean()) return *flag;
  if (const auto* whole = value.integer()) return *whole;
  if (const auto* real = value.real()) return *real;
  if (const auto* array = value.array()) {
    json result = json::array();
    for (const PropertyList& each : *array) result.push_back(toJson(each));
    return result;
  }
  if (const auto* members = value.dictionary()) {
    json result = json::object();
    for (const auto& [key, member] : *members) result[key] = toJson(member);
    return result;
  }
  return "";
}

std::optional<PropertyList> fromJson(const json& value, int levels) {
  if (value.is_string()) return PropertyList(value.get<std::string>());
  if (value.is_boolean()) return PropertyList(value.get<bool>());
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t(INT64_MAX))
    return std::nullopt;
  if (value.is_number_integer()) return PropertyList(value.get<std::int64_t>());
  if (value.is_number_float()) return PropertyList(value.get<double>());
  if (levels == 0) return std::nullopt;
  if (value.is_array()) {
    ios::NSArray array;
    for (const json& each : value) {
      auto element = fromJson(each, levels - 1);
      if (!element) return std::nullopt;
      array.push_back(std::move(*element));
    }
    return PropertyList(std::move(array));
  }
  if (value.is_object()) {
    ios::NSDictionary members;
    for (const auto& [key, each] : value.items()) {
      auto member = fromJson(each, levels - 1);
      if (!member) return std::nullopt;
      members[key] = std::move(*member);
    }
    return PropertyList(std::move(members));
  }
  return std::nullopt;
}

/// Stops the parser at the level where nothing would be taken any more, so that it never recurses further.
bool isShallow(std::string_view text) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted) {
      if (c == '\\') ++i;
      if (c == '"') quoted = false;
    } else if (c == '"') {
      quoted = true;
    } else if (c == '{' || c == '[') {
      if (++depth > kDeepest) return false;
    } else if (c == '}' || c == ']') {
      --depth;
    }
  }
  return true;
}

}  // namespace

std::string jsonText(const PropertyList& value) {
  return toJson(value).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<ios::NSDictionary> readJson(std::string_view text) {
  if (!isShallow(text)) return std::nullopt;
  const json parsed = json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!parsed.is_object()) return std::nullopt;
  const auto value = fromJson(parsed, kDeepest);
  if (!value) return std::nullopt;
  return *value->dictionary();
}

std::optional<double> numberIn(const PropertyList* value) {
  if (!value) return std::nullopt;
  if (const double* real = value->real()) return *real;
  if (const std::int64_t* whole = value->integer()) return static_cast<double>(*whole);
  return std::nullopt;
}

}  // namespace simulator
