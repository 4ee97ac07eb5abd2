#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "core/externaloverpunch.hpp"
#include "core/externalword.hpp"
#include "core/singlebyte.hpp"
#include "kelunits.hpp"

// External decimals in code pages with a byte for each character: the number as digits, without its sign and the pads
// of its field, and back. What stands in a field is, from its front to its end:
//
//   [separate sign] [pads] digits [pads] [separate sign]
//
// with pads on one side at most, the sign on one side at most, and an included sign in the first byte or the last.
namespace oxr::core {

enum class SignPlace { none, firstByte, lastByte, leading, trailing };
enum class PadPlace { none, trailing, leading };

// Whether the sign takes a byte of its own.
constexpr bool isSeparate(SignPlace sign) {
  return sign >= SignPlace::leading;
}
// Whether a byte of the field holds the sign together with a digit.
constexpr bool isIncluded(SignPlace sign) {
  return sign == SignPlace::firstByte || sign == SignPlace::lastByte;
}
// Whether the sign is in the first byte of the field, included or not; otherwise it is in the last one, if at all.
constexpr bool isInFront(SignPlace sign) {
  return sign == SignPlace::firstByte || sign == SignPlace::leading;
}

// How a field is read.
struct ExternalLayout {
  const SingleByteTable& page;
  Overpunch code;  // of an included sign
  SignPlace sign;
  PadPlace pads;
  unsigned short pad;  // code unit
};

inline constexpr std::size_t kMaxExternalBytes = 64;
using ExternalUnits = std::array<unsigned short, kMaxExternalBytes>;

// The number without its sign and pads.
struct ExternalDigits {
  bool negative = false;
  // Into the units handed in, or "0" where there are pads and nothing else. Empty for a field that holds more than
  // pads, digits and a sign.
  UnitView digits;
};

// Reads a field of 1 to kMaxExternalBytes bytes.
ExternalDigits readExternal(std::span<const unsigned char> field, const ExternalLayout& layout, ExternalUnits& units);

// How a field is written: what the code page makes of its characters, and where they go.
struct ExternalOutput {
  unsigned char zero;  // the byte of the digit 0; those of the others follow it
  unsigned char plus;
  unsigned char minus;
  unsigned char pad;
  Overpunch code;     // of an included sign
  bool positiveZone;  // see writeOverpunch()
  SignPlace sign;
  bool padsTrailing;

  // How many digits a field of `size` bytes, at least one, has room for.
  constexpr std::size_t room(std::size_t size) const { return size - isSeparate(sign); }
};

// Puts the sign into a field that has its digits and pads. An included sign falls on a pad where the number is short of
// digits on that side: ExternalDecimal.Writes.
[[gnu::always_inline]] inline void writeSign(bool negative, const ExternalOutput& output,
                                             std::span<unsigned char> field) {
  if (output.sign == SignPlace::none) return;
  unsigned char& carrier = isInFront(output.sign) ? field.front() : field.back();
  if (isSeparate(output.sign))
    carrier = negative ? output.minus : output.plus;
  else
    carrier = writeOverpunch(output.code, carrier, negative, output.positiveZone);
}

// Fills a field. REQUIRES: at least one digit, and room for all of them.
inline void writeExternal(UnitView digits, bool negative, const ExternalOutput& output,
                          std::span<unsigned char> field) {
  const std::size_t pads = output.room(field.size()) - digits.size();
  unsigned char* out = field.data() + (output.sign == SignPlace::leading);
  if (!output.padsTrailing) out = std::fill_n(out, pads, output.pad);
  for (const unsigned short digit : digits)
    *out++ = static_cast<unsigned char>(output.zero + (digit - '0'));
  if (output.padsTrailing) std::fill_n(out, pads, output.pad);
  writeSign(negative, output, field);
}

// The same for up to 16 digits as half bytes, the last one lowest, and a field of up to 16 bytes whose pads, if any,
// precede the digits. Leading zeros of the number are no digits. False, and nothing written, where the digits are too
// many.
[[gnu::always_inline]] inline bool writeShortExternal(std::uint64_t digits, bool negative, const ExternalOutput& output,
                                                      std::span<unsigned char> field) {
  const std::size_t count = significantDigits(digits);
  const std::size_t room = output.room(field.size());
  if (count > room) return false;
  unsigned char* const start = field.data() + (output.sign == SignPlace::leading);
  writeDigitBytes(digits, output.zero, start, static_cast<std::uint32_t>(room));
  if (output.pad != output.zero) std::fill_n(start, room - count, output.pad);
  if (output.sign == SignPlace::lastByte) {
    // Always a digit, and at hand: reading it back would wait for what has just been written.
    const auto last = static_cast<unsigned char>(output.zero + (digits & 0x0F));
    field.back() = writeOverpunch(output.code, last, negative, output.positiveZone);
  } else {
    writeSign(negative, output, field);
  }
  return true;
}

}  // namespace oxr::core
