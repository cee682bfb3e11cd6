#pragma once

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace simulator {

/// What somebody who comes late has to be told: the newest value of each topic, and the last lines of the console.
/// Server's thread.
class Announcements {
 public:
  static constexpr std::size_t kMostLines = 2000;

  void setTopic(const std::string& name, std::string text);
  void addLines(const std::vector<std::string>& lines);
  /// Topics by name and value, in the order in which each came first; the console last.
  std::vector<std::pair<std::string, std::string>> all() const;
  /// The message that brings these lines.
  static std::string consoleMessage(const std::deque<std::string>& lines, bool reset);

 private:
  std::vector<std::pair<std::string, std::string>> topics_;
  std::deque<std::string> lines_;
};

}  // namespace simulator
