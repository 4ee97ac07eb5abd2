#pragma once

#include <unicode/uchar.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "pwftypes.hpp"

// Date-times as a row of binary integers, by a pattern such as "yyyy-1900MMdd": a letter names a field and counts its
// bytes, and after it may stand what is to be added to what is read. The example is a year of four bytes that counts
// from 1900, a month and a day of two each.
namespace oxr::core {

// A field of a pattern.
struct BinaryField {
  int count;  // bytes
  unsigned short letter;
  int adjustment;  // is added on reading and subtracted on writing
};

// The letters, in the order of the fields, and filler bytes at the end.
inline constexpr char kBinaryLetters[] = "yMdHmsSX";
inline constexpr int kFillerIndex = 7;
inline constexpr PWFInt32 PWFDateTime::*kBinaryFields[kFillerIndex] = {
    &PWFDateTime::_year,   &PWFDateTime::_month,  &PWFDateTime::_day,       &PWFDateTime::_hour,
    &PWFDateTime::_minute, &PWFDateTime::_second, &PWFDateTime::_subsecond,
};

// Gives the place of a letter among kBinaryLetters; -1 for what is none.
inline int binaryFieldIndex(unsigned short letter) {
  static constexpr std::array<std::int8_t, 128> kIndices = [] {
    std::array<std::int8_t, 128> indices;
    indices.fill(-1);
    for (int i = 0; i <= kFillerIndex; ++i)
      indices[static_cast<unsigned char>(kBinaryLetters[i])] = static_cast<std::int8_t>(i);
    return indices;
  }();
  return letter < kIndices.size() ? kIndices[letter] : -1;
}

// Addition and subtraction that wrap, since a pattern may hold any number.
inline int wrappingAdd(int left, int right) {
  return static_cast<int>(static_cast<unsigned>(left) + static_cast<unsigned>(right));
}
inline int wrappingSubtract(int left, int right) {
  return static_cast<int>(static_cast<unsigned>(left) - static_cast<unsigned>(right));
}

// Calls `useField(BinaryField)` for each field of a zero-terminated pattern. An adjustment wraps in 32 bits. `Letter`
// is the type that the present letter is held in: one of 8 bits begins a field with the low half of any unit, and goes
// on with it only for units up to 255.
template <class Letter, class UseField>
void scanBinaryPattern(const unsigned short* pattern, UseField useField) {
  Letter letter = 0;
  int count = 0;
  unsigned adjustment = 0;
  bool isNegative = false, isInNumber = false;
  const auto endField = [&] {
    useField(BinaryField{count, letter, static_cast<int>(isNegative ? 0 - adjustment : adjustment)});
  };
  for (; *pattern != 0; ++pattern) {
    const unsigned short unit = *pattern;
    if (isInNumber) {
      if (u_isdigit(unit)) {
        adjustment = adjustment * 10 + static_cast<unsigned>(u_charDigitValue(unit));
        continue;
      }
      // The letter after its own adjustment ends that and does not count: BinaryDateTimes.Scanner.
      isInNumber = false;
      if (unit == letter) continue;
    } else if (unit == letter) {
      ++count;
      continue;
    } else if (unit == '-' || unit == '+') {
      if (unit == '-') isNegative = true;
      isInNumber = true;
      continue;
    }
    if (count != 0) {
      endField();
      isNegative = false;
      adjustment = 0;
    }
    letter = static_cast<Letter>(unit);
    count = 1;
  }
  if (count != 0) endField();
}

// Tells whether a field can have so many bytes.
inline bool isBinarySize(int count) {
  return count == 1 || count == 2 || count == 4;
}

// Read a signed integer of `count` bytes in the machine's order, and write the low bytes of one. REQUIRES:
// isBinarySize.
inline int readSigned(const unsigned char* bytes, int count) {
  const auto read = [bytes]<class Integer>(Integer integer) -> int {
    std::memcpy(&integer, bytes, sizeof integer);
    return integer;
  };
  return count == 1 ? read(std::int8_t{}) : count == 2 ? read(std::int16_t{}) : read(std::int32_t{});
}
inline void writeLow(int value, unsigned char* bytes, int count) {
  const auto write = [bytes](auto integer) { std::memcpy(bytes, &integer, sizeof integer); };
  if (count == 1)
    write(static_cast<std::int8_t>(value));
  else if (count == 2)
    write(static_cast<std::int16_t>(value));
  else
    write(value);
}

// Brings a date-time with fields out of range to the one that they carry over to: seconds, minutes and hours carry
// upwards only and stay as they are below 0, months and days carry both ways. The year wraps in 32 bits.
void carryOver(PWFDateTime& value);

}  // namespace oxr::core
