#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "kelunits.hpp"
#include "pwftypes.hpp"

// Numbers that machine integers and the shapes of DataCnv do not cover, as pure functions over bytes and text.

namespace oxr::rec {

// A binary integer of 1 to 16 bytes.
struct WideInteger {
  bool isNegative = false;
  std::string digits;  // without leading zeros; "0"
};
WideInteger readWideInteger(std::span<const unsigned char> bytes, EEndian endian, bool isSigned);

// An edited number without what only people need: blanks, "*", currency signs, "," and "/" go, "-", "CR" and "DB"
// before or after the digits make it negative. Nothing for other text, of which `badAt` gets the first unit that is the
// reason, and for text without a digit.
struct EditedNumber {
  bool isNegative = false;
  std::string digits;                 // with leading zeros, without the point
  std::optional<std::size_t> places;  // digits after the point, if there is one
};
std::optional<EditedNumber> readEditedNumber(UnitView text, std::size_t* badAt = nullptr);

// The double whose shortest digits are those of the float, if the value is a float: 322.93652 for 322.9365234375.
double withDigitsOfFloat(double value);

}  // namespace oxr::rec
