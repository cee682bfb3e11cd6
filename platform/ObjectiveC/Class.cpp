#include "ObjectiveC/Class.h"

#include <cxxabi.h>

#include <cctype>
#include <cstdlib>
#include <typeindex>

namespace ios {
namespace detail {

constexpr std::string_view kUnnamed = "(anonymous namespace)::";  // says nothing to a reader

std::string describe(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> demangled(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  const std::string_view qualified = status == 0 ? demangled.get() : type.name();
  std::string described;
  for (std::size_t i = 0; i < qualified.size();) {
    const auto rest = qualified.substr(i);
    const bool atName = i == 0 || !(std::isalnum(static_cast<unsigned char>(qualified[i - 1])) ||
                                    qualified[i - 1] == '_' || qualified[i - 1] == ':');
    if (atName && rest.starts_with("ios::")) {
      i += 5;
    } else if (rest.starts_with(kUnnamed)) {
      i += kUnnamed.size();
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

// Keyed by the type, not by the address of a static: a class template has its statics once per image when the
// image hides its symbols, and a category of one image must reach the objects of all.
Class& Class::of(const std::type_info& type, const Class* superclass, MethodList (*methods)()) {
  struct Registry {
    Mutex mutex;
    std::unordered_map<std::type_index, Class*> classes IOS_GUARDED_BY(mutex);
  };
  static auto& registry = *new Registry;  // never destroyed: late callbacks still use it
  {
    MutexLock lock(registry.mutex);
    if (auto found = registry.classes.find(type); found != registry.classes.end()) return *found->second;
  }
  std::unique_ptr<Class> made(new Class(type, superclass, methods()));
  MutexLock lock(registry.mutex);
  const auto [entry, isNew] = registry.classes.try_emplace(type, made.get());
  if (isNew) made.release();
  return *entry->second;
}

Class::Class(const std::type_info& type, const Class* superclass, MethodList methods)
    : type_(&type), superclass_(superclass) {
  addMethods(std::move(methods));
}

void Class::addMethods(MethodList methods) {
  MutexLock lock(mutex_);
  for (auto& method : methods) {
    const Method& kept = methods_.emplace_back(std::move(method));
    table_[kept.name()] = &kept;
  }
}

const Method* Class::find(Selector name) const {
  for (const Class* c = this; c; c = c->superclass_) {
    MutexLock lock(c->mutex_);
    if (auto found = c->table_.find(name); found != c->table_.end()) return found->second;
  }
  return nullptr;
}

}  // namespace ios
