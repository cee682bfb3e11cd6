#include "simulator/flow/Words.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

#include "CoreFoundation/Unicode.h"

namespace simulator {
namespace {

/// How many letters have to be put in, left out, replaced or swapped with their neighbour to make one of the other.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> table(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  const auto same = [&](std::size_t i, std::size_t j) {
    return std::tolower(static_cast<unsigned char>(a[i])) == std::tolower(static_cast<unsigned char>(b[j]));
  };
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        table[i][j] = i + j;
        continue;
      }
      table[i][j] = std::min(
          {table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + (same(i - 1, j - 1) ? 0 : 1)});
      if (i > 1 && j > 1 && same(i - 1, j - 2) && same(i - 2, j - 1))
        table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
    }
  }
  return table[a.size()][b.size()];
}

}  // namespace

std::string suggestion(const std::string& name, const std::vector<std::string>& known) {
  constexpr std::size_t kLongest = 64;
  const std::string* best = nullptr;
  std::size_t least = std::min<std::size_t>(4, name.size() / 3 + 2);
  for (const std::string& each : known) {
    if (name.size() > kLongest || each.size() > kLongest) continue;
    const std::size_t apart = distance(name, each);
    if (apart >= least) continue;
    least = apart;
    best = &each;
  }
  return best ? "; did you mean \"" + *best + "\"?" : "";
}

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
