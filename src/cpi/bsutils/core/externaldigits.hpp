#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "core/overpunch.hpp"
#include "core/singlebyte.hpp"
#include "kelunits.hpp"

// The digits of an external decimal in a single-byte code page: the frequent field, read in one go.
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

}  // namespace oxr::core
