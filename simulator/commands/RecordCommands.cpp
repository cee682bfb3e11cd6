#include <algorithm>
#include <array>
#include <filesystem>

#include "UIKit/UIPasteboard.h"
#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Words.h"

/// What is to be found beside the screen: on the console, the pasteboard, in the photo library.
namespace simulator {
namespace {

struct AssertLog : Command {
  TextPattern line;
  bool present = true;

  std::string description() const override {
    return "the console " + std::string(present ? "says " : "does not say ") + quoted(line.text());
  }
  Problem perform(Stage& stage) const override {
    Console& console = stage.console();
    const auto searched = [&console] {
      const std::string dropped =
          console.dropped() > 0 ? " (" + std::to_string(console.dropped()) + " earlier lines were dropped)"
                                : "";
      return " on the console" + dropped + "; its last lines: " + listed(console.lastLines(5));
    };
    if (present) {
      if (stage.await(Stage::kPatience, [&] { return console.take(line); })) return {};
      return "expected the line \"" + line.text() + "\"" + searched();
    }
    if (!console.contains(line) && console.dropped() == 0) return {};
    return "expected no line \"" + line.text() + "\"" + searched();
  }

  static std::unique_ptr<const Command> made(TextPattern line, bool present) {
    auto result = std::make_unique<AssertLog>();
    result->line = std::move(line);
    result->present = present;
    return result;
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    return made(pattern(value), true);
  }
  static std::unique_ptr<const Command> readNot(const YamlValue& value, FlowReader&) {
    return made(pattern(value), false);
  }
};

struct AssertPasteboard : Command {
  std::vector<std::string> types;  // in order of name; none: the pasteboard is empty

  std::string description() const override {
    return types.empty() ? "the pasteboard is empty"
                         : "the pasteboard holds one item of " + enumerated(types);
  }
  Problem perform(Stage&) const override {
    const auto items = ios::UIPasteboard::generalPasteboard()->items();
    std::vector<std::string> found;
    if (!items.empty()) {
      for (const auto& [type, data] : items.front()) found.push_back(type);
    }
    const std::size_t expected = types.empty() ? 0 : 1;
    if (items.size() == expected && found == types) return {};
    return "expected " + (types.empty() ? "nothing" : "one item of " + listed(types)) +
           " on the pasteboard; there: " + std::to_string(items.size()) + " items, the first of " +
           listed(found);
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<AssertPasteboard>();
    if (value.node().IsScalar()) {
      if (!value.isOpen() && value.text() != "empty")
        value.fail("expected \"empty\" or a list of type texts");
      return result;
    }
    for (const YamlValue& type : value.list()) result->types.push_back(text(type));
    if (result->types.empty()) value.fail("expected \"empty\" or a list of type texts");
    std::sort(result->types.begin(), result->types.end());
    return result;
  }
};

struct AssertMovies : Command {
  int count = 0;

  std::string description() const override {
    return "the photo library has " + std::to_string(count) + (count == 1 ? " movie" : " movies");
  }
  Problem perform(Stage&) const override {
    std::vector<std::string> movies;
    std::error_code error;
    const auto folder = ios::Device::current().moviesFolder();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
      if (entry.path().extension() == ".MOV") movies.push_back(entry.path().filename().string());
    }
    std::sort(movies.begin(), movies.end());
    if (movies.size() == static_cast<std::size_t>(count)) return {};
    return "expected " + std::to_string(count) + " in the photo library; there: " + listed(movies);
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<AssertMovies>();
    result->count = value.integer(0, 10'000);
    return result;
  }
};

}  // namespace

std::span<const CommandKind> recordCommands() {
  static constexpr auto kOwn = CommandKind::Origin::own;
  static constexpr std::array kAll = {
      CommandKind{"assertLog", &AssertLog::read, kOwn},
      CommandKind{"assertNoLog", &AssertLog::readNot, kOwn},
      CommandKind{"assertPasteboard", &AssertPasteboard::read, kOwn},
      CommandKind{"assertMovies", &AssertMovies::read, kOwn},
  };
  return kAll;
}

}  // namespace simulator
