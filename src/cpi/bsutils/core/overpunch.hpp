#pragma once

#include <array>
#include <cstdint>

// Included signs of external decimals: one byte of the field holds a digit and the sign of the number.
//
//            code            digit 0..9 positive           digit 0..9 negative
//   ebcdic   EBCDIC pages    F0..F9, or C0..C9             D0..D9
//   ascii    all others      30..39                        70..79 (p to y)
//   letters  all others      { A B C D E F G H I           } J K L M N O P Q R
namespace oxr::core {

enum class Overpunch { ebcdic, ascii, letters };

// What a sign byte reads as.
struct SignByte {
  std::uint8_t digit = 0;  // the byte of the plain digit, where the sign byte holds one
  bool negative = false;
  bool valid = true;
};

// The zone alone counts in the first two codes: what the other half holds is for the check of the digits to refuse.
constexpr SignByte readOverpunch(Overpunch code, std::uint8_t byte) {
  const unsigned zone = byte >> 4;
  switch (code) {
    case Overpunch::ebcdic:
      if (zone != 0xC && zone != 0xD && zone != 0xF) return {byte, false, false};
      return {static_cast<std::uint8_t>(byte | 0xF0), zone == 0xD};
    case Overpunch::ascii:
      return zone == 7 ? SignByte{static_cast<std::uint8_t>(byte & 0x3F), true} : SignByte{byte};
    case Overpunch::letters:
      break;
  }
  if (byte == 0x7B || byte == 0x7D) return {0x30, byte == 0x7D};
  if (byte >= 0x41 && byte <= 0x49) return {static_cast<std::uint8_t>((byte - 0x40) | 0x30), false};
  if (byte >= 0x4A && byte <= 0x52) return {static_cast<std::uint8_t>((byte - 0x49) | 0x30), true};
  return {byte, false, false};
}

// The byte of a plain digit with the sign in it. `positiveZone`: EBCDIC's C for plus, too, where F would say it as
// well. What is no digit is changed alike.
constexpr std::uint8_t writeOverpunch(Overpunch code, std::uint8_t byte, bool negative, bool positiveZone) {
  switch (code) {
    case Overpunch::ebcdic:
      if (negative) return byte & 0xDF;
      return positiveZone ? byte & 0xCF : byte;
    case Overpunch::ascii:
      return negative ? byte | 0x70 : byte;
    case Overpunch::letters:
      break;
  }
  if (byte == 0x30) return negative ? 0x7D : 0x7B;
  return static_cast<std::uint8_t>(byte + (negative ? 0x19 : 0x10));
}

}  // namespace oxr::core
