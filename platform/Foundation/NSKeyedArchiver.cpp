#include "Foundation/NSKeyedArchiver.h"

#include <map>
#include <string>

#include "Base/Programming.h"

namespace ios {
namespace {

using UID = PropertyList::UID;

class Encoder {
 public:
  /// Adds `value` and what it holds to the objects; returns its index.
  UID encode(const PropertyList& value) {
    if (const auto* text = value.text()) return encodeText(*text);
    if (const auto* members = value.dictionary()) {
      const UID place = add({});
      NSArray keys, values;
      for (const auto& [key, member] : *members) keys.push_back(encodeText(key));
      for (const auto& [key, member] : *members) values.push_back(encode(member));
      objects_[place.index] =
          NSDictionary{{"NS.keys", keys}, {"NS.objects", values}, {"$class", classNamed("NSDictionary")}};
      return place;
    }
    if (const auto* elements = value.array()) {
      const UID place = add({});
      NSArray values;
      for (const auto& element : *elements) values.push_back(encode(element));
      objects_[place.index] = NSDictionary{{"NS.objects", values}, {"$class", classNamed("NSArray")}};
      return place;
    }
    if (value.uid()) programmingError("a keyed archive's root holds a reference of another archive");
    return add(value);
  }

  NSArray takeObjects() { return std::move(objects_); }

 private:
  UID add(PropertyList object) {
    objects_.push_back(std::move(object));
    return UID{objects_.size() - 1};
  }

  UID encodeText(const std::string& text) {
    const auto known = texts_.find(text);
    return known != texts_.end() ? known->second : texts_[text] = add(text);
  }

  UID classNamed(const std::string& name) {
    const auto known = classes_.find(name);
    if (known != classes_.end()) return known->second;
    return classes_[name] = add(NSDictionary{{"$classname", name}, {"$classes", NSArray{name, "NSObject"}}});
  }

  NSArray objects_{"$null"};
  std::map<std::string, UID> texts_, classes_;
};

}  // namespace

std::shared_ptr<NSData> NSKeyedArchiver::archivedDataWithRootObject(const PropertyList& root) {
  Encoder encoder;
  const UID place = encoder.encode(root);
  const PropertyList archive = NSDictionary{
      {"$version", 100000},
      {"$archiver", "NSKeyedArchiver"},
      {"$top", NSDictionary{{"root", place}}},
      {"$objects", encoder.takeObjects()},
  };
  return std::make_shared<NSData>(archive.binary());
}

}  // namespace ios
