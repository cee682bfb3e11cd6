#include "simulator/Transcript.h"

#include <cstdio>

#include "DeviceClock/Clock.h"

namespace simulator {
namespace {

/// A console line may hold anything; a terminal is spared its control characters.
std::string printable(const std::string& text) {
  std::string result;
  for (const char c : text) {
    const bool control = (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
    result += control ? '?' : c;
  }
  return result;
}

}  // namespace

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

void Transcript::beginGroup(const std::string& text) {
  flushConsole();
  line("•", text);
  ++depth_;
}

void Transcript::flushConsole() {
  for (const std::string& text : waiting_) line("  │", text);
  waiting_.clear();
}

}  // namespace simulator
