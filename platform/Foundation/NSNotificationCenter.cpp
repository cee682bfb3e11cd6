#include "Foundation/NSNotificationCenter.h"

#include <algorithm>

namespace ios {

const std::shared_ptr<NSNotificationCenter>& NSNotificationCenter::defaultCenter() {
  static auto& center = *new std::shared_ptr<NSNotificationCenter>(std::make_shared<NSNotificationCenter>());
  return center;
}

void NSNotificationCenter::addObserver(const id& observer, Selector selector,
                                       const std::optional<std::string>& name, const id& object) {
  auto registration = std::make_shared<Registration>(
      Registration{observer, observer.get(), Action(observer, selector), name, object, object.get()});
  MutexLock lock(mutex_);
  registrations_.push_back(std::move(registration));
}

void NSNotificationCenter::removeObserver(const NSObject& observer, const std::optional<std::string>& name,
                                          const id& object) {
  MutexLock lock(mutex_);
  registrations_.remove_if([&](const auto& registration) {
    const bool matches = registration->observerAddress == &observer &&
                         (!name || registration->name == name) && (!object || registration->isFor(object));
    // A post that is under way holds the registration too.
    if (matches) registration->removed = true;
    return matches;
  });
}

void NSNotificationCenter::postNotificationName(const std::string& name, const id& object,
                                                std::optional<NSDictionary> userInfo) {
  std::vector<std::shared_ptr<Registration>> called;
  {
    MutexLock lock(mutex_);
    registrations_.remove_if([](const auto& registration) {
      return registration->observer.expired() ||
             (registration->objectAddress && registration->object.expired());
    });
    for (const auto& registration : registrations_) {
      const bool named = !registration->name || *registration->name == name;
      if (named && (!registration->objectAddress || registration->isFor(object))) {
        called.push_back(registration);
      }
    }
  }
  if (called.empty()) return;
  const id notification = std::make_shared<NSNotification>(name, object, std::move(userInfo));
  for (const auto& registration : called) {
    {
      MutexLock lock(mutex_);
      if (registration->removed) continue;
    }
    if (const id observer = registration->observer.lock())
      registration->action.perform(*observer, notification);
  }
}

}  // namespace ios
