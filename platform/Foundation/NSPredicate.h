#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// A condition on an object's values; immutable, any thread.
///
/// The format knows comparisons of a key with a value (`==`, `=`, `!=`, `<>`; the key on either side), joined
/// by AND (`&&`), OR (`||`), NOT (`!`) and parentheses. A value is an argument (`%@`), a text in single or
/// double quotes (a backslash takes the next character as it is), or a number. Texts are equal when they are
/// the same code points, numbers when they are the same number; values of different kinds differ. A format
/// beyond that, and arguments that are too few or too many, are a caller's mistake: the process stops with a
/// message that names the format.
class NSPredicate : public NSObject {
 public:
  static std::shared_ptr<NSPredicate> predicateWithFormat(const std::string& format,
                                                          std::vector<PropertyList> arguments = {});

  /// Whether it holds for an object with these values. A key that the object lacks stops the process.
  bool evaluateWithObject(const NSDictionary& values) const;
  /// The keys that it asks for.
  std::set<std::string> keys() const;

  struct Node;
  explicit NSPredicate(std::shared_ptr<const Node> root) : root_(std::move(root)) {}

 private:
  std::shared_ptr<const Node> root_;
};

}  // namespace ios
