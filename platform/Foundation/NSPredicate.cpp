#include "Foundation/NSPredicate.h"

#include <regex>
#include <utility>

#include "Base/Programming.h"

namespace ios {

std::shared_ptr<NSPredicate> NSPredicate::predicateWithFormat(const std::string& format,
                                                              std::vector<PropertyList> arguments) {
  static const auto& kEquality = *new std::regex(R"(\s*([A-Za-z_][\w.]*)\s*==?\s*%@\s*)");
  std::smatch parts;
  if (!std::regex_match(format, parts, kEquality) || arguments.size() != 1) {
    programmingError("unable to parse the format string \"" + format + "\" with " +
                     std::to_string(arguments.size()) + " arguments");
  }
  return std::make_shared<NSPredicate>(parts[1].str(), std::move(arguments.front()));
}

bool NSPredicate::evaluateWithObject(const NSDictionary& values) const {
  const auto found = values.find(key_);
  if (found == values.end()) programmingError("the object has no value for the key \"" + key_ + "\"");
  return found->second == value_;
}

}  // namespace ios
