#pragma once

#include <string>
#include <vector>

namespace simulator {

/// What the simulator says on standard output: a line for each step, with the phone's time, and the console's
/// lines among them. Main thread.
class Transcript {
 public:
  void heading(const std::string& text) const;
  /// A step that was done, or was not.
  void step(bool done, const std::string& text);
  /// The start of a group of steps, which are set in until it ends.
  void beginGroup(const std::string& text);
  void endGroup() { --depth_; }
  /// A line of the console, told with the time of the next `flushConsole`.
  void consoleLine(std::string line) { waiting_.push_back(std::move(line)); }
  void flushConsole();

 private:
  void line(const std::string& mark, const std::string& text) const;
  int depth_ = 0;
  std::vector<std::string> waiting_;
};

}  // namespace simulator
