#include "simulator/flow/Words.h"

#include <array>
#include <cstdio>

#include "CoreFoundation/Unicode.h"

namespace simulator {

std::string plainNumber(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

std::string inWords(int count) {
  static constexpr std::array kWords = {"no",    "one",   "two",  "three", "four",   "five",  "six",
                                        "seven", "eight", "nine", "ten",   "eleven", "twelve"};
  return count >= 0 && count < static_cast<int>(kWords.size()) ? kWords[static_cast<std::size_t>(count)]
                                                               : std::to_string(count);
}

std::string times(int count) {
  if (count == 1) return "once";
  return count == 2 ? "twice" : inWords(count) + " times";
}

std::string quoted(const std::string& text) {
  return "“" + text + "”";
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text;
}

std::string enumerated(const std::vector<std::string>& parts) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += i + 1 == parts.size() ? " and " : ", ";
    text += parts[i];
  }
  return text;
}

std::string listed(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts) result += (result.empty() ? "\"" : ", \"") + text + "\"";
  return result.empty() ? "nothing" : result;
}

std::string inWords(const std::map<std::string, ios::Permission>& permissions) {
  std::vector<std::string> parts;
  for (const auto& [service, answer] : permissions) {
    parts.push_back(service + (answer == ios::Permission::authorized ? " allowed"
                               : answer == ios::Permission::denied   ? " denied"
                                                                     : " not asked yet"));
  }
  return enumerated(parts);
}

std::string printable(const std::string& text) {
  std::string result;
  const std::string valid = ios::repairedUTF8(text);
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto byte = static_cast<unsigned char>(valid[i]);
    // The second set of control characters, U+0080 to U+009F, has two bytes each.
    const bool second =
        byte == 0xC2 && i + 1 < valid.size() && static_cast<unsigned char>(valid[i + 1]) < 0xA0;
    const bool control = (byte < 0x20 && byte != '\t') || byte == 0x7F || second;
    result += control ? '?' : valid[i];
    if (second) ++i;
  }
  return result;
}

}  // namespace simulator
