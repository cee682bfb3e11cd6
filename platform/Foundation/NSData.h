#pragma once

#include <memory>
#include <span>

#include "CoreFoundation/PropertyList.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// Bytes that never change. Safe to share between threads.
class NSData : public NSObject {
 public:
  explicit NSData(Bytes bytes) : bytes_(std::move(bytes)) {}
  std::size_t length() const { return bytes_.size(); }
  const Bytes& bytes() const { return bytes_; }

 private:
  const Bytes bytes_;
};

}  // namespace ios
