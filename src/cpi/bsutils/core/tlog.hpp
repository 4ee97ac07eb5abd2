#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "kelunits.hpp"

// Fields of transaction logs: half bytes, the high one of a byte first. Unlike a packed decimal, such a field has its
// sign before the digits, and it ends where its bytes end.
//
//   string     12 AF      "12AF"   hexadecimal digits
//   decimal    12 34      "1234"   digits
//              D1 23      "-123"   a minus, then digits
//              F1 23      "123"    a filler, so that the digits fill whole bytes
//              FD 12      "-12"    a filler and a minus
namespace oxr::core {

inline constexpr unsigned kTlogMinus = 0xD;
inline constexpr unsigned kTlogFiller = 0xF;

// What stands before the digits of a decimal.
struct TlogSign {
  bool negative;
  std::uint32_t halfBytes;  // minus and filler together
};
// By the first byte alone. A minus or filler in another place is not looked for here: it is no digit.
constexpr TlogSign tlogSign(unsigned firstByte) {
  const unsigned first = firstByte >> 4;
  if (first == kTlogMinus) return {true, 1};
  if (first != kTlogFiller) return {false, 0};
  return (firstByte & 0x0F) == kTlogMinus ? TlogSign{true, 2} : TlogSign{false, 1};
}
static_assert(tlogSign(0xFD).negative && tlogSign(0xFD).halfBytes == 2);
static_assert(tlogSign(0xDD).halfBytes == 1 && tlogSign(0xFF).halfBytes == 1 && tlogSign(0x1D).halfBytes == 0);

// A view of a field that shows the normal order whichever way it is stored.
//
// The texts go to a buffer of textRoom() units: they are written in whole steps, of which the last may end after the
// text.
class TlogField {
 public:
  TlogField(std::span<const unsigned char> bytes, bool reversed) : bytes_(bytes), reversed_(reversed) {}

  std::size_t textRoom() const { return (bytes_.size() + kStep - 1) / kStep * (2 * kStep); }
  // One character, "0" to "9" and "A" to "F", a half byte.
  UnitView hexText(unsigned short* buffer) const;
  // Digits, after "-" where the field is negative; nothing for any other half byte that is no digit. Zeros stay, and a
  // field without digits gives none. The text need not begin with the first unit of the buffer.
  std::optional<UnitView> decimalText(unsigned short* buffer) const;

 private:
  static constexpr std::size_t kStep = 8;  // bytes

  template <class Visit>
  void visitWords(Visit visit) const;

  std::span<const unsigned char> bytes_;
  bool reversed_;
};

enum class TlogFault { none, fieldTooSmall, notADigit };

// Writes decimal text (an optional sign, digits) into a field, in normal order. In the variable form the digits and
// what stands before them are to fill the field; in the fixed form zeros lead.
// What is counted in the fixed form is the text and where its first digit stands, so that after a "+" or a leading zero
// the last byte may lack its place: its digits are then dropped, and where not even the first digit has a place the
// field counts as too small. A text with no digit at all counts as one digit that is none:
// Tlog.WritesDecimals.
TlogFault packTlogDecimal(UnitView text, std::span<unsigned char> field, bool fixed);

// What a byte counts as in a string: the ASCII letters "A" to "F" and "a" to "f" as 10 to 15, any other byte as its low
// four bits.
inline constexpr std::array<unsigned char, 256> kTlogHalfBytes = [] {
  std::array<unsigned char, 256> halfBytes{};
  for (unsigned byte = 0; byte < halfBytes.size(); ++byte) {
    const unsigned letter = byte & ~0x20u;
    const bool isHexLetter = letter >= 'A' && letter <= 'F';
    halfBytes[byte] = static_cast<unsigned char>(isHexLetter ? letter - 'A' + 10 : byte & 0x0F);
  }
  return halfBytes;
}();
static_assert(kTlogHalfBytes['f'] == 15 && kTlogHalfBytes['A'] == 10 && kTlogHalfBytes['7'] == 7);
static_assert(kTlogHalfBytes['G'] == 7 && kTlogHalfBytes[0xC1] == 1 && kTlogHalfBytes[0] == 0);

// Fills a field with two characters a byte. REQUIRES: characters.size() == 2 * field.size().
void packTlogString(std::span<const unsigned char> characters, std::span<unsigned char> field);

}  // namespace oxr::core
