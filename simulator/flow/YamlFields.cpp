#include "simulator/flow/YamlFields.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "simulator/flow/TextPieces.h"
#include "simulator/flow/Words.h"
#include "simulator/script/Script.h"

namespace simulator {
namespace {

std::string placeText(const std::string& file, int line, int column) {
  std::string text = file + ":";
  if (line > 0) text += std::to_string(line) + ":";
  if (line > 0 && column > 0) text += std::to_string(column) + ":";
  return text + " ";
}

bool isCommon(const std::string& key) {
  return key == "label" || key == "optional";
}

}  // namespace

FlowError::FlowError(const std::string& file, int line, int column, const std::string& command,
                     const std::string& what)
    : std::runtime_error(placeText(file, line, column) + (command.empty() ? "" : command + ": ") + what),
      bare_(what) {}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

YamlValue YamlValue::playedWith(Script& script) const {
  YamlValue value = *this;
  value.script_ = &script;
  return value;
}

YamlValue YamlValue::within(std::shared_ptr<const FlowContext> context) const {
  YamlValue value = *this;
  value.context_ = std::move(context);
  return value;
}

YamlValue YamlValue::asArgument() const {
  YamlValue value = *this;
  value.isArgument_ = true;
  return value;
}

void YamlValue::fail(const std::string& what) const {
  throw FlowError(context_->file, line_, column_, command_, what);
}

YamlValue YamlValue::child(const YAML::Node& node) const {
  const YAML::Mark mark = node.Mark();
  YamlValue value(context_, command_, node, mark.is_null() ? line_ : mark.line + 1,
                  mark.is_null() ? column_ : mark.column + 1);
  value.script_ = script_;
  return value;
}

std::string YamlValue::valueOf(const std::string& expression, bool& open) const {
  const auto known = context_->constants.find(expression);
  if (known != context_->constants.end()) return known->second;
  if (script_) {
    ScriptProblem problem;
    std::string value = script_->evaluate(expression, problem);
    if (problem) fail("${" + expression + "}: " + problem.what);
    return value;
  }
  open = true;
  if (context_->later.contains(expression)) return "${" + expression + "}";
  if (isName(expression) && !Script::knows(expression)) {
    std::vector<std::string> names(context_->later.begin(), context_->later.end());
    for (const auto& [name, value] : context_->constants) names.push_back(name);
    fail("no value for ${" + expression + "}: neither env nor -e gives one" + suggestion(expression, names));
  }
  if (const ScriptProblem problem = Script::syntaxProblem(expression))
    fail("${" + expression + "} is not an expression: " + problem.what);
  return "${" + expression + "}";
}

bool YamlValue::isOpen() const {
  if (script_ || !node_.IsScalar() || node_.Scalar().find("${") == std::string::npos) return false;
  bool open = false;
  const auto pieces = textPieces(node_.Scalar());
  if (!pieces) fail("\"${\" without \"}\"");
  for (const TextPiece& piece : *pieces) {
    if (piece.isExpression) valueOf(piece.text, open);
  }
  return open;
}

bool YamlValue::hasOpen() const {
  if (node_.IsScalar()) return isOpen();
  if (node_.IsSequence()) {
    const auto items = list();
    return std::any_of(items.begin(), items.end(), [](const YamlValue& item) { return item.hasOpen(); });
  }
  if (!node_.IsMap()) return false;
  for (const auto& entry : node_) {
    if (entry.first.IsScalar() && entry.first.Scalar() != "commands" && child(entry.second).hasOpen())
      return true;
  }
  return false;
}

std::string YamlValue::text() const {
  if (!node_.IsScalar()) fail("expected a text");
  const std::string& raw = node_.Scalar();
  if (raw.find("${") == std::string::npos) return raw;
  const auto pieces = textPieces(raw);
  if (!pieces) fail("\"${\" without \"}\"");
  std::string text;
  bool open = false;
  for (const TextPiece& piece : *pieces) text += piece.isExpression ? valueOf(piece.text, open) : piece.text;
  return text;
}

double YamlValue::number(double least, double most) const {
  if (isOpen()) return least;
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
  if (isOpen()) return false;
  const std::string written = text();
  if (written == "true") return true;
  if (written != "false") fail("expected true or false, not \"" + written + "\"");
  return false;
}

std::vector<YamlValue> YamlValue::list() const {
  if (!node_.IsSequence()) fail("expected a list");
  std::vector<YamlValue> values;
  values.reserve(node_.size());
  for (const auto& item : node_) values.push_back(child(item));
  return values;
}

std::vector<std::pair<std::string, YamlValue>> YamlValue::members() const {
  if (!node_.IsMap()) fail("expected keys with values");
  std::vector<std::pair<std::string, YamlValue>> values;
  for (const auto& entry : node_) {
    const YamlValue key = child(entry.first);
    if (!entry.first.IsScalar()) key.fail("expected a key");
    const std::string& name = entry.first.Scalar();
    if (std::any_of(values.begin(), values.end(), [&](const auto& member) { return member.first == name; }))
      key.fail("\"" + name + "\" comes twice");
    YamlValue value = child(entry.second);
    if (value.isNull()) {
      value.line_ = key.line_;
      value.column_ = key.column_;
    }
    values.emplace_back(name, std::move(value));
  }
  if (isArgument_) std::erase_if(values, [](const auto& member) { return isCommon(member.first); });
  return values;
}

std::map<std::string, YamlValue> YamlValue::members(const std::vector<std::string>& known) const {
  std::map<std::string, YamlValue> values;
  for (auto& [name, value] : members()) {
    if (std::find(known.begin(), known.end(), name) == known.end())
      value.fail("no key is called \"" + name + "\"" + suggestion(name, known) + "; known: " + joined(known));
    values.emplace(name, std::move(value));
  }
  return values;
}

std::optional<YamlValue> YamlValue::member(const std::string& key) const {
  if (!node_.IsMap()) return std::nullopt;
  const YAML::Node found = node_[key];
  if (!found.IsDefined()) return std::nullopt;
  return child(found);
}

}  // namespace simulator
