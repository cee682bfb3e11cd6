#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <set>

#include "simulator/flow/YamlFields.h"

#include "simulator/flow/Words.h"

namespace simulator {

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

void YamlValue::fail(const std::string& what) const {
  throw FlowError(file_, line_, (command_.empty() ? "" : command_ + ": ") + what);
}

YamlValue YamlValue::child(const YAML::Node& node) const {
  return {file_, command_, node, node.Mark().is_null() ? line_ : node.Mark().line + 1, variables_};
}

std::string YamlValue::text() const {
  if (!node_.IsScalar()) fail("expected a text");
  const std::string& raw = node_.Scalar();
  std::string text;
  for (std::size_t at = 0; at < raw.size();) {
    const std::size_t open = raw.find("${", at);
    text += raw.substr(at, open - at);
    if (open == std::string::npos) break;
    const std::size_t close = raw.find('}', open);
    if (close == std::string::npos) fail("\"${\" without \"}\"");
    const std::string name = raw.substr(open + 2, close - open - 2);
    const auto found = variables_->find(name);
    if (found == variables_->end()) fail("no value for ${" + name + "} in the header's env");
    text += found->second;
    at = close + 1;
  }
  return text;
}

double YamlValue::number(double least, double most) const {
  const std::string written = node_.IsScalar() ? text() : "";
  double value = NAN;
  const auto [end, error] = std::from_chars(written.data(), written.data() + written.size(), value);
  if (error != std::errc() || end != written.data() + written.size() || !(value >= least && value <= most)) {
    char range[80];
    std::snprintf(range, sizeof range, "expected a number from %g to %g", least, most);
    fail(range + (written.empty() ? "" : ", not \"" + written + "\""));
  }
  return value;
}

int YamlValue::integer(int least, int most) const {
  const double value = number(least, most);
  if (value != std::floor(value)) fail("expected a whole number, not \"" + text() + "\"");
  return static_cast<int>(value);
}

bool YamlValue::boolean() const {
  const std::string written = text();
  if (written == "true") return true;
  if (written != "false") fail("expected true or false, not \"" + written + "\"");
  return false;
}

std::vector<YamlValue> YamlValue::list() const {
  if (!node_.IsSequence()) fail("expected a list");
  std::vector<YamlValue> values;
  for (const auto& item : node_) values.push_back(child(item));
  return values;
}

std::vector<std::pair<std::string, YamlValue>> YamlValue::members() const {
  if (!node_.IsMap()) fail("expected keys with values");
  std::vector<std::pair<std::string, YamlValue>> values;
  std::set<std::string> seen;
  for (const auto& entry : node_) {
    const YamlValue key = child(entry.first);
    if (!entry.first.IsScalar()) key.fail("expected a key");
    const std::string name = entry.first.Scalar();
    if (!seen.insert(name).second) key.fail("\"" + name + "\" comes twice");
    YamlValue value = child(entry.second);
    if (value.isNull()) value.line_ = key.line_;
    values.emplace_back(name, value);
  }
  return values;
}

std::map<std::string, YamlValue> YamlValue::members(const std::vector<std::string>& known) const {
  std::map<std::string, YamlValue> values;
  for (auto& [name, value] : members()) {
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      value.fail("no key is called \"" + name + "\"; known: " + joined(known));
    }
    values.emplace(name, value);
  }
  return values;
}

}  // namespace simulator
