#include "ObjectiveC/Selector.h"

#include <algorithm>
#include <mutex>
#include <unordered_set>

namespace ios {
namespace {

// Node-based, so the address of a name stays valid for the life of the process.
const std::string* intern(std::string_view name) {
  static std::mutex mutex;
  static auto& names = *new std::unordered_set<std::string>;  // never destroyed: late callbacks still use it
  std::lock_guard lock(mutex);
  return &*names.emplace(name).first;
}

}  // namespace

Selector::Selector(std::string_view name) : name_(intern(name)) {}

int Selector::argumentCount() const {
  return static_cast<int>(std::count(name_->begin(), name_->end(), ':'));
}

}  // namespace ios
