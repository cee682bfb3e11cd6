#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "ObjectiveC/NSObject.h"

namespace ios {

/// What a fetch found, in the order in which it was put into the library. It does not change
/// with the library.
template <class Object>
class PHFetchResult : public NSObject {
 public:
  explicit PHFetchResult(std::vector<std::shared_ptr<Object>> objects) : objects_(std::move(objects)) {}
  std::size_t count() const { return objects_.size(); }
  /// Empty when nothing was found.
  std::shared_ptr<Object> firstObject() const { return objects_.empty() ? nullptr : objects_.front(); }
  const std::shared_ptr<Object>& objectAtIndex(std::size_t index) const { return objects_.at(index); }

 private:
  std::vector<std::shared_ptr<Object>> objects_;
};

}  // namespace ios
