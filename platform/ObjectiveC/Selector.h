#pragma once

#include <compare>
#include <functional>
#include <string>
#include <string_view>

namespace ios {

/// The name of an operation, by which callbacks are registered and looked up: "gestureSuccess",
/// "motionEnded:withEvent:". Each ":" stands for one argument. A value type; two selectors are equal when
/// their names are. Interned, so that copying and comparing cost one pointer. Usable from any thread.
class Selector {
 public:
  Selector(const char* name) : Selector(std::string_view(name)) {}  // NOLINT: literals read as selectors
  Selector(std::string_view name);                                  // NOLINT
  Selector(const std::string& name) : Selector(std::string_view(name)) {}  // NOLINT

  const std::string& name() const { return *name_; }
  /// How many arguments the operation takes: the number of ":" in the name.
  int argumentCount() const;

  friend bool operator==(Selector a, Selector b) { return a.name_ == b.name_; }
  friend auto operator<=>(Selector a, Selector b) { return a.name_ <=> b.name_; }

 private:
  const std::string* name_;
};

}  // namespace ios

template <>
struct std::hash<ios::Selector> {
  std::size_t operator()(::ios::Selector s) const noexcept { return std::hash<const void*>{}(&s.name()); }
};
