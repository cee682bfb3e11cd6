#include "ObjectiveC/Class.h"

#include <cxxabi.h>

#include <cctype>
#include <cstdlib>

namespace ios {
namespace detail {

std::string describe(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> demangled(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                        &std::free);
  const std::string_view qualified = status == 0 ? demangled.get() : type.name();
  std::string described;
  for (std::size_t i = 0; i < qualified.size();) {
    const auto rest = qualified.substr(i);
    const bool atName = i == 0 || !(std::isalnum(static_cast<unsigned char>(qualified[i - 1])) || qualified[i - 1] == '_' ||
                                    qualified[i - 1] == ':');
    if (atName && rest.starts_with("ios::")) {
      i += 5;
    } else if (rest.starts_with("::")) {
      described += '.';
      i += 2;
    } else {
      described += qualified[i++];
    }
  }
  return described;
}

}  // namespace detail

Class::Class(const std::type_info& type, const Class* superclass, MethodList methods)
    : type_(&type), superclass_(superclass) {
  addMethods(std::move(methods));
}

void Class::addMethods(MethodList methods) {
  std::lock_guard lock(mutex_);
  for (auto& method : methods) methods_.insert_or_assign(method.name(), std::move(method));
}

const Method* Class::find(Selector name) const {
  for (const Class* c = this; c; c = c->superclass_) {
    std::lock_guard lock(c->mutex_);
    // Entries are only ever added or replaced in place, so the address stays good after the lock is gone.
    if (auto found = c->methods_.find(name); found != c->methods_.end()) return &found->second;
  }
  return nullptr;
}

}  // namespace ios
