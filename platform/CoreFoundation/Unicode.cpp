#include "CoreFoundation/Unicode.h"

#include <cstddef>

namespace ios {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Length of the well-formed UTF-8 sequence at the start of `bytes`; 0 if there is none.
std::size_t sequenceLength(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u; };
  const auto trails = [&](std::size_t i) { return (at(i) & 0xC0) == 0x80; };
  const unsigned lead = at(0);
  if (bytes.empty()) return 0;
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return trails(1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    // Overlong forms and surrogates are not UTF-8.
    const unsigned low = lead == 0xE0 ? 0xA0 : 0x80, high = lead == 0xED ? 0x9F : 0xBF;
    return at(1) >= low && at(1) <= high && trails(2) ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const unsigned low = lead == 0xF0 ? 0x90 : 0x80, high = lead == 0xF4 ? 0x8F : 0xBF;
    return at(1) >= low && at(1) <= high && trails(2) && trails(3) ? 4 : 0;
  }
  return 0;
}

}  // namespace

void appendUTF8(std::string& text, char32_t character) {
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) character = kReplacement;
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

bool isUTF8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = sequenceLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string repairedUTF8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t length = sequenceLength(bytes);
    if (length == 0) {
      appendUTF8(text, kReplacement);
      bytes.remove_prefix(1);
    } else {
      text += bytes.substr(0, length);
      bytes.remove_prefix(length);
    }
  }
  return text;
}

std::string utf8FromUTF16(std::string_view bytes, bool bigEndian) {
  const auto unit = [&](std::size_t i) -> char32_t {
    const auto first = static_cast<unsigned char>(bytes[i]),
               second = static_cast<unsigned char>(bytes[i + 1]);
    return bigEndian ? first << 8 | second : second << 8 | first;
  };
  std::string text;
  std::size_t i = 0;
  for (; i + 1 < bytes.size(); i += 2) {
    const char32_t high = unit(i);
    if (high >= 0xD800 && high <= 0xDBFF && i + 3 < bytes.size()) {
      const char32_t low = unit(i + 2);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        appendUTF8(text, 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
        i += 2;
        continue;
      }
    }
    appendUTF8(text, high);
  }
  if (i < bytes.size()) appendUTF8(text, kReplacement);
  return text;
}

}  // namespace ios
