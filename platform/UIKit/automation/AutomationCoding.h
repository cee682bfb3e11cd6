#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "UIKit/AutomationRequests.h"

/// How requests and answers become dictionaries, and are read back.
namespace ios::automation {

template <class T>
concept Fielded = requires(T& value) {
  T::fields(value, [](const char*, auto&) {});
};

inline PropertyList encode(bool value) {
  return value;
}
inline PropertyList encode(int value) {
  return value;
}
inline PropertyList encode(std::int64_t value) {
  return value;
}
inline PropertyList encode(double value) {
  return value;
}
inline PropertyList encode(nanoseconds value) {
  return std::int64_t{value.count()};
}
inline PropertyList encode(const std::string& value) {
  return value;
}
inline PropertyList encode(const Bytes& value) {
  return value;
}
template <Fielded T>
PropertyList encode(const T& value);
template <class T>
PropertyList encode(const std::vector<T>& values) {
  NSArray array;
  for (const T& value : values) array.push_back(encode(value));
  return array;
}

template <Fielded T>
void encodeInto(NSDictionary& dictionary, const T& value) {
  T::fields(value, [&](const char* key, const auto& member) { dictionary[key] = encode(member); });
}
template <Fielded T>
PropertyList encode(const T& value) {
  NSDictionary dictionary;
  encodeInto(dictionary, value);
  return dictionary;
}

// Each returns false when the value is of another kind; the output is then unspecified.

template <class T>
bool decodeAs(const T* found, T& value) {
  if (found) value = *found;
  return found != nullptr;
}
inline bool decode(const PropertyList& list, bool& value) {
  return decodeAs(list.boolean(), value);
}
inline bool decode(const PropertyList& list, std::int64_t& value) {
  return decodeAs(list.integer(), value);
}
inline bool decode(const PropertyList& list, std::string& value) {
  return decodeAs(list.text(), value);
}
inline bool decode(const PropertyList& list, Bytes& value) {
  return decodeAs(list.data(), value);
}
inline bool decode(const PropertyList& list, int& value) {
  const std::int64_t* found = list.integer();
  if (!found || *found < std::numeric_limits<int>::min() || *found > std::numeric_limits<int>::max())
    return false;
  value = static_cast<int>(*found);
  return true;
}
inline bool decode(const PropertyList& list, double& value) {
  if (const std::int64_t* whole = list.integer()) {
    value = static_cast<double>(*whole);
    return true;
  }
  return decodeAs(list.real(), value);
}
inline bool decode(const PropertyList& list, nanoseconds& value) {
  const std::int64_t* found = list.integer();
  if (found) value = nanoseconds(*found);
  return found != nullptr;
}
template <Fielded T>
bool decode(const PropertyList& list, T& value);
template <class T>
bool decode(const PropertyList& list, std::vector<T>& values) {
  if (!list.array()) return false;
  for (const PropertyList& item : *list.array()) {
    if (!decode(item, values.emplace_back())) return false;
  }
  return true;
}

/// Key of the first field that is missing or of another kind; empty if all are valid.
template <Fielded T>
std::string firstBadField(const PropertyList& list, T& value) {
  std::string bad;
  T::fields(value, [&](const char* key, auto& member) {
    const PropertyList* found = list.member(key);
    if (bad.empty() && (!found || !decode(*found, member))) bad = key;
  });
  return bad;
}
template <Fielded T>
bool decode(const PropertyList& list, T& value) {
  return firstBadField(list, value).empty();
}

template <class Request>
struct Reply {
  Status status;
  typename Request::Answer answer;  // default-constructed if `status` has a problem
};

/// Sends `request` through `exchange`, which passes a dictionary to the application and returns its answer,
/// if any. Empty when there is no answer or it cannot be understood.
template <class Request, class Exchange>
std::optional<Reply<Request>> ask(const Request& request, Exchange&& exchange) {
  NSDictionary question{{"request", Request::kName}};
  encodeInto(question, request);
  const std::optional<NSDictionary> came = exchange(question);
  if (!came) return std::nullopt;
  const PropertyList list(*came);
  Reply<Request> reply;
  if (!decode(list, reply.status)) return std::nullopt;
  if (reply.status.problem.empty() && !decode(list, reply.answer)) return std::nullopt;
  return reply;
}

}  // namespace ios::automation
