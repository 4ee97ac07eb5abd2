#pragma once

#include <cstdint>
#include <optional>

#include "records/framing/recordform.hpp"

// The headers of records and blocks as data, for all who read, write or look for them.

namespace oxr::rec {

// A length in front of a record. The bytes of the header that are not of the length are zero, but for the third one
// of `spanned`.
struct HeaderShape {
  std::uint8_t bytes = 0;
  std::uint8_t lengthAt = 0;  // the first byte of the length
  std::uint8_t lengthBytes = 0;
  bool isBig = true;          // its most significant byte comes first
  bool countsHeader = false;  // if nobody says otherwise
};

constexpr HeaderShape headerShape(Framing framing) {
  switch (framing) {
    case Framing::rdw:
    case Framing::bdw:
    case Framing::spanned:
      return {4, 0, 2, true, true};
    case Framing::rdwLittle:
      return {4, 2, 2, false, true};
    case Framing::length2:
      return {2, 0, 2, true, false};
    case Framing::length2Little:
      return {2, 0, 2, false, false};
    case Framing::length4:
      return {4, 0, 4, true, false};
    case Framing::length4Little:
      return {4, 0, 4, false, false};
    default:
      return {};
  }
}

constexpr bool isBlocked(Framing framing) {
  return framing == Framing::bdw || framing == Framing::spanned;
}

// Bytes by which a length in front is larger than what follows the header.
constexpr std::uint32_t countedHeader(const RecordForm& form) {
  const HeaderShape shape = headerShape(form.framing);
  return form.countsHeader.value_or(shape.countsHeader) ? shape.bytes : 0;
}

// The length as it stands there.
inline std::uint32_t lengthIn(const HeaderShape& shape, const unsigned char* header) {
  const unsigned char* const at = header + shape.lengthAt;
  if (shape.lengthBytes == 2) return shape.isBig ? at[0] << 8 | at[1] : at[1] << 8 | at[0];
  const std::uint32_t high = shape.isBig ? at[0] << 8 | at[1] : at[3] << 8 | at[2];
  const std::uint32_t low = shape.isBig ? at[2] << 8 | at[3] : at[1] << 8 | at[0];
  return high << 16 | low;
}

// The other two bytes of a header of four with a length of two, the first one above; 0 where there are none.
inline std::uint32_t restOf(const HeaderShape& shape, const unsigned char* header) {
  if (shape.bytes == shape.lengthBytes) return 0;
  const unsigned char* const rest = header + (2 - shape.lengthAt);
  return static_cast<std::uint32_t>(rest[0] << 8 | rest[1]);
}

// A block's header has the form of `rdw`, or, for a block that is too long for it, the highest bit set and the length
// in the 31 bits below.
inline constexpr std::uint32_t kBlockHeaderBytes = 4;
inline constexpr unsigned char kLongBlock = 0x80;

// The length as it stands there; nothing if no block begins so.
inline std::optional<std::uint32_t> blockLengthIn(const unsigned char* header) {
  constexpr HeaderShape kLong = headerShape(Framing::length4);
  if ((header[0] & kLongBlock) != 0) return lengthIn(kLong, header) & 0x7FFFFFFFU;
  if ((header[2] | header[3]) != 0) return std::nullopt;
  return lengthIn(headerShape(Framing::rdw), header);
}

// The third byte of a header of `spanned`.
enum class Segment : std::uint8_t { whole, first, last, middle };
inline constexpr std::uint32_t kHighestSegment = 3;

}  // namespace oxr::rec
