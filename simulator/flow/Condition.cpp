#include "simulator/flow/Condition.h"

#include <algorithm>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Words.h"

namespace simulator {
namespace {

const std::vector<std::string>& keys() {
  static const auto& all = *new std::vector<std::string>{"visible", "notVisible", "platform", "true"};
  return all;
}

bool isThisPlatform(const YamlValue& value) {
  static const std::map<std::string, bool> kPlatforms = {{"ios", true}, {"android", false}, {"web", false}};
  return oneOf(value, kPlatforms, "iOS, Android or Web");
}

}  // namespace

Condition::Condition(YamlValue value) : value_(std::move(value)) {
  const auto fields = value_.members(keys());
  if (fields.empty()) value_.fail("expected one of: " + joined(keys()));
  for (const auto& [key, field] : fields) {
    if (key == "visible" || key == "notVisible") selector(field);
    if (key == "platform") isThisPlatform(field);
    if (key == "true") field.text();
  }
}

bool Condition::holds(Stage& stage) const {
  const auto fields = value_.playedWith(stage.script()).members(keys());
  const bool looks = fields.contains("visible") || fields.contains("notVisible");
  if (looks) stage.settle(std::chrono::seconds(1));
  return std::all_of(fields.begin(), fields.end(), [&](const auto& member) {
    const auto& [key, field] = member;
    if (key == "platform") return isThisPlatform(field);
    if (key == "true") return isTrue(field.text());
    return stage.find(selector(field)).has_value() == (key == "visible");
  });
}

std::string Condition::description() const {
  std::vector<std::string> parts;
  for (const auto& [key, field] : value_.members(keys())) {
    if (key == "visible") parts.push_back(selector(field).description() + " is on the screen");
    if (key == "notVisible") parts.push_back(selector(field).description() + " is not on the screen");
    if (key == "platform") parts.push_back("the platform is " + field.text());
    if (key == "true") parts.push_back(field.text());
  }
  return enumerated(parts);
}

bool isTrue(const std::string& text) {
  return !text.empty() && text != "false" && text != "0" && text != "null" && text != "undefined" &&
         text != "NaN";
}

}  // namespace simulator
