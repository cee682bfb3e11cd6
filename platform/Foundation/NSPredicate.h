#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// A condition on an object's values; immutable, any thread.
///
/// The only form is that a key has a value: "title == %@" (or `=`) with the value as the only argument. Values
/// are equal when they have the same type and value; strings when their code points are the same. Any other
/// format, and a wrong number of arguments, is a caller's mistake: the process stops with a message that names
/// the format.
class NSPredicate : public NSObject {
 public:
  static std::shared_ptr<NSPredicate> predicateWithFormat(const std::string& format,
                                                          std::vector<PropertyList> arguments);
  NSPredicate(std::string key, PropertyList value) : key_(std::move(key)), value_(std::move(value)) {}

  /// The key that it compares.
  const std::string& key() const { return key_; }
  /// Whether it holds for an object with these values. A key that the object lacks stops the process.
  bool evaluateWithObject(const NSDictionary& values) const;

 private:
  const std::string key_;
  const PropertyList value_;
};

}  // namespace ios
