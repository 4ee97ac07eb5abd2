#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "kelunits.hpp"
#include "records/fields/physicalform.hpp"
#include "records/fields/reasons.hpp"
#include "records/plan/step.hpp"

// Why the bytes of a field are no value: which byte, what stands there, and the number that the library has for it. All
// of it is told by looking at bytes, so that nothing is converted and nothing thrown for a field that is bad.
//
// What is told to be bad is refused by FieldConverter too, which asks these functions where the library is more patient
// than a picture allows; the message number is then 0. What is not told to be bad may still be.

namespace oxr::rec {

// What each byte of a code page is by itself.
struct PageBytes {
  static constexpr unsigned short kUnknown = 0xFFFF;  // a part of a character, or none

  std::array<unsigned short, 256> units{};  // code units, or kUnknown
  unsigned char blank = ' ';
  bool isWide = false;         // no character is a byte
  bool isEbcdic = false;       // digits that carry a sign have the zones C, D and F
  bool hasDoubleBytes = true;  // or more than two
};

// A number in DISPLAY usage.
struct External {
  ESign sign = eSignNone;
  bool isBlankWhenZero = false;
  bool hasLetterSigns = false;
};

FaultReason packedFault(std::span<const unsigned char> bytes, bool isSigned, SignEnd signEnd);
FaultReason unsignedPackedFault(std::span<const unsigned char> bytes);
// The field has one byte at least.
FaultReason externalFault(std::span<const unsigned char> bytes, const External& external, const PageBytes& page);

// Where the number in a padded field is: without the blanks and NULs at both ends, and those between a sign of its own
// in front and the digits.
struct Unpadded {
  std::uint32_t begin = 0;
  std::uint32_t digits = 0;  // from the second byte on; begin + 1 if nothing lies between
  std::uint32_t end = 0;     // begin, if there is nothing but padding

  std::vector<unsigned char> bytes(std::span<const unsigned char> field) const;
};
Unpadded withoutPadding(std::span<const unsigned char> field, ESign sign, unsigned char blank);

// A text of the date-time formatter's letters, against a pattern of fixed width that is made of y, M, d, D, H, m, s and
// S. Of other patterns nothing is told.
FaultReason dateFault(std::string_view pattern, UnitView text);

// The same for a field that holds one byte all over, in words that say so.
FaultReason orEmpty(FaultReason reason, std::span<const unsigned char> bytes, unsigned char blank);

// Of a field of any kind: its digits, where it is a date. `bytes` has step.size bytes.
FaultReason diagnose(const Step& step, const PhysicalForm& form, const PageBytes& page,
                     std::span<const unsigned char> bytes);

}  // namespace oxr::rec
