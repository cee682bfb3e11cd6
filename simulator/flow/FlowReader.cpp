#include "simulator/flow/FlowReader.h"

#include <algorithm>
#include <cmath>

#include "simulator/flow/FlowFile.h"
#include "simulator/flow/StepSource.h"

namespace simulator {
namespace {

constexpr std::size_t kMostCommands = 10'000;
constexpr std::size_t kDeepest = 16;

/// Adds a text that expressions can name from now on.
void add(FlowContext& context, const std::string& name, const YamlValue& value) {
  if (value.isOpen()) {
    context.constants.erase(name);
    context.later.insert(name);
  } else {
    context.constants[name] = value.text();
    context.later.erase(name);
  }
}

[[noreturn]] void failForUnknown(const YamlValue& item, const std::string& name) {
  if (name.ends_with("AI"))
    item.fail("\"" + name + "\" asks a model that understands pictures, and this phone has none");
  std::vector<std::string> known;
  for (const auto& [each, unused] : commandKinds()) known.push_back(each);
  item.fail("no command is called \"" + name + "\"" + suggestion(name, known) + "; known: " + joined(known));
}

std::vector<std::string> tags(const YamlValue& value) {
  std::vector<std::string> tags;
  for (const YamlValue& tag : value.list()) tags.push_back(text(tag));
  return tags;
}

}  // namespace

const std::map<std::string, CommandKind>& commandKinds() {
  static const auto& all = *new auto([] {
    std::map<std::string, CommandKind> kinds;
    for (const auto& family :
         {applicationCommands(), deviceCommands(), keyCommands(), touchCommands(), scrollCommands(),
          screenCommands(), recordCommands(), textCommands(), scriptCommands(), groupCommands()}) {
      for (const CommandKind& kind : family) kinds.emplace(kind.name, kind);
    }
    return kinds;
  }());
  return all;
}

std::chrono::nanoseconds fromSeconds(double seconds) {
  return std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

Flow FlowReader::read(const std::filesystem::path& file) {
  return readDocuments(file.string(), {.file = file.string(), .appId = {}, .constants = given_, .later = {}},
                       given_, file);
}

Flow FlowReader::readDocuments(const std::string& shown, FlowContext base, const Variables& kept,
                               const std::filesystem::path& file) {
  const std::vector<YAML::Node> documents = simulator::readDocuments(file);
  if (documents.size() != 2 || !documents[0].IsMap() || !documents[1].IsSequence())
    throw FlowError(shown, 1, "expected a header with appId, then a line \"---\", then a list of commands");

  const auto context = std::make_shared<FlowContext>(std::move(base));
  auto environment = std::make_shared<FlowEnvironment>();
  environment->context = context;
  environment->given = given_;
  Flow flow;
  flow.environment = environment;
  flow.name = file == "-" ? "standard input" : file.stem().string();
  std::map<std::string, YamlValue> fields;
  const YamlValue header(context, "", documents[0], 1, 1);
  for (auto& [key, value] : header.members()) fields.emplace(key, value);
  if (const auto env = fields.find("env"); env != fields.end()) {
    for (const auto& [name, value] : env->second.members()) {
      if (kept.contains(name)) continue;
      add(*context, name, value);
      if (context->later.contains(name)) environment->values.emplace_back(name, value);
    }
  }
  if (!fields.contains("appId")) header.fail("the header needs an appId");
  for (const auto& [key, value] : fields) {
    if (key == "appId") flow.appId = bundleIdentifier(value);
    if (key == "name") flow.name = value.text();
    if (key == "tags") flow.tags = tags(value);
    if (key == "recordedAt") flow.recordedAt = fromSeconds(value.number(0, kLongestSeconds));
    static const std::set<std::string> kRead = {"appId",       "name",           "tags",      "env",
                                                "onFlowStart", "onFlowComplete", "recordedAt"};
    if (!kRead.contains(key)) flow.otherKeys[key] = value.node().IsScalar() ? value.node().Scalar() : "";
  }
  context->appId = flow.appId;

  open_.push_back(file.lexically_normal());
  const YAML::Mark mark = documents[1].Mark();
  const YamlValue list(context, "", documents[1], mark.line + 1, mark.column + 1);
  if (documents[1].size() == 0) list.fail("there are no commands");
  flow.onStart = hook(fields, "onFlowStart");
  flow.steps = steps(list);
  flow.onComplete = hook(fields, "onFlowComplete");
  open_.pop_back();
  return flow;
}

std::vector<Step> FlowReader::hook(const std::map<std::string, YamlValue>& fields, const std::string& key) {
  const auto found = fields.find(key);
  return found == fields.end() ? std::vector<Step>() : steps(found->second);
}

Flow FlowReader::readInner(const YamlValue& value, const YamlValue* env) {
  if (value.isOpen()) value.fail("expected a name that is known before the flow is played");
  const auto file = std::filesystem::path(value.file()).parent_path() / simulator::text(value);
  if (std::find(open_.begin(), open_.end(), file.lexically_normal()) != open_.end())
    value.fail("the flow runs itself");
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) value.fail("there is no flow " + file.string());
  if (open_.size() >= kDeepest) value.fail("flows nest too deeply");
  FlowContext context = env ? *environment(env)->context : *value.context();
  context.file = file.string();
  Variables kept = given_;  // what the caller says stands above what the flow itself says
  if (env) {
    for (const auto& [name, unused] : env->members()) kept[name];
  }
  return readDocuments(file.string(), std::move(context), kept, file);
}

std::shared_ptr<const FlowEnvironment> FlowReader::environment(const YamlValue* env) const {
  auto environment = std::make_shared<FlowEnvironment>();
  environment->given = given_;
  if (!env) return environment;
  const auto context = std::make_shared<FlowContext>(*env->context());
  for (const auto& [name, value] : env->members()) {
    add(*context, name, value);
    if (context->later.contains(name)) environment->values.emplace_back(name, value);
  }
  environment->context = context;
  return environment;
}

std::vector<Step> FlowReader::stepsWithin(const YamlValue& list, const YamlValue* env) {
  return env ? steps(list.within(environment(env)->context)) : steps(list);
}

std::vector<Step> FlowReader::steps(const YamlValue& list) {
  if (++depth_ > kDeepest) list.fail("commands nest too deeply");
  std::vector<Step> result;
  const auto items = list.list();
  result.reserve(items.size());
  for (const YamlValue& item : items) {
    if (++count_ > kMostCommands) item.fail("more than " + std::to_string(kMostCommands) + " commands");
    result.push_back(step({item.context(), "", item.node(), item.line(), item.column()}));
  }
  --depth_;
  return result;
}

Step FlowReader::step(const YamlValue& item) {
  std::string name;
  YAML::Node argument;
  int line = item.line(), column = item.column();
  if (item.node().IsScalar()) {
    name = item.node().Scalar();
  } else if (item.isMap()) {
    if (item.node().size() != 1) item.fail("expected one command per item");
    const auto members = item.members();
    name = members.front().first;
    argument.reset(members.front().second.node());
    line = members.front().second.line();
    column = members.front().second.column();
  } else {
    item.fail("expected a command");
  }
  const auto kind = commandKinds().find(name);
  if (kind == commandKinds().end()) failForUnknown(item, name);
  YamlValue value = YamlValue(item.context(), name, argument, line, column).asArgument();
  auto source = std::make_shared<StepSource>(
      StepSource{&kind->second, value, value.member("label"), value.member("optional"), value.hasOpen()});
  if (source->label) source->label->text();
  if (source->optional) source->optional->boolean();
  return {name, item.file(), item.line(), kind->second.read(value, *this), std::move(source)};
}

std::optional<Flow> readFlow(const std::filesystem::path& file, std::string& problem,
                             const Variables& variables) {
  try {
    return FlowReader(variables).read(file);
  } catch (const FlowError& error) {
    problem = error.what();
  } catch (const YAML::Exception& error) {
    problem = file.string() + ":" + std::to_string(error.mark.line + 1) + ": " + error.msg;
  }
  return std::nullopt;
}

}  // namespace simulator
