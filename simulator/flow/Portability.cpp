#include "simulator/flow/Portability.h"

#include <algorithm>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/StepSource.h"

namespace simulator {
namespace {

/// Keys of portable commands that are this simulator's own.
const std::map<std::string, std::vector<std::string>>& ownFields() {
  static const auto& all = *new std::map<std::string, std::vector<std::string>>{
      {"tapOn", {"fingers", "hold"}},
      {"doubleTapOn", {"fingers", "hold"}},
      {"longPressOn", {"fingers", "hold"}},
      {"launchApp", {"sound", "codecFault"}},
  };
  return all;
}

/// Keys under which a value may stand that could also be written by itself; others may not know them.
const std::map<std::string, std::string>& ownForms() {
  static const auto& all = *new std::map<std::string, std::string>{
      {"assertTrue", "condition"},       {"eraseText", "count"},
      {"evalScript", "script"},          {"pressKey", "key"},
      {"setOrientation", "orientation"}, {"addMedia", "files"},
      {"setAirplaneMode", "enabled"},
  };
  return all;
}

class Check {
 public:
  std::vector<std::string> problems;

  void look(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      lookAt(step);
      if (const Group* group = step.command->group()) {
        for (const auto* part : group->parts()) look(*part);
      }
    }
  }

 private:
  void lookAt(const Step& step) {
    const StepSource& source = *step.source;
    if (source.kind->origin == CommandKind::Origin::own)
      return say(step, "only this simulator has this command");
    if (const auto own = ownFields().find(step.name); own != ownFields().end()) {
      for (const std::string& key : own->second) {
        if (source.value.member(key)) say(step, "only this simulator has the key \"" + key + "\"");
      }
    }
    if (const auto form = ownForms().find(step.name);
        form != ownForms().end() && source.value.member(form->second))
      say(step, "write the value by itself, without \"" + form->second + "\"");
    if (step.name == "evalScript" && source.value.node().IsScalar() &&
        source.value.node().Scalar().find("${") == std::string::npos)
      say(step, "write the script as ${…}");
    lookForTexts(step, source.value.node());
  }

  /// Texts that stand for themselves here because they are no regular expression.
  void lookForTexts(const Step& step, const YAML::Node& node) {
    static const std::vector<std::string> kTexts = {"tapOn",         "doubleTapOn",  "longPressOn",
                                                    "assertVisible", "copyTextFrom", "assertNotVisible"};
    const bool takesText = std::find(kTexts.begin(), kTexts.end(), step.name) != kTexts.end();
    std::string text;
    if (takesText && node.IsScalar()) text = node.Scalar();
    for (const char* key : {"text", "id"}) {
      if (takesText && node.IsMap() && node[key].IsDefined() && node[key].IsScalar())
        text = node[key].Scalar();
    }
    if (text.find("${") == std::string::npos && !TextPattern(text).isExpression())
      say(step, "\"" + text + "\" is not a regular expression; write a \\ before its signs");
  }

  void say(const Step& step, const std::string& what) {
    problems.push_back(step.file + ":" + std::to_string(step.line) + ": " + step.name + ": " + what);
  }
};

}  // namespace

std::vector<std::string> portabilityProblems(const Flow& flow) {
  Check check;
  if (flow.recordedAt)
    check.problems.push_back(flow.environment->context->file +
                             ": recordedAt: only this simulator plays a flow in exact time");
  for (const auto* steps : {&flow.onStart, &flow.steps, &flow.onComplete}) check.look(*steps);
  return std::move(check.problems);
}

}  // namespace simulator
