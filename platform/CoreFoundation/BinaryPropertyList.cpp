#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <ctime>
#include <string_view>
#include <vector>

#include "CoreFoundation/Private/PropertyList.h"
#include "CoreFoundation/Unicode.h"

namespace ios::plist {
namespace {

/// "2026-01-05T09:41:00Z"; empty for a moment that no calendar has.
std::optional<std::string> dateText(double secondsSince2001) {
  constexpr double kReference = 978'307'200, kFarthest = 1e11;  // some thousand years
  if (!(std::abs(secondsSince2001) < kFarthest)) return std::nullopt;
  const auto seconds = static_cast<std::time_t>(kReference + std::trunc(secondsSince2001));
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 40> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

/// Builds the value while it walks the objects that the root reaches. Every offset and count is
/// checked before it is used, and an object that several others share counts each time: what is built
/// stays within the limits.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  Parsed read() {
    constexpr std::size_t kTrailer = 32;
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
    open_.resize(count);
    values_ = 1;
    return object(root, 1);
  }

 private:
  static constexpr std::size_t kHeader = 8;

  static tl::unexpected<std::string> fail(std::string what) { return failure(std::move(what)); }

  std::uint64_t number(std::size_t at, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes_[at + i];
    return value;
  }

  /// How many units the object at `at` has; `at` moves to the first.
  Result<std::uint64_t, std::string> readCount(std::size_t& at) const {
    const std::uint8_t low = bytes_[at++] & 0x0F;
    if (low != 0x0F) return low;
    if (at >= offsetTable_ || bytes_[at] >> 4 != 0x1 || (bytes_[at] & 0x0F) > 3)
      return fail("has a damaged count");
    const std::size_t size = std::size_t{1} << (bytes_[at++] & 0x0F);
    if (size > offsetTable_ - at) return fail("has a count cut short");
    at += size;
    return number(at - size, size);
  }

  Parsed object(std::uint64_t index, std::size_t depth) {
    if (index >= open_.size()) return fail("refers to an object that does not exist");
    if (open_[index]) return fail("holds an object that contains itself");
    if (depth > kMaximumDepth) return fail(kTooDeep);
    const std::uint64_t at = number(offsetTable_ + index * offsetSize_, offsetSize_);
    if (at < kHeader || at >= offsetTable_) return fail("has an object outside the file");
    open_[index] = true;
    auto value = objectAt(at, depth);
    open_[index] = false;
    return value;
  }

  Parsed objectAt(std::size_t at, std::size_t depth) {
    const std::uint8_t marker = bytes_[at];
    const std::size_t left = offsetTable_ - at - 1, low = marker & 0x0F;
    const std::size_t size = std::size_t{1} << low;
    switch (marker >> 4) {
      case 0x0:
        if (marker != 0x08 && marker != 0x09) return fail("has a value of an unknown kind");
        return PropertyList(marker == 0x09);
      case 0x1:
        if (low > 4 || size > left) return fail("has a damaged integer");
        return integer(at + 1, size);
      case 0x2:
        if ((low != 2 && low != 3) || size > left) return fail("has a damaged real or date");
        if (low == 3) return PropertyList(std::bit_cast<double>(number(at + 1, 8)));
        return PropertyList(double{std::bit_cast<float>(static_cast<std::uint32_t>(number(at + 1, 4)))});
      case 0x3: {
        const auto date =
            low == 3 && size <= left ? dateText(std::bit_cast<double>(number(at + 1, 8))) : std::nullopt;
        if (!date) return fail("has a damaged real or date");
        return PropertyList(*date);
      }
      case 0x4:
      case 0x5:
      case 0x6:
        return textOrData(at);
      case 0x8:
        if (low >= 8 || low + 1 > left) return fail("has a damaged reference");
        return PropertyList(PropertyList::UID{number(at + 1, low + 1)});
      case 0xA:
        return array(at, depth);
      case 0xD:
        return dictionary(at, depth);
      default:
        return fail("has a value of an unknown kind");
    }
  }

  Parsed integer(std::size_t at, std::size_t size) {
    constexpr std::size_t kWidest = 8;
    if (size > kWidest) {
      if (number(at, kWidest) != 0 || bytes_[at + kWidest] >> 7 != 0)
        return fail("has an integer beyond 64 bits");
      at += kWidest;
    }
    return PropertyList(static_cast<std::int64_t>(number(at, std::min(size, kWidest))));
  }

  Parsed textOrData(std::size_t at) {
    const int kind = bytes_[at] >> 4;
    const std::uint64_t count = IOS_TRY(readCount(at));
    const std::size_t unit = kind == 0x6 ? 2 : 1;
    if (count > (offsetTable_ - at) / unit) return fail("has a string or data cut short");
    const auto content = bytes_.subspan(at, count * unit);
    if ((held_ += content.size()) > kMaximumBytes) return fail(kTooLarge);
    if (kind == 0x4) return PropertyList(Bytes(content.begin(), content.end()));
    const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
    return kind == 0x5 ? asciiText(text) : utf16Text(text);
  }

  Parsed asciiText(std::string_view text) {
    const auto ascii = [](char c) { return c != 0 && static_cast<unsigned char>(c) < 0x80; };
    if (!std::all_of(text.begin(), text.end(), ascii))
      return fail("has a string with bytes that are not characters");
    return PropertyList(std::string(text));
  }

  Parsed utf16Text(std::string_view text) {
    bool expectsLow = false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
      const unsigned unit =
          static_cast<unsigned char>(text[i]) << 8 | static_cast<unsigned char>(text[i + 1]);
      const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
      if (unit == 0 || isLow != expectsLow) return fail("has a string with units that are not characters");
      expectsLow = unit >= 0xD800 && unit <= 0xDBFF;
    }
    if (expectsLow) return fail("has a string that ends within a character");
    return PropertyList(utf8FromUTF16(text, true));
  }

  Parsed member(std::size_t reference, std::size_t depth) {
    if (++values_ > kMaximumValues) return fail(kTooMany);
    return object(number(reference, referenceSize_), depth + 1);
  }

  Parsed array(std::size_t at, std::size_t depth) {
    const std::uint64_t count = IOS_TRY(readCount(at));
    if (count > (offsetTable_ - at) / referenceSize_) return fail("has an array cut short");
    NSArray values;
    for (std::uint64_t i = 0; i < count; ++i) {
      values.push_back(IOS_TRY(member(at + i * referenceSize_, depth)));
    }
    return PropertyList(std::move(values));
  }

  Parsed dictionary(std::size_t at, std::size_t depth) {
    const std::uint64_t count = IOS_TRY(readCount(at));
    if (count > (offsetTable_ - at) / (2 * referenceSize_)) return fail("has a dictionary cut short");
    NSDictionary members;
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto key = IOS_TRY(object(number(at + i * referenceSize_, referenceSize_), depth + 1));
      if (!key.text()) return fail("has a key that is not a string");
      auto value = IOS_TRY(member(at + (count + i) * referenceSize_, depth));
      if (!members.emplace(*key.text(), std::move(value)).second)
        return fail("has a key twice in a dictionary");
    }
    return PropertyList(std::move(members));
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t offsetSize_ = 0, referenceSize_ = 0, offsetTable_ = 0;
  std::vector<bool> open_;  // the objects that the one being read is inside of
  std::size_t values_ = 0, held_ = 0;
};

}  // namespace

Parsed parseBinary(std::span<const std::uint8_t> bytes) {
  return Reader(bytes).read();
}

}  // namespace ios::plist
