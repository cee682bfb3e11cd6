#include "ObjectiveC/NSObject.h"

namespace ios {

Class& NSObject::classObject() {
  static Class& object = Class::of(
      typeid(NSObject), nullptr, +[] { return MethodList(); });
  return object;
}

namespace detail {

void unrecognizedSelector(const NSObject& object, Selector selector) {
  programmingError("-[" + object.className() + " " + selector.name() + "]: unrecognized selector");
}

void mismatchedSelector(const NSObject& object, const Method& method, const std::string& wanted) {
  programmingError("-[" + object.className() + " " + method.name().name() + "] is " + method.signature() +
                   " and was called as " + wanted);
}

void mismatchedReceiver(const NSObject& object, Selector selector, const std::type_info& wanted) {
  programmingError("-[" + object.className() + " " + selector.name() + "] was written for " +
                   describe(wanted));
}

}  // namespace detail

Action::Action(const id& target, Selector selector)
    : selector(selector), takesSender(selector.argumentCount() == 1) {
  if (!target) programmingError("no target for the action \"" + selector.name() + "\"");
  if (selector.argumentCount() > 1)
    programmingError("an action takes at most its sender: \"" + selector.name() + "\"");
  const Method* method = target->isa().find(selector);
  if (!method) detail::unrecognizedSelector(*target, selector);
  if (takesSender ? !method->as<void, id>() : !method->as<void>()) {
    detail::mismatchedSelector(*target, *method, "an action");
  }
}

void Action::perform(NSObject& target, const id& sender) const {
  if (takesSender) {
    send(target, selector, sender);
  } else {
    send(target, selector);
  }
}

}  // namespace ios
