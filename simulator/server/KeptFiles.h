#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Base/Mutex.h"

namespace simulator {

/// Bytes that the page can fetch by a name, kept in memory: screenshots, recorded flows, what is on the
/// pasteboard. Any thread.
class KeptFiles {
 public:
  using Content = std::shared_ptr<const std::string>;

  /// Keeps `bytes` as a file called `name`, whose suffix says what it is, and gives the path by which it is fetched:
  /// no two have the same. The oldest go when there are more than 64, or more than 64 MB.
  std::string keep(const std::string& name, std::string bytes);
  /// By that path; null if there is none, or it is gone.
  Content find(std::string_view path) const;

 private:
  struct File {
    std::string path;
    Content content;
  };
  mutable ios::Mutex mutex_;
  std::deque<File> files_ IOS_GUARDED_BY(mutex_);
  std::size_t bytes_ IOS_GUARDED_BY(mutex_) = 0;
  std::uint64_t count_ IOS_GUARDED_BY(mutex_) = 0;
};

}  // namespace simulator
