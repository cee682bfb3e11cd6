#pragma once

#include <optional>
#include <string>

#include "ObjectiveC/NSObject.h"

namespace ios {

inline const std::string NSCocoaErrorDomain = "NSCocoaErrorDomain";
inline const std::string NSPOSIXErrorDomain = "NSPOSIXErrorDomain";

/// Why something failed: a domain, a code of that domain, and a text for people.
class NSError : public NSObject {
 public:
  NSError(std::string domain, long code, std::string localizedDescription)
      : domain_(std::move(domain)), code_(code), localizedDescription_(std::move(localizedDescription)) {}
  const std::string& domain() const { return domain_; }
  long code() const { return code_; }
  const std::string& localizedDescription() const { return localizedDescription_; }
  /// `Error Domain=NSCocoaErrorDomain Code=4 "The file doesn’t exist."`
  std::string description() const;

 private:
  std::string domain_;
  long code_;
  std::string localizedDescription_;
};

}  // namespace ios
