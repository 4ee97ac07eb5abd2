#pragma once

#include <array>
#include <cstdint>

// Included signs of external decimals: one byte of the field holds a digit and, in its upper half, the sign of the
// whole number. Three codes say how:
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
  if (code == Overpunch::ebcdic) {
    if (zone != 0xC && zone != 0xD && zone != 0xF) return {byte, false, false};
    return {static_cast<std::uint8_t>(byte | 0xF0), zone == 0xD};
  }
  if (code == Overpunch::ascii)
    return zone == 7 ? SignByte{static_cast<std::uint8_t>(byte & 0x3F), true} : SignByte{byte};
  if (byte == '{' || byte == '}') return {'0', byte == '}'};
  if (byte >= 'A' && byte <= 'I') return {static_cast<std::uint8_t>(byte - 'A' + '1'), false};
  if (byte >= 'J' && byte <= 'R') return {static_cast<std::uint8_t>(byte - 'J' + '1'), true};
  return {byte, false, false};
}

// The byte of a plain digit with the sign in it. `positiveZone` asks for EBCDIC's C as the zone of a plus, which F says
// as well. A byte that is no digit is changed by the same bits, for a sign may fall on a pad.
[[gnu::always_inline]] constexpr std::uint8_t writeOverpunch(Overpunch code, std::uint8_t byte, bool negative,
                                                             bool positiveZone) {
  // Which numbers are negative can't be foreseen, so that no branch depends on it.
  if (code == Overpunch::ebcdic)
    return static_cast<std::uint8_t>(byte & ~(negative * 0x20u | (!negative & positiveZone) * 0x30u));
  if (code == Overpunch::ascii) return static_cast<std::uint8_t>(byte | negative * 0x70u);
  if (byte == '0') return negative ? '}' : '{';
  return static_cast<std::uint8_t>(byte + (negative ? 'J' - '1' : 'A' - '1'));
}

static_assert('{' == 0x7B && '}' == 0x7D && 'A' == 0x41 && 'J' == 0x4A, "bytes of the field, not of this source");
static_assert(readOverpunch(Overpunch::letters, writeOverpunch(Overpunch::letters, '7', true, false)).digit == '7');

}  // namespace oxr::core
