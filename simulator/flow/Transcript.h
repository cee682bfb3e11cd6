#pragma once

#include <deque>
#include <string>
#include <utility>

#include "simulator/phone/Console.h"

namespace simulator {

/// What the simulator says on standard output: a line for each step, with the phone's time, and the console's
/// lines among them. Main thread.
class Transcript {
 public:
  void heading(const std::string& text) const;
  /// A step that was done, or was not.
  void step(bool done, const std::string& text);
  /// Something that went wrong and did not count.
  void warning(const std::string& text);
  /// A line that a script says, or a word about what is left out.
  void remark(const std::string& text);
  /// The start of a group of steps, which are set in until it ends.
  void beginGroup(const std::string& text);
  void endGroup() { --depth_; }
  /// A line of the console, told with the time of the next `flushConsole`; of many only the last ones.
  void consoleLine(Console::Stream stream, const std::string& line);
  void flushConsole();

 private:
  void line(const std::string& mark, const std::string& text) const;
  int depth_ = 0;
  std::deque<std::pair<Console::Stream, std::string>> waiting_;
  std::size_t leftOut_ = 0;
};

}  // namespace simulator
