#pragma once

#include <concepts>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Foundation/NSError.h"
#include "Tellvane/Platform.h"
#include "ground/Switches.h"

namespace tellvane {

// The ordinary textual representation of what a log line may hold. Further types join by an overload.

inline std::string logText(std::string_view text) {
  return std::string(text);
}
inline std::string logText(const char* text) {
  return text ? text : "nil";
}
inline std::string logText(const std::string& text) {
  return text;
}
/// Not for what merely converts to a Boolean, such as a pointer.
template <std::same_as<bool> T>
std::string logText(T value) {
  return value ? "true" : "false";
}
inline std::string logText(char value) {
  return std::string(1, value);
}
template <std::integral T>
requires(!std::same_as<T, bool>) std::string logText(T value) {
  return std::to_string(value);
}
/// The fewest decimal digits that read back as the same number, without an exponent: "0.1", "100000.0".
std::string logText(double value);
std::string logText(float value);
/// The address: "0x7ffe01"; `nil` for none.
std::string logText(const void* pointer);
inline std::string logText(const NSError& error) {
  return error.description();
}
/// `nil`, or the description in `Optional(…)`.
template <class T>
std::string logText(const std::optional<T>& value) {
  return value ? "Optional(" + logText(*value) + ")" : "nil";
}
template <std::derived_from<NSObject> T>
std::string logText(const std::shared_ptr<T>& object) {
  return object ? "Optional(" + logText(*object) + ")" : "nil";
}

struct LogLayout {
  std::string_view separator = " ";
  std::string_view terminator = "\n";
};

/// Writes prefix, texts and terminator to standard output as one write.
void writeLogLine(std::initializer_list<std::string> texts, const LogLayout& layout);

/// Writes "<TLV Log> : " and the items to standard output, in debug mode only; in production mode the items
/// are not even turned into text. Any thread; the whole line is one write.
template <class... Items>
void printTLV(const LogLayout& layout, const Items&... items) {
  if (debugMode()) writeLogLine({logText(items)...}, layout);
}
template <class... Items>
void printTLV(const Items&... items) {
  if (debugMode()) writeLogLine({logText(items)...}, LogLayout{});
}

}  // namespace tellvane
