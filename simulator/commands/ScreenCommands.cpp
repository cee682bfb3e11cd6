#include <algorithm>
#include <array>

#include "simulator/flow/Condition.h"
#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Words.h"

/// What is to be seen on the screen, and when.
namespace simulator {
namespace {

using ios::Clock;
using std::chrono::milliseconds;

struct AssertVisible : Command {
  Selector element;
  bool visible = true;
  Clock::Duration timeout = Stage::kPatience;

  std::string description() const override {
    std::string words = element.description() + (visible ? " is on the screen" : " is not on the screen");
    if (timeout != Stage::kPatience)
      words += " within " + plainNumber(std::chrono::duration<double>(timeout).count()) + " s";
    return words;
  }
  Problem perform(Stage& stage) const override {
    if (stage.await(timeout, [&] { return stage.find(element).has_value() == visible; })) return {};
    return (visible ? "expected " : "expected no ") + element.inPlainQuotes();
  }

  static std::unique_ptr<AssertVisible> made(Selector element, bool visible) {
    auto result = std::make_unique<AssertVisible>();
    result->element = std::move(element);
    result->visible = visible;
    return result;
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    return made(selector(value), true);
  }
  static std::unique_ptr<const Command> readNot(const YamlValue& value, FlowReader&) {
    return made(selector(value), false);
  }
  static std::unique_ptr<const Command> readExtended(const YamlValue& value, FlowReader&) {
    const auto fields = value.members({"visible", "notVisible", "timeout"});
    const bool visible = fields.contains("visible");
    if (visible == fields.contains("notVisible")) value.fail("needs either \"visible\" or \"notVisible\"");
    auto result = made(selector(fields.at(visible ? "visible" : "notVisible")), visible);
    result->timeout = milliseconds(
        fields.contains("timeout") ? fields.at("timeout").integer(0, kLongestMilliseconds) : 10'000);
    return result;
  }
};

struct AssertTrue : Command {
  std::string value, written;

  std::string description() const override { return written + " is true"; }
  Problem perform(Stage&) const override {
    return isTrue(value) ? "" : "expected " + written + " to be true, not \"" + value + "\"";
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    const YamlValue condition = single(value, "condition");
    auto result = std::make_unique<AssertTrue>();
    result->value = condition.text();
    result->written = condition.node().Scalar();
    return result;
  }
};

struct WaitForAnimationToEnd : Command {
  int timeout = 15'000;  // ms

  std::string description() const override { return "wait until the screen rests"; }
  Problem perform(Stage& stage) const override {
    stage.settle(milliseconds(timeout));
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<WaitForAnimationToEnd>();
    if (value.isNull()) return result;
    const auto fields = value.members({"timeout"});
    if (fields.contains("timeout")) result->timeout = fields.at("timeout").integer(0, kLongestMilliseconds);
    return result;
  }
};

struct Wait : Command {
  double seconds = 0;

  std::string description() const override {
    return "wait for " + plainNumber(seconds) + (seconds == 1 ? " second" : " seconds");
  }
  Problem perform(Stage& stage) const override {
    // In slices, so that what the console says meanwhile is told with its time.
    const Clock::Duration total = fromSeconds(seconds);
    const Clock& clock = Clock::shared();
    const Clock::Duration slice =
        clock.isVirtual() ? std::max<Clock::Duration>(milliseconds(50), total / 200) : milliseconds(50);
    for (const Clock::Instant end = clock.now() + total;
         clock.now() < end && !stage.phone().wasInterrupted();)
      stage.phone().runFor(std::min(end - clock.now(), slice));
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<Wait>();
    result->seconds = single(value, "seconds").number(0, kLongestSeconds);
    return result;
  }
};

struct TakeScreenshot : Command {
  std::string name;

  std::string description() const override { return "take the picture " + name + ".png"; }
  Problem perform(Stage& stage) const override {
    stage.settle(std::chrono::seconds(1));
    const ios::Bytes png = stage.phone().picture();
    if (png.empty()) return "expected a picture, but the display shows nothing";
    return stage.keepFile(name + ".png", png);
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<TakeScreenshot>();
    result->name = outputName(single(value, "path"));
    return result;
  }
};

struct StartRecording : Command {
  std::string name;

  std::string description() const override { return "record the screen as " + name + ".mp4"; }
  Problem perform(Stage& stage) const override {
    return stage.recorder() ? stage.recorder()->begin(name) : "the screen is not recorded in this run";
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<StartRecording>();
    result->name = outputName(single(value, "path"));
    return result;
  }
};

struct StopRecording : Command {
  std::string description() const override { return "stop recording the screen"; }
  Problem perform(Stage& stage) const override {
    return stage.recorder() ? stage.recorder()->end() : "the screen is not recorded in this run";
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<StopRecording>();
  }
};

}  // namespace

std::span<const CommandKind> screenCommands() {
  static constexpr std::array kAll = {
      CommandKind{"assertVisible", &AssertVisible::read},
      CommandKind{"assertNotVisible", &AssertVisible::readNot},
      CommandKind{"assertTrue", &AssertTrue::read},
      CommandKind{"extendedWaitUntil", &AssertVisible::readExtended},
      CommandKind{"waitForAnimationToEnd", &WaitForAnimationToEnd::read},
      CommandKind{"wait", &Wait::read, CommandKind::Origin::own},
      CommandKind{"takeScreenshot", &TakeScreenshot::read},
      CommandKind{"startRecording", &StartRecording::read},
      CommandKind{"stopRecording", &StopRecording::read},
  };
  return kAll;
}

}  // namespace simulator
