#include <algorithm>
#include <charconv>
#include <system_error>

#include "Device/Applications.h"
#include "simulator/flow/FlowReader.h"

/// What several commands read from their values.
namespace simulator {
namespace {

namespace fs = std::filesystem;

Place::Coordinate coordinate(const YamlValue& value, std::string text) {
  Place::Coordinate result;
  while (!text.empty() && text.front() == ' ') text.erase(0, 1);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  result.percent = !text.empty() && text.back() == '%';
  if (result.percent) text.pop_back();
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result.value);
  const double most = result.percent ? 100 : 10'000;
  if (error != std::errc() || end != text.data() + text.size() ||
      !(result.value >= 0 && result.value <= most)) {
    value.fail("expected a place such as \"50%,50%\" or \"160,284\", not \"" + value.text() + "\"");
  }
  return result;
}

using Relation = Selector::Relation;
const std::map<std::string, Relation>& relations() {
  static const auto& all = *new std::map<std::string, Relation>{
      {"below", Relation::below},
      {"above", Relation::above},
      {"leftOf", Relation::leftOf},
      {"rightOf", Relation::rightOf},
      {"childOf", Relation::childOf},
      {"containsChild", Relation::containsChild},
      {"containsDescendants", Relation::containsDescendant},
  };
  return all;
}

const std::vector<std::string>& selectorKeys() {
  static const auto& all = *new auto([] {
    std::vector<std::string> keys = {"text",    "id",       "index",   "width",   "height", "tolerance",
                                     "enabled", "selected", "checked", "focused", "traits"};
    for (const auto& [key, unused] : relations()) keys.push_back(key);
    return keys;
  }());
  return all;
}

/// "text square", or a list of such words.
std::vector<Selector::Trait> traits(const YamlValue& value) {
  using Trait = Selector::Trait;
  static const std::map<std::string, Trait> kTraits = {
      {"text", Trait::text}, {"long-text", Trait::longText}, {"square", Trait::square}};
  std::vector<Trait> result;
  if (value.node().IsSequence()) {
    for (const YamlValue& each : value.list())
      result.push_back(oneOf(each, kTraits, "text, long-text or square"));
    return result;
  }
  std::string words = value.text();
  for (std::size_t at = 0; !value.isOpen() && at < words.size();) {
    const std::size_t end = std::min(words.find(' ', at), words.size());
    const auto found = kTraits.find(lowerCase(words.substr(at, end - at)));
    if (end > at && found == kTraits.end())
      value.fail("expected text, long-text or square, not \"" + words + "\"");
    if (end > at) result.push_back(found->second);
    at = end + 1;
  }
  return result;
}

void readRelation(Selector& selector, Relation relation, const YamlValue& value) {
  if (relation != Relation::containsDescendant) {
    selector.relations.push_back({relation, simulator::selector(value)});
    return;
  }
  for (const YamlValue& each : value.list())
    selector.relations.push_back({relation, simulator::selector(each)});
}

void readField(Selector& selector, const std::string& key, const YamlValue& value) {
  constexpr double kLargest = 10'000;
  constexpr int kMost = 10'000;
  if (key == "text") selector.text = pattern(value);
  if (key == "id") selector.id = pattern(value);
  if (key == "index") selector.index = value.integer(-kMost, kMost);
  if (key == "width") selector.width = value.number(0, kLargest);
  if (key == "height") selector.height = value.number(0, kLargest);
  if (key == "tolerance") selector.tolerance = value.number(0, kLargest);
  if (key == "enabled") selector.enabled = value.boolean();
  if (key == "selected") selector.selected = value.boolean();
  if (key == "checked") selector.checked = value.boolean();
  if (key == "focused") selector.focused = value.boolean();
  if (key == "traits") selector.traits = traits(value);
  const auto relation = relations().find(key);
  if (relation != relations().end()) readRelation(selector, relation->second, value);
}

}  // namespace

std::string text(const YamlValue& value) {
  std::string text = value.text();
  if (text.empty()) value.fail("expected a text that is not empty");
  return text;
}

TextPattern pattern(const YamlValue& value) {
  constexpr std::size_t kLongest = 4096;
  TextPattern pattern(text(value));
  if (value.isOpen()) return pattern;
  if (pattern.text().size() > kLongest)
    value.fail("expected a text of at most " + std::to_string(kLongest) + " bytes");
  if (const std::string problem = pattern.problem(); !problem.empty())
    value.fail("this cannot be looked for: " + problem);
  return pattern;
}

Place place(const YamlValue& value) {
  const std::string text = value.text();
  if (value.isOpen()) return {};
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) coordinate(value, "");
  return {coordinate(value, text.substr(0, comma)), coordinate(value, text.substr(comma + 1))};
}

std::string bundleIdentifier(const YamlValue& value) {
  std::string identifier = text(value);
  if (!value.isOpen() && !ios::isBundleIdentifier(identifier))
    value.fail("expected a bundle identifier such as \"com.example.notes\", not \"" + identifier + "\"");
  return identifier;
}

Selector selector(const YamlValue& value, const std::vector<std::string>& others) {
  Selector selector;
  if (!value.isMap()) {
    selector.text = pattern(value);
    return selector;
  }
  std::vector<std::string> known = selectorKeys();
  known.insert(known.end(), others.begin(), others.end());
  bool says = false;
  for (const auto& [key, field] : value.members(known)) {
    if (std::find(others.begin(), others.end(), key) != others.end()) continue;
    readField(selector, key, field);
    says = says || key != "tolerance";
  }
  if (!says && others.empty()) value.fail("expected at least one of: " + joined(selectorKeys()));
  return selector;
}

bool saysSelector(const YamlValue& value) {
  return std::any_of(selectorKeys().begin(), selectorKeys().end(),
                     [&](const std::string& key) { return value.member(key).has_value(); });
}

fs::path file(const YamlValue& value) {
  const fs::path path = fs::path(value.file()).parent_path() / text(value);
  std::error_code error;
  if (!value.isOpen() && !fs::is_regular_file(path, error)) value.fail("there is no file " + path.string());
  return path;
}

std::string outputName(const YamlValue& value) {
  const std::string name = text(value);
  const fs::path path(name);
  // What a flow leaves stays in the output folder, whoever wrote the flow.
  const bool climbs = std::find(path.begin(), path.end(), "..") != path.end();
  if (!value.isOpen() && (path.is_absolute() || climbs || !path.has_filename() || printable(name) != name))
    value.fail("expected a plain name, not \"" + name + "\"");
  return name;
}

YamlValue single(const YamlValue& value, const std::string& key) {
  if (!value.isMap()) return value;
  const auto fields = value.members({key});
  if (!fields.contains(key)) value.fail("needs \"" + key + "\"");
  return fields.at(key);
}

void expectNothing(const YamlValue& value) {
  if (value.isNull() || (value.isMap() && value.members().empty())) return;
  value.fail("takes no values");
}

}  // namespace simulator
