#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Mutex.h"
#include "CoreFoundation/PropertyList.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class NSNotification : public NSObject {
 public:
  NSNotification(std::string name, id object, std::optional<NSDictionary> userInfo)
      : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}
  const std::string& name() const { return name_; }
  const id& object() const { return object_; }
  const std::optional<NSDictionary>& userInfo() const { return userInfo_; }

 private:
  std::string name_;
  id object_;
  std::optional<NSDictionary> userInfo_;
};

/// Delivers notifications to the observers that registered for them. Observers are called on the posting thread, inside
/// the post, in the order of registration. Any thread.
///
/// Observers are not kept alive; one that is destroyed is forgotten. One that is added during a post is called from the
/// next post on; one that is removed during a post, and was not called yet, is not called.
class NSNotificationCenter : public NSObject {
 public:
  static const std::shared_ptr<NSNotificationCenter>& defaultCenter();

  /// `selector` takes the notification or nothing. Empty `name`: every name; empty `object`: any
  /// sender. The same observer registered twice is called twice. A selector that the observer lacks
  /// stops the process, here.
  void addObserver(const id& observer, Selector selector, const std::optional<std::string>& name,
                   const id& object);
  /// Removes every registration of `observer` that matches.
  void removeObserver(const NSObject& observer, const std::optional<std::string>& name = std::nullopt,
                      const id& object = nullptr);

  void postNotificationName(const std::string& name, const id& object = nullptr,
                            std::optional<NSDictionary> userInfo = std::nullopt);

 private:
  struct Registration {
    std::weak_ptr<NSObject> observer;
    const NSObject* observerAddress;
    Action action;
    std::optional<std::string> name;
    std::weak_ptr<NSObject> object;  // empty from the start: any sender
    const NSObject* objectAddress;

    /// Locking the reference would do, but could make the caller the sender's last owner, under the lock.
    bool isFor(const id& sender) const { return objectAddress == sender.get() && !object.expired(); }
    bool removed = false;  // under the centre's lock
  };
  Mutex mutex_;
  std::list<std::shared_ptr<Registration>> registrations_ IOS_GUARDED_BY(mutex_);
};

}  // namespace ios
