#include <algorithm>

#include "simulator/FlowReader+Private.h"

namespace simulator {
namespace {

constexpr std::size_t kMostCommands = 10'000;
constexpr std::size_t kDeepest = 16;

}  // namespace

const std::map<std::string, FlowReader::Reader>& FlowReader::readers() {
  static const std::map<std::string, Reader> all = {
      {"launchApp", &FlowReader::launchApp},
      {"stopApp", &FlowReader::stopApp},
      {"tapOn", &FlowReader::tapOn},
      {"swipe", &FlowReader::swipe},
      {"pressKey", &FlowReader::pressKey},
      {"shake", &FlowReader::shake},
      {"assertVisible", &FlowReader::assertVisible},
      {"assertNotVisible", &FlowReader::assertNotVisible},
      {"extendedWaitUntil", &FlowReader::extendedWaitUntil},
      {"wait", &FlowReader::wait},
      {"takeScreenshot", &FlowReader::takeScreenshot},
      {"setPermissions", &FlowReader::setPermissions},
      {"setOrientation", &FlowReader::setOrientation},
      {"openLink", &FlowReader::openLink},
      {"installApp", &FlowReader::installApp},
      {"uninstallApp", &FlowReader::uninstallApp},
      {"assertLog", &FlowReader::assertLog},
      {"assertNoLog", &FlowReader::assertNoLog},
      {"assertPasteboard", &FlowReader::assertPasteboard},
      {"assertMovies", &FlowReader::assertMovies},
      {"repeat", &FlowReader::repeat},
      {"runFlow", &FlowReader::runFlow},
  };
  return all;
}

Flow FlowReader::read(const std::filesystem::path& file) {
  const std::string shown = file.string();
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) throw FlowError(shown, 0, "there is no such flow");
  std::vector<YAML::Node> documents;
  try {
    documents = YAML::LoadAllFromFile(shown);
  } catch (const YAML::ParserException& problem) {
    throw FlowError(shown, problem.mark.line + 1, "this is no YAML: " + problem.msg);
  } catch (const YAML::Exception& problem) {
    throw FlowError(shown, 0, "could not be read: " + problem.msg);
  }
  if (documents.size() != 2 || !documents[0].IsMap() || !documents[1].IsSequence()) {
    throw FlowError(shown, 1, "expected a header with appId, then a line \"---\", then a list of commands");
  }

  Flow flow;
  Variables variables;
  const YamlValue header(shown, "", documents[0], 1, &variables);
  const auto fields = header.members({"appId", "name", "env"});
  if (fields.contains("env")) {
    for (const auto& [name, value] : fields.at("env").members()) variables[name] = value.text();
  }
  if (!fields.contains("appId")) header.fail("the header needs an appId");
  flow.appId = pattern(fields.at("appId")).text();
  flow.name = fields.contains("name") ? fields.at("name").text() : file.stem().string();

  const std::string outerApp = std::exchange(appId_, flow.appId);
  open_.push_back(file.lexically_normal());
  const YamlValue list(shown, "", documents[1], documents[1].Mark().line + 1, &variables);
  if (documents[1].size() == 0) list.fail("there are no commands");
  flow.commands = commands(list);
  open_.pop_back();
  appId_ = outerApp;
  return flow;
}

std::vector<Command> FlowReader::commands(const YamlValue& list) {
  if (++depth_ > kDeepest) list.fail("commands nest too deeply");
  std::vector<Command> result;
  for (const YamlValue& item : list.list()) {
    if (++count_ > kMostCommands) item.fail("more than " + std::to_string(kMostCommands) + " commands");
    result.push_back(command({item.file(), "", item.node(), item.line(), &item.variables()}));
  }
  --depth_;
  return result;
}

Command FlowReader::command(const YamlValue& item) {
  std::string name;
  YAML::Node argument;
  int line = item.line();
  if (item.node().IsScalar()) {
    name = item.node().Scalar();
  } else if (item.node().IsMap()) {
    const auto members = item.members();
    if (members.size() != 1) item.fail("expected one command an item");
    name = members.front().first;
    argument.reset(members.front().second.node());
  } else {
    item.fail("expected a command");
  }
  const auto reader = readers().find(name);
  if (reader == readers().end()) {
    std::vector<std::string> known;
    for (const auto& [each, unused] : readers()) known.push_back(each);
    item.fail("no command is called \"" + name + "\"; known: " + joined(known));
  }
  const YamlValue value(item.file(), name, argument, line, &item.variables());
  return {name, item.file(), line, (this->*reader->second)(value)};
}

Action FlowReader::repeat(const YamlValue& value) {
  const auto fields = value.members({"times", "commands"});
  if (!fields.contains("times") || !fields.contains("commands"))
    value.fail("needs \"times\" and \"commands\"");
  return Repeat{fields.at("times").integer(1, 100'000), commands(fields.at("commands"))};
}

Action FlowReader::runFlow(const YamlValue& value) {
  const std::string name = pattern(single(value, "file")).text();
  const auto file = std::filesystem::path(value.file()).parent_path() / name;
  if (std::find(open_.begin(), open_.end(), file.lexically_normal()) != open_.end())
    value.fail("the flow runs itself");
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) value.fail("there is no flow " + file.string());
  if (open_.size() >= kDeepest) value.fail("flows nest too deeply");
  return RunFlow{name, read(file).commands};
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
