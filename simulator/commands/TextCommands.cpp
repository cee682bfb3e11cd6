#include <array>

#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"

/// Texts: what is on the screen is read; nothing on the phone takes a text yet.
namespace simulator {
namespace {

constexpr const char* kNothingTakesText =
    "nothing on this phone takes text yet: it has no text fields and no keyboard";

struct CopyTextFrom : Command {
  Selector element;

  std::string description() const override { return "copy the text of " + element.description(); }
  Problem perform(Stage& stage) const override {
    Problem problem;
    const auto found = stage.awaitElement(element, "to copy from", problem);
    if (found) stage.script().setCopiedText(found->text);
    return problem;
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<CopyTextFrom>();
    result->element = selector(value);
    return result;
  }
};

/// A command that needs a text field.
struct Write : Command {
  std::string what;

  explicit Write(std::string does) : what(std::move(does)) {}
  std::string description() const override { return what; }
  Problem perform(Stage&) const override { return kNothingTakesText; }

  static std::unique_ptr<const Command> readInput(const YamlValue& value, FlowReader&) {
    return std::make_unique<Write>("write " + quoted(text(single(value, "text"))));
  }
  static std::unique_ptr<const Command> readRandom(const YamlValue& value, FlowReader&) {
    constexpr int kLongest = 10'000;
    if (!value.isNull()) {
      const auto fields = value.members({"length"});
      if (fields.contains("length")) fields.at("length").integer(1, kLongest);
    }
    return std::make_unique<Write>("write something at random");
  }
  static std::unique_ptr<const Command> readErase(const YamlValue& value, FlowReader&) {
    constexpr int kMost = 10'000;
    if (!value.isNull()) single(value, "count").integer(0, kMost);
    return std::make_unique<Write>("erase");
  }
  static std::unique_ptr<const Command> readPaste(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<Write>("paste the text that was copied");
  }
  static std::unique_ptr<const Command> readHide(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<Write>("hide the keyboard");
  }
};

}  // namespace

std::span<const CommandKind> textCommands() {
  static constexpr std::array kAll = {
      CommandKind{"copyTextFrom", &CopyTextFrom::read},
      CommandKind{"inputText", &Write::readInput},
      CommandKind{"inputRandomText", &Write::readRandom},
      CommandKind{"inputRandomNumber", &Write::readRandom},
      CommandKind{"inputRandomEmail", &Write::readRandom},
      CommandKind{"inputRandomPersonName", &Write::readRandom},
      CommandKind{"eraseText", &Write::readErase},
      CommandKind{"pasteText", &Write::readPaste},
      CommandKind{"hideKeyboard", &Write::readHide},
  };
  return kAll;
}

}  // namespace simulator
