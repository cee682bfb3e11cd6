#pragma once

#include <string>
#include <utility>

#include "ObjectiveC/NSObject.h"

namespace ios {

/// Something in the photo library, as it was when it was fetched. Immutable; any thread.
class PHObject : public NSObject {
 public:
  explicit PHObject(std::string localIdentifier) : localIdentifier_(std::move(localIdentifier)) {}
  /// "9F983DBA-EC35-42B8-8773-B597CF782EDD/L0/001"; stays the same as long as the object is in the library.
  const std::string& localIdentifier() const { return localIdentifier_; }

 private:
  std::string localIdentifier_;
};

/// Stands for an object that a transaction which is still under way creates; the object has
/// the same identifier.
class PHObjectPlaceholder : public PHObject {
 public:
  using PHObject::PHObject;
};

}  // namespace ios
