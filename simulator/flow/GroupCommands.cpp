#include <array>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Words.h"

/// Commands that are made of others.
namespace simulator {
namespace {

struct Repeat : Command {
  int count = 1;
  std::vector<Step> inner;

  std::string description() const override { return "repeat " + simulator::times(count); }
  Problem perform(Stage&) const override { return {}; }
  const std::vector<Step>* steps() const override { return &inner; }
  int times() const override { return count; }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader& reader) {
    const auto fields = value.members({"times", "commands"});
    if (!fields.contains("times") || !fields.contains("commands"))
      value.fail("needs \"times\" and \"commands\"");
    auto result = std::make_unique<Repeat>();
    result->count = fields.at("times").integer(1, 100'000);
    result->inner = reader.steps(fields.at("commands"));
    return result;
  }
};

struct RunFlow : Command {
  std::string file;
  std::vector<Step> inner;

  std::string description() const override { return "play " + file; }
  Problem perform(Stage&) const override { return {}; }
  const std::vector<Step>* steps() const override { return &inner; }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader& reader) {
    auto result = std::make_unique<RunFlow>();
    const YamlValue name = single(value, "file");
    result->file = text(name);
    result->inner = reader.readInner(value, result->file).steps;
    return result;
  }
};

}  // namespace

std::span<const CommandKind> groupCommands() {
  static constexpr std::array kAll = {
      CommandKind{"repeat", &Repeat::read},
      CommandKind{"runFlow", &RunFlow::read},
  };
  return kAll;
}

}  // namespace simulator
