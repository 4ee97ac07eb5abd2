#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "kelunits.hpp"

// Numbers read from text.
namespace oxr::core {

// An integer of digits "0" to "9" behind an optional sign. Without digits it is 0.
struct IntegerReading {
  enum class Fault : std::uint8_t { none, noDigit, outOfBounds };  // whichever comes first in the text

  std::int64_t value = 0;
  Fault fault = Fault::none;
};
IntegerReading readInteger(UnitView text);

// Whether digits number fewer than those of a limit, or as many and sort no higher, unit by unit. Zeros in front count.
bool isWithin(UnitView digits, std::string_view limit);

// The sum of the digits' values times their places, modulo 2^64. A unit's value is what it is above "0", which for a
// digit of another script is no digit at all.
std::uint64_t sumOfDigits(UnitView digits);

// The double of a plain text, correctly rounded: an optional "-", digits with an optional point, an optional exponent,
// all in ASCII. Nothing for any other text, and for those that other readers of numbers may see otherwise: what over-
// or underflows, a zero with an exponent, more than 64 units.
std::optional<double> readPlainDouble(UnitView text);

}  // namespace oxr::core
