#include "simulator/flow/Transcript.h"

#include <cstdio>

#include "DeviceClock/Clock.h"
#include "simulator/flow/Words.h"

namespace simulator {
void Transcript::heading(const std::string& text) const {
  std::printf("%s\n", printable(text).c_str());
  std::fflush(stdout);
}

void Transcript::line(const std::string& mark, const std::string& text) const {
  std::printf("%8.2f s  %*s%s %s\n", ios::Clock::shared().secondsNow(), depth_ * 2, "", mark.c_str(),
              printable(text).c_str());
  std::fflush(stdout);
}

void Transcript::step(bool done, const std::string& text) {
  flushConsole();
  line(done ? "✓" : "✗", text);
}

void Transcript::warning(const std::string& text) {
  flushConsole();
  line("⚠", text);
}

void Transcript::remark(const std::string& text) {
  flushConsole();
  line("–", text);
}

void Transcript::beginGroup(const std::string& text) {
  flushConsole();
  line("•", text);
  ++depth_;
}

void Transcript::consoleLine(Console::Stream stream, const std::string& line) {
  constexpr std::size_t kMostLines = 500;
  waiting_.emplace_back(stream, line);
  if (waiting_.size() <= kMostLines) return;
  waiting_.pop_front();
  ++leftOut_;
}

void Transcript::flushConsole() {
  if (leftOut_ > 0)
    line("  │", "… " + std::to_string(leftOut_) + " lines before these; see the output folder");
  leftOut_ = 0;
  for (const auto& [stream, text] : waiting_) line(stream == Console::Stream::output ? "  │" : "  !", text);
  waiting_.clear();
}

}  // namespace simulator
