#include "info/printTLV.h"

#include <array>
#include <charconv>
#include <cstdint>

#include "Foundation/Print.h"

namespace tellvane {

namespace {

template <std::floating_point Number>
std::string decimalText(Number value) {
  std::array<char, 400> digits{};  // up to 309 digits before the point, up to 341 after it
  const auto end = std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed).ptr;
  std::string text(digits.begin(), end);
  if (text.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
  return text;
}

}  // namespace

std::string logText(double value) {
  return decimalText(value);
}

std::string logText(float value) {
  return decimalText(value);
}

std::string logText(const void* pointer) {
  if (!pointer) return "nil";
  std::array<char, 2 * sizeof pointer> digits{};
  const auto address = reinterpret_cast<std::uintptr_t>(pointer);
  const auto end = std::to_chars(digits.begin(), digits.end(), address, 16).ptr;
  return "0x" + std::string(digits.begin(), end);
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
