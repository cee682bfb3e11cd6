#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "simulator/Flow.h"
#include "simulator/YamlFields+Private.h"

namespace simulator {

/// A text that must not be empty.
TextPattern pattern(const YamlValue& value);
/// The value of a command that is written by itself, or under `key` of a map with that one key.
YamlValue single(const YamlValue& value, const std::string& key);

/// Reads one flow and those that it runs. Throws a FlowError at the first slip.
class FlowReader {
 public:
  Flow read(const std::filesystem::path& file);

 private:
  using Reader = Action (FlowReader::*)(const YamlValue&);
  static const std::map<std::string, Reader>& readers();

  std::vector<Command> commands(const YamlValue& list);
  Command command(const YamlValue& item);
  void expectNothing(const YamlValue& value);

  Action launchApp(const YamlValue& value);
  Action stopApp(const YamlValue& value);
  Action tapOn(const YamlValue& value);
  Action swipe(const YamlValue& value);
  Action pressKey(const YamlValue& value);
  Action shake(const YamlValue& value);
  Action assertVisible(const YamlValue& value) { return AssertVisible{pattern(single(value, "text"))}; }
  Action assertNotVisible(const YamlValue& value) {
    return AssertVisible{pattern(single(value, "text")), false};
  }
  Action extendedWaitUntil(const YamlValue& value);
  Action wait(const YamlValue& value) { return Wait{single(value, "seconds").number(0, 86'400)}; }
  Action takeScreenshot(const YamlValue& value);
  Action setPermissions(const YamlValue& value);
  Action setOrientation(const YamlValue& value);
  Action openLink(const YamlValue& value) { return OpenLink{pattern(single(value, "link")).text()}; }
  Action installApp(const YamlValue& value);
  Action uninstallApp(const YamlValue& value) { return UninstallApp{pattern(value).text()}; }
  Action assertLog(const YamlValue& value) { return AssertLog{pattern(value)}; }
  Action assertNoLog(const YamlValue& value) { return AssertLog{pattern(value), false}; }
  Action assertPasteboard(const YamlValue& value);
  Action assertMovies(const YamlValue& value) { return AssertMovies{value.integer(0, 10'000)}; }
  Action repeat(const YamlValue& value);
  Action runFlow(const YamlValue& value);

  std::string appId_;
  std::vector<std::filesystem::path> open_;  // the flow being read, below the flows that run it
  std::size_t depth_ = 0, count_ = 0;
};

}  // namespace simulator
