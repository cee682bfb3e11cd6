#include <plist/plist.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "CoreFoundation/PropertyList+Private.h"
#include "CoreFoundation/Unicode.h"

namespace ios::plist {
namespace {

/// Walks the objects that the root reaches and refuses what libplist would not survive or would read as
/// something else: it unfolds shared objects into a tree, one call a level, and takes texts as C strings.
class Examiner {
 public:
  Examiner(std::span<const std::uint8_t> bytes, std::string& problem) : bytes_(bytes), problem_(problem) {}

  bool passes() {
    constexpr std::size_t kHeader = 8, kTrailer = 32;
    if (bytes_.size() < kHeader + kTrailer) return fail("is a binary property list cut short");
    if (std::string_view(reinterpret_cast<const char*>(bytes_.data()), kHeader) != "bplist00") {
      return fail("is a binary property list of an unknown version");
    }
    const std::size_t trailer = bytes_.size() - kTrailer;
    offsetSize_ = bytes_[trailer + 6];
    referenceSize_ = bytes_[trailer + 7];
    const std::uint64_t count = number(trailer + 8, 8), root = number(trailer + 16, 8);
    offsetTable_ = number(trailer + 24, 8);
    const auto validSize = [](std::size_t size) { return size >= 1 && size <= 8; };
    if (!validSize(offsetSize_) || !validSize(referenceSize_) || offsetTable_ < kHeader ||
        offsetTable_ > trailer || count == 0 || count > (trailer - offsetTable_) / offsetSize_ ||
        root >= count) {
      return fail("is a binary property list with a damaged trailer");
    }
    extents_.resize(count);
    if (!examine(root, 1)) return false;
    return true;
  }

 private:
  enum class State : std::uint8_t { unknown, open, known };
  /// What an object unfolds to.
  struct Extent {
    State state = State::unknown;
    std::uint32_t height = 0, values = 0;
    std::uint64_t bytes = 0;
  };

  bool fail(const std::string& what) {
    problem_ = what;
    return false;
  }

  std::uint64_t number(std::size_t at, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes_[at + i];
    return value;
  }

  /// How many units the object at `at` has; `at` moves to the first.
  bool readCount(std::size_t& at, std::uint64_t& count) {
    count = bytes_[at++] & 0x0F;
    if (count != 0x0F) return true;
    if (at >= offsetTable_ || bytes_[at] >> 4 != 0x1 || (bytes_[at] & 0x0F) > 3)
      return fail("has a damaged count");
    const std::size_t size = std::size_t{1} << (bytes_[at++] & 0x0F);
    if (size > offsetTable_ - at) return fail("has a count cut short");
    count = number(at, size);
    at += size;
    return true;
  }

  bool examine(std::uint64_t index, std::size_t depth) {
    Extent& extent = extents_[index];
    if (extent.state == State::open) return fail("holds an object that contains itself");
    if (extent.state == State::unknown) {
      if (depth > kMaximumDepth) return fail(kTooDeep);
      extent = {State::open, 1, 1, 0};
      const std::uint64_t offset = number(offsetTable_ + index * offsetSize_, offsetSize_);
      if (offset < 8 || offset >= offsetTable_) return fail("has an object outside the file");
      if (!examineObject(offset, extent, depth)) return false;
      extent.state = State::known;
    }
    if (depth + extent.height - 1 > kMaximumDepth) return fail(kTooDeep);
    return true;
  }

  bool examineObject(std::size_t at, Extent& extent, std::size_t depth) {
    const std::uint8_t marker = bytes_[at];
    const std::size_t left = offsetTable_ - at - 1, low = marker & 0x0F;
    std::uint64_t count = 0;
    switch (marker >> 4) {
      case 0x0:
        return marker == 0x08 || marker == 0x09 || fail("has a value of an unknown kind");
      case 0x1:
        if (low > 4 || (std::size_t{1} << low) > left) return fail("has a damaged integer");
        if (low == 4 && (number(at + 1, 8) != 0 || bytes_[at + 9] >> 7 != 0))
          return fail("has an integer beyond 64 bits");
        return true;
      case 0x2:
      case 0x3:
        return ((low == 3 || (low == 2 && marker >> 4 == 0x2)) && (std::size_t{1} << low) <= left) ||
               fail("has a damaged real or date");
      case 0x8:
        return (low < 8 && low + 1 <= left) || fail("has a damaged reference");
      case 0x4:
      case 0x5:
      case 0x6:
        return readCount(at, count) && examineBytes(at, marker >> 4, count, extent);
      case 0xA:
      case 0xD:
        return readCount(at, count) && examineMembers(at, marker >> 4 == 0xD, count, extent, depth);
      default:
        return fail("has a value of an unknown kind");
    }
  }

  bool examineBytes(std::size_t at, int kind, std::uint64_t count, Extent& extent) {
    const std::size_t unit = kind == 0x6 ? 2 : 1;
    if (count > (offsetTable_ - at) / unit) return fail("has a text or data cut short");
    extent.bytes = count * unit;
    const std::string_view content(reinterpret_cast<const char*>(bytes_.data()) + at, count * unit);
    if (kind == 0x5) {
      const auto ascii = [](char c) { return c != 0 && static_cast<unsigned char>(c) < 0x80; };
      if (!std::all_of(content.begin(), content.end(), ascii))
        return fail("has a text with bytes that are no characters");
    } else if (kind == 0x6) {
      bool expectsLow = false;
      for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t c = number(at + 2 * i, 2);
        const bool isLow = c >= 0xDC00 && c <= 0xDFFF;
        if (c == 0 || isLow != expectsLow) return fail("has a text with units that are no characters");
        expectsLow = c >= 0xD800 && c <= 0xDBFF;
      }
      if (expectsLow) return fail("has a text that ends within a character");
    }
    return true;
  }

