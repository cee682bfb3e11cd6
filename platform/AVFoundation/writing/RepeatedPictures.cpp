#include "AVFoundation/Private/RepeatedPictures.h"

#include <array>
#include <utility>

#include "AVFoundation/Private/BitStream.h"

namespace ios {
namespace {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

// Kinds of units, the low five bits of their first byte, and what the next two say of a picture
// others refer to.
constexpr int kSlice = 1, kKeySlice = 5, kSequenceParameters = 7, kPictureParameters = 8;
constexpr std::uint8_t kReference = 3 << 5;
// The encoder's only picture parameter set is number 0.
constexpr std::uint32_t kOwnParameterSet = 1;
constexpr std::uint32_t kPredictedSlices = 5;  // every slice of the picture predicts from earlier pictures

int kindOf(View unit) {
  return unit.empty() ? -1 : unit[0] & 0x1f;
}

/// The units of a byte stream, without their start codes.
std::vector<View> unitsOf(View stream) {
  std::vector<View> units;
  std::size_t start = 0;
  bool inside = false;
  for (std::size_t i = 0; i + 3 <= stream.size(); ++i) {
    if (stream[i] != 0 || stream[i + 1] != 0 || stream[i + 2] != 1) continue;
    std::size_t end = i;
    while (end > start && stream[end - 1] == 0) --end;
    if (inside) units.push_back(stream.subspan(start, end - start));
    start = i + 3;
    inside = true;
    i += 2;
  }
  if (inside) units.push_back(stream.subspan(start));
  return units;
}

/// A unit's content as it was before bytes were put in that keep start codes from appearing inside.
Bytes unescaped(View unit) {
  Bytes content;
  content.reserve(unit.size());
  int zeros = 0;
  for (const std::uint8_t byte : unit) {
    if (zeros >= 2 && byte == 3) {
      zeros = 0;
      continue;
    }
    zeros = byte == 0 ? zeros + 1 : 0;
    content.push_back(byte);
  }
  return content;
}

void appendUnit(Bytes& stream, View content) {
  stream.insert(stream.end(), {0, 0, 0, 1});
  int zeros = 0;
  for (const std::uint8_t byte : content) {
    if (zeros >= 2 && byte <= 3) {
      stream.push_back(3);
      zeros = 0;
    }
    zeros = byte == 0 ? zeros + 1 : 0;
    stream.push_back(byte);
  }
}

/// The parameters of a sequence that matter here.
struct Sequence {
  int numberBits = 0;
  std::uint32_t blocks = 0;
};

std::optional<Sequence> readSequence(View unit) {
  const Bytes content = unescaped(unit);
  BitReader reader(View(content).subspan(1));
  const std::uint32_t profile = reader.bits(8);
  reader.bits(16);  // constraints and level
  if (reader.unsignedNumber() != 0) return std::nullopt;
  if (profile == 100) {  // high; the baseline and main profiles have no such fields
    const bool usual = reader.unsignedNumber() == 1 &&                                  // 4:2:0
                       reader.unsignedNumber() == 0 && reader.unsignedNumber() == 0 &&  // 8 bits
                       reader.bits(1) == 0 && reader.bits(1) == 0;  // no lossless blocks, no scaling matrices
    if (!usual) return std::nullopt;
  } else if (profile != 66 && profile != 77) {
    return std::nullopt;
  }
  Sequence sequence;
  sequence.numberBits = static_cast<int>(reader.unsignedNumber()) + 4;
  const std::uint32_t orderKind = reader.unsignedNumber();
  reader.unsignedNumber();  // reference pictures
  reader.bits(1);           // gaps allowed
  const std::uint32_t columns = reader.unsignedNumber() + 1, rows = reader.unsignedNumber() + 1;
  const bool progressive = reader.bits(1) == 1;
  if (sequence.numberBits > 16 || orderKind != 2 || !progressive || reader.overrun()) return std::nullopt;
  sequence.blocks = columns * rows;
  return sequence;
}

/// Parameters for slices of skipped blocks: the simplest coding of numbers, and a filter that can be turned off, so
/// that the picture is the same to the last bit.
Bytes ownParameters() {
  BitWriter writer;
  writer.bits(kReference | kPictureParameters, 8);
  writer.unsignedNumber(kOwnParameterSet);
  writer.unsignedNumber(0);  // of sequence parameter set 0
  writer.bits(0, 1);         // variable-length codes
  writer.bits(0, 1);
  writer.unsignedNumber(0);  // one group of slices
  writer.unsignedNumber(0);  // one reference picture
  writer.unsignedNumber(0);
  writer.bits(0, 3);         // no weights
  writer.unsignedNumber(0);  // quantisers and their offset, all signed zeros
  writer.unsignedNumber(0);
  writer.unsignedNumber(0);
  writer.bits(1, 1);  // slices control the filter
  writer.bits(0, 2);
  writer.finish();
  return writer.bytes();
}

}  // namespace

std::optional<RepeatedPictures> RepeatedPictures::make(View headers) {
  RepeatedPictures made;
  std::optional<Sequence> sequence;
  int sequences = 0, pictures = 0;
  for (const View unit : unitsOf(headers)) {
    if (kindOf(unit) == kSequenceParameters) {
      sequence = readSequence(unit);
      ++sequences;
    } else if (kindOf(unit) == kPictureParameters) {
      ++pictures;
    }
    appendUnit(made.headers_, unescaped(unit));
  }
  if (!sequence || sequences != 1 || pictures != 1) return std::nullopt;
  appendUnit(made.headers_, ownParameters());
  made.blocks_ = sequence->blocks;
  made.numberBits_ = sequence->numberBits;
  return made;
}

std::optional<Bytes> RepeatedPictures::renumberedUnit(View unit) {
  Bytes content = unescaped(unit);
  BitReader reader(View(content).subspan(1));
  const bool whole = reader.unsignedNumber() == 0;
  reader.unsignedNumber();  // kind of slice
  if (!whole || reader.unsignedNumber() != 0 || (unit[0] & kReference) == 0) return std::nullopt;
  const std::size_t position = reader.position() + 8;
  const std::uint32_t number = reader.bits(numberBits_);
  if (reader.overrun()) return std::nullopt;
  if (kindOf(unit) == kKeySlice) inserted_ = 0;
  lastNumber_ = (number + inserted_) & ((1u << numberBits_) - 1);
  replaceBits(content, position, lastNumber_, numberBits_);
  return content;
}

std::optional<Bytes> RepeatedPictures::renumbered(View picture) {
  Bytes stream;
  stream.reserve(picture.size() + 16);
  int slices = 0;
  for (const View unit : unitsOf(picture)) {
    if (kindOf(unit) != kSlice && kindOf(unit) != kKeySlice) {
      appendUnit(stream, unescaped(unit));
      continue;
    }
    const auto content = renumberedUnit(unit);
    if (!content || ++slices > 1) return std::nullopt;
    appendUnit(stream, *content);
  }
  if (slices != 1) return std::nullopt;
  return stream;
}

Bytes RepeatedPictures::repeated() {
  lastNumber_ = (lastNumber_ + 1) & ((1u << numberBits_) - 1);
  ++inserted_;
  BitWriter writer;
  writer.bits(kReference | kSlice, 8);
  writer.unsignedNumber(0);  // from the first block on
  writer.unsignedNumber(kPredictedSlices);
  writer.unsignedNumber(kOwnParameterSet);
  writer.bits(lastNumber_, numberBits_);
  writer.bits(0, 1);         // as many references as usual
  writer.bits(0, 1);         // in their usual order
  writer.bits(0, 1);         // replacing the oldest
  writer.unsignedNumber(0);  // usual quantiser
  writer.unsignedNumber(1);  // filter off
  writer.unsignedNumber(blocks_);
  writer.finish();
  Bytes stream;
  appendUnit(stream, writer.bytes());
  return stream;
}

}  // namespace ios
