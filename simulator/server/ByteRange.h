#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace simulator {

/// The bytes of a file that a request asked for: `count` of them from `first` on.
struct ByteRange {
  std::uint64_t first = 0, count = 0;
  bool operator==(const ByteRange&) const = default;
};

/// What a Range header means for a file of `size` bytes.
struct RangeAnswer {
  enum class Kind {
    whole,          // no header, or one that is to be ignored: several ranges, another unit, damaged
    part,           // `range` is never empty
    unsatisfiable,  // nothing of the file is in it
  } kind = Kind::whole;
  ByteRange range;
};
RangeAnswer readRange(std::string_view header, std::uint64_t size);

}  // namespace simulator
