#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "core/overpunch.hpp"
#include "core/singlebyte.hpp"
#include "kelunits.hpp"

// The digits of an external decimal, a byte each: the frequent field, read and written in one go.
namespace oxr::core {

enum class SignPlace { none, firstDigit, lastDigit, front, behind };
enum class PadPlace { none, front, behind };

// How a field is laid out.
struct ExternalLayout {
  const SingleByteTable& page;
  Overpunch code;  // of a sign that a digit carries
  SignPlace sign;
  PadPlace pads;
  unsigned short pad;  // code unit
};

inline constexpr std::size_t kMaxExternalBytes = 64;
using ExternalUnits = std::array<unsigned short, kMaxExternalBytes>;

// The number without its sign and pads.
struct ExternalDigits {
  bool negative = false;
  // Into the units handed in, or "0" where pads are all there is. Empty for a field that holds more than pads, digits
  // and a sign.
  UnitView digits;
};

// Reads a field of 1 to kMaxExternalBytes bytes. What comes out empty is for the general way to read or to refuse.
ExternalDigits externalDigits(std::span<const unsigned char> field, const ExternalLayout& layout, ExternalUnits& units);

// How a field is written: what the code page makes of its characters, and where they go.
struct ExternalOutput {
  unsigned char zero;  // the other digits follow it
  unsigned char plus;
  unsigned char minus;
  unsigned char pad;
  Overpunch code;
  bool positiveZone;  // see writeOverpunch
  SignPlace sign;
  bool padsBehind;
};

// Whether a digit does not carry it: it takes a byte of its own.
constexpr bool isSeparate(SignPlace sign) {
  return sign == SignPlace::front || sign == SignPlace::behind;
}

// Fills a field with digits, the sign and pads, the pads next to the digits.
// REQUIRES: room for digits and sign, at least one byte.
inline void writeExternal(UnitView digits, bool negative, const ExternalOutput& output,
                          std::span<unsigned char> field) {
  const std::size_t pads = field.size() - digits.size() - (isSeparate(output.sign) ? 1 : 0);
  const unsigned char sign = negative ? output.minus : output.plus;
  unsigned char* out = field.data();
  if (output.sign == SignPlace::front) *out++ = sign;
  if (!output.padsBehind) out = std::fill_n(out, pads, output.pad);
  for (const unsigned short digit : digits)
    *out++ = static_cast<unsigned char>(output.zero + (digit - '0'));
  if (output.padsBehind) out = std::fill_n(out, pads, output.pad);
  if (output.sign == SignPlace::behind) *out = sign;
  // Short of digits the sign falls on a pad here, too: ExternalDecimal.Writes.
  if (output.sign == SignPlace::firstDigit || output.sign == SignPlace::lastDigit) {
    unsigned char& carrier = output.sign == SignPlace::firstDigit ? field.front() : field.back();
    carrier = writeOverpunch(output.code, carrier, negative, output.positiveZone);
  }
}

}  // namespace oxr::core