  bool examineMembers(std::size_t at, bool isDictionary, std::uint64_t count, Extent& extent,
                      std::size_t depth) {
    const std::uint64_t references = isDictionary ? 2 : 1;
    if (count > (offsetTable_ - at) / (referenceSize_ * references))
      return fail("has an array or dictionary cut short");
    std::vector<std::string_view> keys;
    for (std::uint64_t i = 0; i < count * references; ++i) {
      const std::uint64_t index = number(at + i * referenceSize_, referenceSize_);
      if (index >= extents_.size()) return fail("refers to an object that does not exist");
      if (!examine(index, depth + 1)) return false;
      const Extent& member = extents_[index];
      extent.height = std::max(extent.height, member.height + 1);
      extent.values += isDictionary && i < count ? 0 : member.values;
      extent.bytes += member.bytes;
      if (extent.values > kMaximumValues) return fail(kTooMany);
      if (extent.bytes > kMaximumBytes) return fail(kTooLarge);
      if (isDictionary && i < count) {
        auto key = textBytes(index);
        if (!key) return fail("has a key that is no text");
        keys.push_back(*key);
      }
    }
    std::sort(keys.begin(), keys.end());
    return std::adjacent_find(keys.begin(), keys.end()) == keys.end() ||
           fail("has a key twice in a dictionary");
  }

  /// Marker and content of an examined text.
  std::optional<std::string_view> textBytes(std::uint64_t index) {
    const std::size_t start = number(offsetTable_ + index * offsetSize_, offsetSize_);
    const int kind = bytes_[start] >> 4;
    if (kind != 0x5 && kind != 0x6) return std::nullopt;
    std::size_t at = start;
    std::uint64_t count = 0;
    if (!readCount(at, count)) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(bytes_.data()) + at, count * (kind == 0x6 ? 2 : 1));
  }

  std::span<const std::uint8_t> bytes_;
  std::string& problem_;
  std::size_t offsetSize_ = 0, referenceSize_ = 0, offsetTable_ = 0;
  std::vector<Extent> extents_;
};

std::string dateText(std::int32_t secondsSince2001) {
  constexpr std::time_t kReference = 978'307'200;
  const std::time_t seconds = kReference + secondsSince2001;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 40> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

template <class T>
using Allocated = std::unique_ptr<T, decltype(&std::free)>;

PropertyList convert(plist_t node);

PropertyList convertArray(plist_t node) {
  NSArray values;
  const std::uint32_t count = plist_array_get_size(node);
  values.reserve(count);
  plist_array_iter state = nullptr;
  plist_array_new_iter(node, &state);
  const Allocated<void> owned(state, &std::free);
  for (std::uint32_t i = 0; i < count; ++i) {
    plist_t item = nullptr;
    plist_array_next_item(node, state, &item);
    values.push_back(convert(item));
  }
  return values;
}

PropertyList convertDictionary(plist_t node) {
  NSDictionary members;
  plist_dict_iter state = nullptr;
  plist_dict_new_iter(node, &state);
  const Allocated<void> owned(state, &std::free);
  for (;;) {
    char* key = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, state, &key, &item);
    const Allocated<char> ownedKey(key, &std::free);
    if (!key) return members;
    members.emplace(key, convert(item));
  }
}

PropertyList convert(plist_t node) {
  std::uint64_t length = 0;
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return value != 0;
    }
    case PLIST_UINT: {
      std::uint64_t value = 0;
      plist_get_uint_val(node, &value);
      return static_cast<std::int64_t>(value);
    }
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return value;
    }
    case PLIST_STRING: {
      const char* text = plist_get_string_ptr(node, &length);
      return std::string(text, text ? length : 0);
    }
    case PLIST_DATA: {
      const char* bytes = plist_get_data_ptr(node, &length);
      return Bytes(bytes, bytes + length);
    }
    case PLIST_DATE: {
      std::int32_t seconds = 0, microseconds = 0;
      plist_get_date_val(node, &seconds, &microseconds);
      return dateText(seconds);
    }
    case PLIST_UID: {
      PropertyList::UID value;
      plist_get_uid_val(node, &value.index);
      return value;
    }
    case PLIST_ARRAY:
      return convertArray(node);
    case PLIST_DICT:
      return convertDictionary(node);
    default:
      return {};
  }
}

}  // namespace

std::optional<PropertyList> parseBinary(std::span<const std::uint8_t> bytes, std::string& problem) {
  if (bytes.size() > std::numeric_limits<std::int32_t>::max()) {
    problem = "is larger than 2 GB";
    return std::nullopt;
  }
  if (!Examiner(bytes, problem).passes()) return std::nullopt;
  plist_t read = nullptr;
  plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()),
                 &read);
  const std::unique_ptr<void, decltype(&plist_free)> root(read, &plist_free);
  if (!root) {
    problem = "is a damaged binary property list";
    return std::nullopt;
  }
  return convert(root.get());
}

}  // namespace ios::plist
