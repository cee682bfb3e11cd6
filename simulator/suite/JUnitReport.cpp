#include <cstdio>

#include "simulator/suite/FlowSuite.h"

namespace simulator {
namespace {

/// Without what XML cannot hold.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else if (c == '>') {
      result += "&gt;";
    } else if (c == '"') {
      result += "&quot;";
    } else if (byte >= 0x20 || c == '\n' || c == '\t') {
      result += c;
    } else {
      result += '?';
    }
  }
  return result;
}

std::string number(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

}  // namespace

std::string junitReport(const std::vector<FlowSuite::Outcome>& outcomes) {
  std::string cases;
  int failures = 0, skipped = 0;
  double seconds = 0;
  for (const auto& outcome : outcomes) {
    seconds += outcome.seconds;
    cases += "  <testcase classname=\"flows\" name=\"" + escaped(outcome.name) + "\" time=\"" +
             number(outcome.seconds) + "\">\n";
    if (outcome.status == 130) {
      ++skipped;
      cases += "    <skipped message=\"interrupted\"/>\n";
    } else if (outcome.status != 0) {
      ++failures;
      cases += "    <failure message=\"" + escaped(outcome.problem) + "\">exit status " +
               std::to_string(outcome.status) + "</failure>\n";
    }
    cases += "    <system-out>" + escaped(outcome.output) + "</system-out>\n  </testcase>\n";
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"flows\" tests=\"" +
         std::to_string(outcomes.size()) + "\" failures=\"" + std::to_string(failures) + "\" skipped=\"" +
         std::to_string(skipped) + "\" time=\"" + number(seconds) + "\">\n" + cases + "</testsuite>\n";
}

}  // namespace simulator
