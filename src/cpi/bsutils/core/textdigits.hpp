#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/digitvectors.hpp"
#include "core/packedfield.hpp"
#include "core/textstart.hpp"

// Digits of text in a register, sixteen or thirty-two units at once and without a branch on any of them: what a
// processor can't foresee in real files, the length of a number and its digits, costs it nothing here.
//
//   "-12.5"   less the sign, each unit as a digit or 15   01 02 0F 05 0F .. ..
//             as half bytes, the first uppermost           1  2  F  5  F  ?  ?
//
// A half byte above 9 is a unit that is no digit, and counting leading zero bits finds the first one. Shifts then cut
// and join what lies before and after the point.
namespace oxr::core {

__extension__ using LongWord = unsigned __int128;  // 32 half bytes

// Eight units, each with its digit in the lower byte; 15 there for a unit that is none. Machines compare vectors with a
// sign: so "0" comes to lie at the least number, and every unit that is no digit above its "9".
inline UnitVector digitsOfEight(UnitVector units) {
  using SignedVector [[gnu::vector_size(16)]] = short;
  constexpr short kLeast = std::numeric_limits<short>::min();
  constexpr auto kOffset = static_cast<unsigned short>(kLeast - '0');
  constexpr short kNoDigit = kLeast + 15;
  const auto shifted = std::bit_cast<SignedVector>(units + kOffset);
  // unreached: a choice in each unit is no branch
  return std::bit_cast<UnitVector>(shifted < kNoDigit ? shifted : SignedVector{} + kNoDigit);
}

// The lower bytes of sixteen units.
inline ByteVector lowerBytes(UnitVector first, UnitVector last) {
  return __builtin_shufflevector(std::bit_cast<ByteVector>(first), std::bit_cast<ByteVector>(last), 0, 2, 4, 6, 8, 10,
                                 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}

// Sixteen units as half bytes, the first uppermost; 10 to 15 for a unit that is no digit.
inline std::uint64_t halfBytesOfSixteen(UnitVector first, UnitVector last) {
  const auto pairs = std::bit_cast<UnitVector>(lowerBytes(digitsOfEight(first), digitsOfEight(last)));
  const UnitVector joined = pairs << 4 | pairs >> 8;
  const ByteVector bytes = lowerBytes(joined, joined);
  std::uint64_t halfBytes;
  std::memcpy(&halfBytes, &bytes, sizeof halfBytes);
  return __builtin_bswap64(halfBytes);
}

// A word full of half bytes: of 16 units, or of 32.
template <class Word>
struct HalfBytes;

template <>
struct HalfBytes<std::uint64_t> {
  static std::uint64_t of(const TextStart<2>& text) { return halfBytesOfSixteen(text[0], text[1]); }
  static std::uint64_t others(std::uint64_t word) { return nonDigitHalfBytes(word); }
  static std::uint32_t leadingZeros(std::uint64_t word) { return static_cast<std::uint32_t>(std::countl_zero(word)); }
};
template <>
struct HalfBytes<LongWord> {
  static LongWord join(std::uint64_t high, std::uint64_t low) { return LongWord{high} << 64 | low; }
  static LongWord of(const TextStart<4>& text) {
    return join(halfBytesOfSixteen(text[0], text[1]), halfBytesOfSixteen(text[2], text[3]));
  }
  static LongWord others(LongWord word) {
    return join(nonDigitHalfBytes(static_cast<std::uint64_t>(word >> 64)),
                nonDigitHalfBytes(static_cast<std::uint64_t>(word)));
  }
  static std::uint32_t leadingZeros(LongWord word) {
    const auto high = static_cast<std::uint64_t>(word >> 64);
    return static_cast<std::uint32_t>(high != 0 ? std::countl_zero(high)
                                                : 64 + std::countl_zero(static_cast<std::uint64_t>(word)));
  }
};

inline std::uint64_t halfBytesOf(UnitView text) {
  return HalfBytes<std::uint64_t>::of(textStart<2>(text));
}

// Steps over the sign of a number.
inline const unsigned short* afterSign(const unsigned short* text, bool& negative) {
  negative = *text == '-';
  return text + (negative | (*text == '+'));
}

// A number without its sign, whose first units are in registers; see wholeDigits().
template <class Word, class Start>
[[gnu::always_inline]] inline bool wholeDigitsOf(const unsigned short* text, const Start& start, std::uint32_t places,
                                                 Word& digits) {
  constexpr std::uint32_t kBits = 8 * sizeof(Word);
  using Halves = HalfBytes<Word>;
  const Word word = Halves::of(start);
  const Word others = Halves::others(word);
  // Positions are counted in bits from the top, four a unit.
  const std::uint32_t whole = Halves::leadingZeros(others);
  if (others == 0 || whole + 4 * places > kBits - 4) return false;
  digits = word >> 4 >> (kBits - 4 - whole) << 4 * places;
  if (text[whole / 4] == '.') {
    const Word ends = others ^ (Word{1} << (kBits - 1) >> whole);
    if (ends == 0) return false;
    const std::uint32_t end = Halves::leadingZeros(ends);
    // Of what follows the point, the digits alone, and of these as many as there are places.
    const Word fraction = word << (whole + 4) & ~(~Word{0} >> (end - whole - 4));
    digits |= fraction >> 4 >> (kBits - 4 - 4 * places);
    return text[end / 4] == 0;
  }
  return text[whole / 4] == 0;
}

// The digits of the whole number that remains of a canonical decimal when its point moves so many `places`, from 0 on,
// to the right and the rest is cut: as half bytes, the last one lowest. `text` is zero-terminated. False for any other
// text, for one that does not end within a Word full of units, and for more digits than a Word less one holds.
template <class Word>
[[gnu::always_inline]] inline bool wholeDigits(const unsigned short* text, std::uint32_t places, Word& digits,
                                               bool& negative) {
  text = afterSign(text, negative);
  return wholeDigitsOf(text, textStart<sizeof(Word) / 4>(text), places, digits);
}
// The same for a text that need not be copied first; false for any other. It calls nothing.
template <class Word>
[[gnu::always_inline]] inline bool wholeDigitsInPage(const unsigned short* text, std::uint32_t places, Word& digits,
                                                     bool& negative) {
  TextStart<sizeof(Word) / 4> start;
  text = afterSign(text, negative);
  return loadStart(text, start) && wholeDigitsOf(text, start, places, digits);
}

}  // namespace oxr::core
