#pragma once

#include <any>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <unordered_map>
#include <vector>

#include "Base/Mutex.h"
#include "Base/Programming.h"
#include "ObjectiveC/Selector.h"

namespace ios {

class NSObject;

namespace detail {

template <class T>
struct PointeeOf {};
template <class T>
struct PointeeOf<std::shared_ptr<T>> {
  using type = T;
};

template <class T>
concept ObjectReference = requires {
  sizeof(typename PointeeOf<std::decay_t<T>>::type);
}
&&std::is_base_of_v<NSObject, typename PointeeOf<std::decay_t<T>>::type>;

/// How an argument travels between a caller and a method that know each other by name only: every object as a
/// reference to the root class, every enumeration as its integer, everything else as itself.
template <class T, bool = ObjectReference<T>, bool = std::is_enum_v<std::decay_t<T>>>
struct Carried {
  using type = std::decay_t<T>;
};
template <class T>
struct Carried<T, true, false> {
  using type = std::shared_ptr<NSObject>;
};
template <class T>
struct Carried<T, false, true> {
  using type = std::underlying_type_t<std::decay_t<T>>;
};
template <class T>
using carried_t = typename Carried<T>::type;

template <class Parameter>
std::decay_t<Parameter> received(const carried_t<Parameter>& value) {
  using Plain = std::decay_t<Parameter>;
  if constexpr (ObjectReference<Parameter>) {
    return std::dynamic_pointer_cast<typename PointeeOf<Plain>::type>(value);
  } else {
    return static_cast<Plain>(value);
  }
}

/// The name of a C++ type as messages show it: "Notes.ListViewController"; `ios::` is dropped.
std::string describe(const std::type_info& type);

}  // namespace detail

/// One entry of a class's method table: a selector and what it runs.
///
/// Made from a member function (`{"captureScreen", &TLVManager::captureScreen}`) or, for a category, from a
/// free function that takes the object first. Its parameters are what the selector carries: object references
/// (passed on as their common root, and cast back; an object of another class arrives empty), numbers,
/// enumerations and values. A member function without parameters may be registered under a selector with one
/// ":"; the argument is dropped.
class Method {
 public:
  template <class T, class R, class... A>
  Method(Selector name, R (T::*function)(A...)) : name_(name) {
    bind<T, R, A...>(
        [function](T& self, auto&&... a) -> R { return (self.*function)(std::forward<decltype(a)>(a)...); });
  }
  template <class T, class R, class... A>
  Method(Selector name, R (T::*function)(A...) const) : name_(name) {
    bind<T, R, A...>(
        [function](T& self, auto&&... a) -> R { return (self.*function)(std::forward<decltype(a)>(a)...); });
  }
  template <class T, class R, class... A>
  Method(Selector name, R (*function)(T&, A...)) : name_(name) {
    bind<T, R, A...>(
        [function](T& self, auto&&... a) -> R { return function(self, std::forward<decltype(a)>(a)...); });
  }

  Selector name() const { return name_; }

  template <class R, class... Carried>
  const std::function<R(NSObject&, Carried...)>* as() const {
    return std::any_cast<std::function<R(NSObject&, Carried...)>>(&body_);
  }
  /// The argument and result types, for messages about a mismatch.
  std::string signature() const { return detail::describe(body_.type()); }

 private:
  template <class T, class R, class... A, class F>
  void bind(F function);

  Selector name_;
  std::any body_;  // std::function<R(NSObject&, carried...)>
};

using MethodList = std::vector<Method>;

/// A class as the object runtime sees it: a name, the class it derives from, and a table of methods by
/// selector. One object per class in the process, however many images use the class; it lives until the
/// process ends. Any thread.
class Class {
 public:
  /// The object of the class `type`; made by the first call, with these methods.
  static Class& of(const std::type_info& type, const Class* superclass, MethodList (*methods)());
  Class(const Class&) = delete;
  Class& operator=(const Class&) = delete;

  /// "Notes.ListViewController" for `Notes::ListViewController`, "UIWindow" for `ios::UIWindow`.
  std::string description() const { return detail::describe(*type_); }
  const Class* superclass() const { return superclass_; }

  /// Adds methods to this class and so to all that derive from it, as the platform's categories do. A method
  /// that the class itself has under the same selector is replaced; an inherited one is overridden.
  void addMethods(MethodList methods);

  /// The method for `name`, of this class or the nearest ancestor that has one; null if none has. It stays
  /// valid after it is replaced.
  const Method* find(Selector name) const;

 private:
  Class(const std::type_info& type, const Class* superclass, MethodList methods);

  const std::type_info* type_;
  const Class* superclass_;
  mutable Mutex mutex_;
  // Replaced methods stay: another thread may be inside one.
  std::deque<Method> methods_ IOS_GUARDED_BY(mutex_);
  std::unordered_map<Selector, const Method*> table_ IOS_GUARDED_BY(mutex_);
};

/// Extends a class from outside while the image that contains it is loaded, at namespace level:
/// `const Category kShake{UIWindow::classObject(), {{"motionEnded:withEvent:", &motionEnded}}};`
struct Category {
  Category(Class& extended, MethodList methods) { extended.addMethods(methods); }
};

}  // namespace ios
