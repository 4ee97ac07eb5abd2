#pragma once

#include <cstdint>
#include <string>

#include "pwftypes.hpp"

namespace oxr::rec {

// How floating-point numbers (COMP-1, COMP-2) are stored.
enum class FloatForm : std::uint8_t { hexBig, hexLittle, ieeeBig, ieeeLittle };
constexpr bool isHexadecimal(FloatForm form) {
  return form == FloatForm::hexBig || form == FloatForm::hexLittle;
}

// What a number field is that holds no number, but the same byte all over.
enum class EmptyNumber : std::uint8_t { isError, isNull, isZero };

// Where a sign stands that the copybook places by default.
enum class SignEnd : std::uint8_t { asDeclared, leading, trailing };

// How fields are stored, as far as the copybook does not say.
struct PhysicalForm {
  int ccsid = 37;
  EEndian integerEndian = eEndianBig;  // of binary numbers, and of text in CCSID 1200
  // Signs that share a byte with a digit, where the code page is not EBCDIC: the letters that an EBCDIC sign turns into
  // ("{", "A" to "I", "}", "J" to "R"), or "p" to "y" for the digits of a negative number.
  bool hasLetterSigns = false;

  int nationalCcsid = 1200;  // of national fields (PIC N)
  FloatForm floats = FloatForm::hexBig;

  // Of DISPLAY and packed numbers, of edited ones that are read as numbers, and of dates; other numbers of such bytes
  // have a value.
  EmptyNumber blankNumbers = EmptyNumber::isError;  // all blanks
  EmptyNumber lowValues = EmptyNumber::isError;     // all NULs
  bool lenientNumbers = false;  // the digits of DISPLAY numbers may be padded with NULs or blanks at either end
  bool editedAsNumber = false;  // edited pictures give DECIMAL, not STRING

  SignEnd sign = SignEnd::asDeclared;        // of DISPLAY numbers
  SignEnd packedSign = SignEnd::asDeclared;  // trailing, unless "leading" is said
  // A pattern of the date-time formatter for the digits or the text of the field, which then gives an ISO date as
  // STRING. Empty: the field is no date.
  std::string date{};
  // Writing only: the sign half byte of positive packed numbers and the zone of positive DISPLAY ones with a sign that
  // shares a byte: 0xA, 0xC, 0xE or 0xF; 0 for what the library writes by itself.
  std::uint8_t plus = 0;
  bool hasEditedPlus = false;  // writing only: a "-" of an edited picture shows "+" for positive numbers

  bool operator==(const PhysicalForm&) const = default;
};

}  // namespace oxr::rec
