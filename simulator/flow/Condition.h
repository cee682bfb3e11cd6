#pragma once

#include <string>

#include "simulator/flow/YamlFields.h"

namespace simulator {

class Stage;

/// What must hold for steps to be played: `when` and `while`. Everything that is said must hold.
class Condition {
 public:
  /// Throws a FlowError at the first slip.
  explicit Condition(YamlValue value);
  /// Looks at the screen as it is now, once it rests. Throws a FlowError when an expression fails.
  bool holds(Stage& stage) const;
  std::string description() const;

 private:
  YamlValue value_;
};

/// Whether a text that an expression gave counts as true: all but "", "false", "0", "null", "undefined" and "NaN" do.
bool isTrue(const std::string& text);

}  // namespace simulator
