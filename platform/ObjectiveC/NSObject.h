#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "ObjectiveC/Class.h"

namespace ios {

/// The root of every class of the platform, of the library and of host applications.
///
/// Objects are held by `std::shared_ptr` and made with `std::make_shared`; back references are
/// `std::weak_ptr`. A class whose operations are called by selector derives through `Subclass`.
class NSObject : public std::enable_shared_from_this<NSObject> {
 public:
  NSObject() = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual ~NSObject() = default;

  static Class& classObject();
  /// The nearest class of this object that has a method table.
  virtual const Class& isa() const { return classObject(); }

  /// The name of this object's own class: "Notes.ListViewController", "UINavigationController".
  std::string className() const { return detail::describe(typeid(*this)); }

  bool respondsToSelector(Selector selector) const { return isa().find(selector) != nullptr; }

  /// This object as a shared reference of its own class `T`; empty while no shared reference holds it.
  template <class T>
  std::shared_ptr<T> sharedAs() {
    return std::dynamic_pointer_cast<T>(weak_from_this().lock());
  }
};

/// `id` of the platform: a reference to any object.
using id = std::shared_ptr<NSObject>;

/// Derives `Derived` from `Base` with a method table, which `Derived` states as
/// `static MethodList methods() { return {{"gestureSuccess", &GestureListeners::gestureSuccess}}; }`.
template <class Derived, class Base>
class Subclass : public Base {
 public:
  using Base::Base;
  static Class& classObject() {
    static Class& object = Class::of(typeid(Derived), &Base::classObject(), &Derived::methods);
    return object;
  }
  const Class& isa() const override { return classObject(); }
};

/// Whether `object` is exactly of class `T` (a subclass is not).
template <class T>
bool isMemberOfClass(const NSObject& object) {
  return typeid(object) == typeid(T);
}

namespace detail {
[[noreturn]] void unrecognizedSelector(const NSObject& object, Selector selector);
[[noreturn]] void mismatchedSelector(const NSObject& object, const Method& method, const std::string& wanted);
[[noreturn]] void mismatchedReceiver(const NSObject& object, Selector selector, const std::type_info& wanted);

/// `object` as the class that the method under `selector` was written for.
template <class T>
T& receiver(NSObject& object, Selector selector) {
  if (auto* self = dynamic_cast<T*>(&object)) return *self;
  mismatchedReceiver(object, selector, typeid(T));
}

template <class R, class... A>
R invoke(const Method& method, NSObject& object, A&&... arguments) {
  if (auto* body = method.as<R, carried_t<A>...>()) {
    return (*body)(object, carried_t<A>(std::forward<A>(arguments))...);
  }
  mismatchedSelector(object, method, describe(typeid(std::function<R(NSObject&, carried_t<A>...)>)));
}
}  // namespace detail

/// Calls the operation that `object` has under `selector`, on the calling thread. The result and argument
/// types must be the method's own (objects of any class count as one type). An object without it, or with
/// other types, is a programming error and stops the process; check `respondsToSelector` first if in doubt.
template <class R = void, class... A>
R send(NSObject& object, Selector selector, A&&... arguments) {
  const Method* method = object.isa().find(selector);
  if (!method) detail::unrecognizedSelector(object, selector);
  return detail::invoke<R>(*method, object, std::forward<A>(arguments)...);
}

/// Like `send`, but starts the look-up at the class that `overriding` derives from: the inherited behaviour.
template <class R = void, class... A>
R sendSuper(NSObject& object, const Class& overriding, Selector selector, A&&... arguments) {
  const Method* method = overriding.superclass() ? overriding.superclass()->find(selector) : nullptr;
  if (!method) detail::unrecognizedSelector(object, selector);
  return detail::invoke<R>(*method, object, std::forward<A>(arguments)...);
}

/// An action: a target, held as the caller chooses, and what to call on it. Made where targets are
/// registered (observers, timers, recognisers, controls). The constructor stops the process if the target
/// lacks the selector.
struct Action {
  Action(const id& target, Selector selector);
  Selector selector;
  bool takesSender;  // the selector has one ":"
  /// Calls it with `sender` if it takes one.
  void perform(NSObject& target, const id& sender) const;
};

template <class T, class R, class... A, class F>
void Method::bind(F function) {
  static_assert(std::is_base_of_v<NSObject, T>, "methods belong to classes that derive from NSObject");
  constexpr int count = static_cast<int>(sizeof...(A));
  if constexpr (count == 0) {
    if (name_.argumentCount() == 1) {
      body_ = std::function<R(NSObject&, id)>([function, name = name_](NSObject& self, const id&) -> R {
        return function(detail::receiver<T>(self, name));
      });
      return;
    }
  }
  if (count != name_.argumentCount()) {
    programmingError("the method for \"" + name_.name() + "\" takes " + std::to_string(count) + " arguments");
  }
  body_ = std::function<R(NSObject&, detail::carried_t<A>...)>(
      [function, name = name_](NSObject& self, const detail::carried_t<A>&... a) -> R {
        return function(detail::receiver<T>(self, name), detail::received<A>(a)...);
      });
}

}  // namespace ios
