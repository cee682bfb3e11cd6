#include "ObjectiveC/NSObject.h"

namespace ios {

Class& NSObject::classObject() {
  static Class object(typeid(NSObject), nullptr, {});
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

}  // namespace detail

Action::Action(const id& target, Selector selector) : selector(selector), takesSender(selector.argumentCount() == 1) {
  if (!target) programmingError("no target for the action \"" + selector.name() + "\"");
  if (!target->respondsToSelector(selector)) detail::unrecognizedSelector(*target, selector);
  if (selector.argumentCount() > 1) programmingError("an action takes at most its sender: \"" + selector.name() + "\"");
}

void Action::perform(NSObject& target, const id& sender) const {
  if (takesSender) {
    send(target, selector, sender);
  } else {
    send(target, selector);
  }
}

}  // namespace ios
