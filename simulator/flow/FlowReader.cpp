#include "simulator/flow/FlowReader.h"

#include <algorithm>
#include <cmath>

#include "Device/Applications.h"
#include "simulator/flow/FlowFile.h"
#include "simulator/flow/Words.h"

namespace simulator {
namespace {

constexpr std::size_t kMostCommands = 10'000;
constexpr std::size_t kDeepest = 16;

const std::map<std::string, CommandKind>& commandKinds() {
  static const auto& all = *new auto([] {
    std::map<std::string, CommandKind> kinds;
    for (const auto& family :
         {applicationCommands(), touchCommands(), screenCommands(), recordCommands(), groupCommands()}) {
      for (const CommandKind& kind : family) kinds.emplace(kind.name, kind);
    }
    return kinds;
  }());
  return all;
}

}  // namespace

std::chrono::nanoseconds fromSeconds(double seconds) {
  return std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

std::string text(const YamlValue& value) {
  std::string text = value.text();
  if (text.empty()) value.fail("expected a text that is not empty");
  return text;
}

TextPattern pattern(const YamlValue& value) {
  constexpr std::size_t kLongest = 4096;
  TextPattern pattern(text(value));
  if (pattern.text().size() > kLongest)
    value.fail("expected a text of at most " + std::to_string(kLongest) + " bytes");
  if (const std::string problem = pattern.problem(); !problem.empty())
    value.fail("this cannot be looked for: " + problem);
  return pattern;
}

std::string bundleIdentifier(const YamlValue& value) {
  std::string identifier = text(value);
  if (!ios::isBundleIdentifier(identifier))
    value.fail("expected a bundle identifier such as \"com.example.notes\", not \"" + identifier + "\"");
  return identifier;
}

YamlValue single(const YamlValue& value, const std::string& key) {
  if (!value.node().IsMap()) return value;
  const auto fields = value.members({key});
  if (!fields.contains(key)) value.fail("needs \"" + key + "\"");
  return fields.at(key);
}

void expectNothing(const YamlValue& value) {
  if (!value.isNull()) value.fail("takes no values");
}

Flow FlowReader::read(const std::filesystem::path& file) {
  const std::string shown = file.string();
  const std::vector<YAML::Node> documents = readDocuments(file);
  if (documents.size() != 2 || !documents[0].IsMap() || !documents[1].IsSequence()) {
    throw FlowError(shown, 1, "expected a header with appId, then a line \"---\", then a list of commands");
  }

  Flow flow;
  Variables variables;
  const YamlValue header(shown, "", documents[0], 1, &variables);
  const auto fields = header.members({"appId", "name", "env", "recordedAt"});
  if (fields.contains("env")) {
    for (const auto& [name, value] : fields.at("env").members()) variables[name] = value.text();
  }
  if (fields.contains("recordedAt"))
    flow.recordedAt = fromSeconds(fields.at("recordedAt").number(0, kLongestSeconds));
  if (!fields.contains("appId")) header.fail("the header needs an appId");
  flow.appId = bundleIdentifier(fields.at("appId"));
  flow.name = fields.contains("name") ? fields.at("name").text()
              : file == "-"           ? "standard input"
                                      : file.stem().string();

  const std::string outerApp = std::exchange(appId_, flow.appId);
  open_.push_back(file.lexically_normal());
  const YamlValue list(shown, "", documents[1], documents[1].Mark().line + 1, &variables);
  if (documents[1].size() == 0) list.fail("there are no commands");
  flow.steps = steps(list);
  open_.pop_back();
  appId_ = outerApp;
  return flow;
}

Flow FlowReader::readInner(const YamlValue& value, const std::string& name) {
  const auto file = std::filesystem::path(value.file()).parent_path() / name;
  if (std::find(open_.begin(), open_.end(), file.lexically_normal()) != open_.end())
    value.fail("the flow runs itself");
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) value.fail("there is no flow " + file.string());
  if (open_.size() >= kDeepest) value.fail("flows nest too deeply");
  return read(file);
}

std::vector<Step> FlowReader::steps(const YamlValue& list) {
  if (++depth_ > kDeepest) list.fail("commands nest too deeply");
  std::vector<Step> result;
  for (const YamlValue& item : list.list()) {
    if (++count_ > kMostCommands) item.fail("more than " + std::to_string(kMostCommands) + " commands");
    result.push_back(step({item.file(), "", item.node(), item.line(), &item.variables()}));
  }
  --depth_;
  return result;
}

Step FlowReader::step(const YamlValue& item) {
  std::string name;
  YAML::Node argument;
  if (item.node().IsScalar()) {
    name = item.node().Scalar();
  } else if (item.node().IsMap()) {
    const auto members = item.members();
    if (members.size() != 1) item.fail("expected one command per item");
    name = members.front().first;
    argument.reset(members.front().second.node());
  } else {
    item.fail("expected a command");
  }
  const auto kind = commandKinds().find(name);
  if (kind == commandKinds().end()) {
    std::vector<std::string> known;
    for (const auto& [each, unused] : commandKinds()) known.push_back(each);
    item.fail("no command is called \"" + name + "\"; known: " + joined(known));
  }
  const YamlValue value(item.file(), name, argument, item.line(), &item.variables());
  return {name, item.file(), item.line(), kind->second.read(value, *this)};
}

std::optional<Flow> readFlow(const std::filesystem::path& file, std::string& problem) {
  try {
    return FlowReader().read(file);
  } catch (const FlowError& error) {
    problem = error.what();
  } catch (const YAML::Exception& error) {
    problem = file.string() + ":" + std::to_string(error.mark.line + 1) + ": " + error.msg;
  }
  return std::nullopt;
}

}  // namespace simulator
