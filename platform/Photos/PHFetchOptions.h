#pragma once

#include <memory>
#include <utility>

#include "Foundation/NSPredicate.h"

namespace ios {

/// What a fetch is to find.
class PHFetchOptions : public NSObject {
 public:
  const std::shared_ptr<NSPredicate>& predicate() const { return predicate_; }
  /// Empty: everything. The keys that a fetch supports are listed at the class that is fetched.
  void setPredicate(std::shared_ptr<NSPredicate> predicate) { predicate_ = std::move(predicate); }

 private:
  std::shared_ptr<NSPredicate> predicate_;
};

}  // namespace ios
