#include <algorithm>
#include <array>
#include <map>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"

/// The phone's keys.
namespace simulator {
namespace {

/// What a key does; a problem for what this phone does not have.
struct Key {
  const char* name;
  Problem (*press)(Phone& phone);
};

template <int by>
Problem changeVolume(Phone& phone) {
  phone.changeSettings([](ios::DeviceSettings& settings) {
    settings.volume = std::clamp(settings.volume + by, 0, ios::DeviceSettings::kLoudest);
  });
  return {};
}

Problem noKeyboard(Phone&) {
  return "nothing on this phone takes text yet: it has no keyboard, and so not this key";
}

const std::map<std::string, Key>& keys() {
  static const auto& all = *new std::map<std::string, Key>{
      {"home",
       {"Home",
        [](Phone& phone) -> Problem {
          phone.pressHome();
          return {};
        }}},
      {"volume up", {"Volume Up", &changeVolume<1>}},
      {"volume down", {"Volume Down", &changeVolume<-1>}},
      {"lock", {"Lock", [](Phone&) -> Problem { return "the screen of this phone cannot be locked yet"; }}},
      {"power", {"Power", [](Phone&) -> Problem { return "this phone cannot be switched off by a flow"; }}},
      {"back", {"Back", [](Phone&) -> Problem { return "a phone of this kind has no Back key"; }}},
      {"enter", {"Enter", &noKeyboard}},
      {"backspace", {"Backspace", &noKeyboard}},
      {"tab", {"Tab", &noKeyboard}},
      {"escape", {"Escape", &noKeyboard}},
  };
  return all;
}

struct PressKey : Command {
  const Key* key = nullptr;

  std::string description() const override { return "press the " + std::string(key->name) + " key"; }
  Problem perform(Stage& stage) const override { return key->press(stage.phone()); }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    std::vector<std::string> names;
    for (const auto& [word, key] : keys()) names.emplace_back(key.name);
    auto result = std::make_unique<PressKey>();
    result->key = &oneOf(single(value, "key"), keys(), "a key: " + joined(names));
    return result;
  }
  static std::unique_ptr<const Command> readBack(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    auto result = std::make_unique<PressKey>();
    result->key = &keys().at("back");
    return result;
  }
};

}  // namespace

std::span<const CommandKind> keyCommands() {
  static constexpr std::array kAll = {
      CommandKind{"pressKey", &PressKey::read},
      CommandKind{"back", &PressKey::readBack},
  };
  return kAll;
}

}  // namespace simulator
