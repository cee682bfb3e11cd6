#include "Foundation/NSKeyedUnarchiver.h"

#include <vector>

#include "Base/Result.h"
#include "CoreFoundation/Unicode.h"

namespace ios {
namespace {

constexpr std::size_t kMaximumDepth = 128;
constexpr std::size_t kMaximumValues = 100'000;
constexpr std::size_t kMaximumBytes = 256'000'000;

using Decoded = Result<PropertyList, std::string>;

tl::unexpected<std::string> fail(std::string what) {
  return failure(std::move(what));
}

/// Unfolds the objects of an archive. An object that is referred to twice is unfolded twice, so
/// everything is counted.
class Decoder {
 public:
  explicit Decoder(const NSArray& objects) : objects_(objects), open_(objects.size()) {}

  Decoded decode(const PropertyList& reference, std::size_t depth) {
    const auto* uid = reference.uid();
    if (!uid) return fail("holds a value where a reference belongs");
    if (uid->index >= objects_.size()) return fail("refers to an object that does not exist");
    if (uid->index == 0) return fail("holds a null");
    if (depth > kMaximumDepth) return fail("nests deeper than 128 levels");
    if (++values_ > kMaximumValues) return fail("unfolds to more than 100,000 values");
    const PropertyList& object = objects_[uid->index];
    if (object.dictionary()) {
      if (open_[uid->index]) return fail("holds an object that contains itself");
      open_[uid->index] = true;
      auto value = decodeInstance(object, depth);
      open_[uid->index] = false;
      return value;
    }
    return plain(object);
  }

 private:
  /// A value that stands for itself, counted.
  Decoded plain(const PropertyList& value) {
    if (value.array() || value.dictionary() || value.uid()) return fail("holds a collection without a class");
    if (const auto* text = value.text()) bytes_ += text->size();
    if (const auto* data = value.data()) bytes_ += data->size();
    if (bytes_ > kMaximumBytes) return fail("unfolds to more than 256 MB of strings and data");
    return value;
  }

  Decoded decodeInstance(const PropertyList& object, std::size_t depth) {
    const PropertyList* reference = object.member("$class");
    const UID* uid = reference ? reference->uid() : nullptr;
    const std::string* name =
        uid && uid->index < objects_.size() ? objects_[uid->index].text("$classname") : nullptr;
    if (!name) return fail("holds an object without a class");
    if (*name == "NSDictionary" || *name == "NSMutableDictionary") return decodeDictionary(object, depth);
    if (*name == "NSArray" || *name == "NSMutableArray") return decodeArray(object, depth);
    if (*name == "NSString" || *name == "NSMutableString") {
      const PropertyList* content = object.member("NS.string");
      if (!content || !content->text()) return fail("holds a string without its characters");
      return plain(*content);
    }
    if (*name == "NSData" || *name == "NSMutableData") {
      const PropertyList* content = object.member("NS.data");
      if (!content || !content->data()) return fail("holds data without its bytes");
      return plain(*content);
    }
    return fail("holds an object of class \"" + repairedUTF8(name->substr(0, 80)) + "\"");
  }

  Decoded decodeArray(const PropertyList& object, std::size_t depth) {
    const NSArray* references = arrayIn(object, "NS.objects");
    if (!references) return fail("holds an array without its elements");
    NSArray values;
    for (const auto& reference : *references) values.push_back(IOS_TRY(decode(reference, depth + 1)));
    return PropertyList(std::move(values));
  }

  Decoded decodeDictionary(const PropertyList& object, std::size_t depth) {
    const NSArray *keys = arrayIn(object, "NS.keys"), *references = arrayIn(object, "NS.objects");
    if (!keys || !references) return fail("holds a dictionary without its keys or values");
    if (keys->size() != references->size())
      return fail("holds a dictionary with unequal numbers of keys and values");
    NSDictionary members;
    for (std::size_t i = 0; i < keys->size(); ++i) {
      const auto key = IOS_TRY(decode((*keys)[i], depth + 1));
      if (!key.text()) return fail("holds a dictionary with a key that is not a string");
      --values_;  // a key is part of its value
      auto value = IOS_TRY(decode((*references)[i], depth + 1));
      if (!members.emplace(*key.text(), std::move(value)).second)
        return fail("holds a key twice in a dictionary");
    }
    return PropertyList(std::move(members));
  }

  static const NSArray* arrayIn(const PropertyList& object, const char* key) {
    const PropertyList* member = object.member(key);
    return member ? member->array() : nullptr;
  }

  using UID = PropertyList::UID;
  const NSArray& objects_;
  std::vector<bool> open_;
  std::size_t values_ = 0, bytes_ = 0;
};

Decoded decodeArchive(const PropertyList& archive) {
  const auto* archiver = archive.text("$archiver");
  const auto* version = archive.member("$version");
  const auto* objects = archive.member("$objects");
  const auto* top = archive.member("$top");
  const auto* root = top ? top->member("root") : nullptr;
  if (!archiver || *archiver != "NSKeyedArchiver" || !objects || !objects->array() || !root)
    return fail("is not a keyed archive");
  if (!version || !version->integer() || *version->integer() != 100000)
    return fail("is a keyed archive of an unknown version");
  return Decoder(*objects->array()).decode(*root, 1);
}

}  // namespace

std::optional<PropertyList> NSKeyedUnarchiver::unarchiveObjectWithData(std::span<const std::uint8_t> data,
                                                                       std::string* problem) {
  const auto archive = PropertyList::parse(data, problem);
  if (!archive) return std::nullopt;
  auto decoded = decodeArchive(*archive);
  if (decoded) return *std::move(decoded);
  if (problem) *problem = decoded.error();
  return std::nullopt;
}

}  // namespace ios
