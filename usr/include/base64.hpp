#pragma once

#include <array>

#include "pwfdata.hpp"

// Base64 between bytes and UTF-16 text: four characters of the standard alphabet ("A" to "Z", "a" to "z", "0" to "9",
// "+", "/") for three bytes, "=" in the places that a short last group leaves empty.
//
// Text is written without line ends. It is read leniently: units outside the alphabet, such as line ends, are skipped
// wherever they stand, and nothing after a padded group is looked at.
//
// All members are static and hold no state: any thread may call at any time.
//
// Example:
//   KelWstring text;
//   CPBase64Converter::binToBase64(bytes, 2, text);                                        // "AB": appends "QUI="
//   PWFData data = CPBase64Converter::binFromBase64(text.characters(), int(text.length()));  // 2 bytes, "AB"
class OXR_EXPORT CPBase64Converter {
 public:
  CPBase64Converter() = delete;

  // The unit of each 6-bit value.
  static const std::array<unsigned short, 64>& encodeTable;
  // The value of each unit: 0 to 63, 0 for "=" too, and 128 for a unit outside the alphabet.
  static const std::array<unsigned char, 0x10000>& decodeTable;

  // The tables are ready before any code runs, so that these have nothing left to do. They stay for callers that ask
  // for a table before they first use it.
  static void initEncodeTable() noexcept {}
  static void initDecodeTable() noexcept {}

  // Appends the text of `length` bytes at `data` to `target`: 4 units for each 3 bytes and for what is left of them.
  // A length of 0 or below leaves `target` as it is. `data` must not lie in `target`.
  static void binToBase64(const unsigned char* data, int length, KelWstring& target);

  // The bytes that `length` units at `text` stand for, as a BINARY value that owns them. Text without any unit of the
  // alphabet, or of a length of 0 or below, gives an empty value that is not null.
  //
  // "=" pads a group as its third or fourth unit and ends the text; before that it counts as an "A".
  //
  // Raises KelConversionException 0xC000157E (OXR5502) with the insert "Input data incomplete" when the text ends
  // inside a group of four.
  static PWFData binFromBase64(const unsigned short* text, int length);
};
