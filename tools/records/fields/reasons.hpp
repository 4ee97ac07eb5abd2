#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "kelunits.hpp"
#include "records/layout.hpp"

namespace oxr::rec {

// Why a field cannot be read, or a record does not fit its layout. `numbers` are what the text tells of.
enum class FaultCode : std::uint8_t {
  none,
  library,       // a conversion refused the field; `detail` is what it said
  recordEnds,    // the record ends after numbers[0] bytes, before the field does
  recordLonger,  // the record has numbers[0] bytes, numbers[1] more than its layout
  badCount,      // the count is numbers[0], not within numbers[1] and numbers[2] as the array `other` asks
  noCount,       // the array's count is not known
  noKind,        // no condition tells what the record, or the area that the field belongs to, holds

  // Of the bytes of a field. numbers[0] is the place of the first bad one, from 0, numbers[1] what stands there, and
  // numbers[2] its character as a code unit, 0 if it has none.
  blanks,               // all over
  lowValues,            // NULs all over
  padded,               // digits that would be good without the blanks or NULs around them
  packedDigit,          // numbers[1] is a half byte that is no digit
  packedSign,           // numbers[1] is a half byte that is no sign
  packedMinus,          // numbers[1] is the half byte of a minus where the picture has no sign
  unsignedPackedDigit,  // numbers[1] is a half byte that is no digit, where no sign is
  externalDigit,        // no digit
  externalSign,         // neither a digit nor a digit with a sign
  letterSign,           // the same, which would be one with --ascii-signs letters
  plainSign,            // the same, which would be one with --ascii-signs plain
  separateSign,         // neither "+" nor "-"
  onlySign,             // there is no digit beside the sign
  unaskedSign,          // a sign, or a digit with one, where the picture has no sign
  editedCharacter,      // nothing that stands in an edited number
  editedEmpty,          // an edited number without a digit

  // Of values.
  notANumber,       // a float that is NaN
  infinite,         // a float that is infinite
  belowNormal,      // a hexadecimal float smaller than any whose fraction begins with no zero, and not zero
  numberText,       // what it reads, in `detail`, is no number
  singleBytesOnly,  // the code page numbers[0] has no double-byte characters
  negativeDate,     // a number below zero is no date
  dateText,         // what it reads, and its pattern, in `detail`
  dateLength,       // numbers[0] characters, and the pattern has numbers[1]
  dateCharacter,    // the character at numbers[0], from 0, is numbers[2], which the pattern has not there
  datePart,         // what the letter numbers[0] of the pattern stands for has no value numbers[1]
  dateDay,          // the month numbers[0] has no day numbers[1] in that year
};

// A text in quotes, as far as a line of a message shows it.
std::string quotedText(UnitView text);

struct FaultReason {
  FaultCode code = FaultCode::none;
  int message = 0;  // number in the message catalogue, such as 5505; 0 if no conversion would tell of the fault
  std::array<std::int64_t, 3> numbers{};
  ItemIndex other = kNoItem;
  std::string detail{};

  // Whether something is wrong.
  explicit operator bool() const { return code != FaultCode::none; }

  // What differs from no field to the next: "not a packed decimal".
  std::string kind() const;
  // All of it, of a field of `size` bytes: "not a packed decimal: half byte A in byte 2 of 4 (OXR5505)". A count's
  // bounds are told without the array that has them.
  std::string text(std::size_t size) const;
  // The first byte that is not what it should be, if one can be told.
  std::optional<std::uint32_t> badByte() const;
};

}  // namespace oxr::rec
