#include "info/printTLV.h"

#include <array>

#include "Foundation/Print.h"
#include "front/TLVManager.h"

namespace tellvane {

std::string logText(double value) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
  std::string text(digits.begin(), end);
  if (text.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
  return text;
}

bool logsAreOn() {
  return TLVManager::shared()->isDebugMode();
}

void writeLogLine(std::initializer_list<std::string> texts, const LogLayout& layout) {
  std::string line = "<TLV Log> : ";
  std::string_view between;
  for (const auto& text : texts) {
    line.append(between).append(text);
    between = layout.separator;
  }
  print(line.append(layout.terminator));
}

}  // namespace tellvane
