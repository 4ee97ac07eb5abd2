// Both directions work on vectors, eight or sixteen bytes of the field at once, as long as nothing but digits comes,
// and unit by unit where there is something else, and at the end. The vectors are the compilers' own (see
// digitvectors.hpp).

#include "core/hextext.hpp"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "core/digitvectors.hpp"

namespace oxr::core {

namespace {

constexpr char kDigits[] = "0123456789abcdef";
constexpr unsigned kLetterGap = 'a' - '0' - 10;  // between the digits and the letters

// The value of each ASCII character; kForeign for what is no digit.
constexpr unsigned char kForeign = 0x80;
constexpr std::array<unsigned char, 128> kValues = [] {
  std::array<unsigned char, 128> values{};
  std::fill(values.begin(), values.end(), kForeign);
  for (unsigned char value = 0; value < 16; ++value) {
    values[static_cast<unsigned char>(kDigits[value])] = value;
    if (value >= 10) values['A' + value - 10u] = value;
  }
  return values;
}();
static_assert(kValues['F'] == 15 && kValues['a'] == 10 && kValues['g'] == kForeign);

unsigned valueOf(unsigned short unit) {
  return unit < kValues.size() ? kValues[unit] : kForeign;
}
bool isSpace(unsigned short unit) {
  return unit == ' ' || u_isWhitespace(unit);
}

constexpr std::size_t kBlockBytes = 16, kBlockUnits = 2 * kBlockBytes;

// Every second byte of two vectors, from the first or the second one on.
template <int kFirst>
ByteVector everySecond(ByteVector left, ByteVector right) {
  return __builtin_shufflevector(left, right, kFirst, kFirst + 2, kFirst + 4, kFirst + 6, kFirst + 8, kFirst + 10,
                                 kFirst + 12, kFirst + 14, kFirst + 16, kFirst + 18, kFirst + 20, kFirst + 22,
                                 kFirst + 24, kFirst + 26, kFirst + 28, kFirst + 30);
}
constexpr int kLowByte = std::endian::native == std::endian::little ? 0 : 1;  // of a unit

// Sixteen units as bytes; one above 255 leaves a bit in `above`.
ByteVector loadUnits(const unsigned short* text, ByteVector& above) {
  UnitVector first, last;
  std::memcpy(&first, text, sizeof first);
  std::memcpy(&last, text + 8, sizeof last);
  above |= std::bit_cast<ByteVector>((first | last) >> 8);
  return everySecond<kLowByte>(std::bit_cast<ByteVector>(first), std::bit_cast<ByteVector>(last));
}

// The values of sixteen characters; one that is no digit leaves a bit in `foreign`.
ByteVector digitValues(ByteVector characters, ByteVector& foreign) {
  const ByteVector digit = characters - '0';
  const ByteVector letter = (characters | ('a' ^ 'A')) - 'a';
  const auto isDigit = std::bit_cast<ByteVector>(digit <= 9);
  const auto isLetter = std::bit_cast<ByteVector>(letter <= 5);
  foreign |= ~(isDigit | isLetter);
  return (digit & isDigit) | ((letter + 10) & isLetter);
}

// Reads one block; false, with sixteen bytes of no use in `out`, where it holds anything but digits.
bool readBlock(const unsigned short* text, unsigned char* out) {
  ByteVector fault = {};
  const ByteVector first = digitValues(loadUnits(text, fault), fault);
  const ByteVector last = digitValues(loadUnits(text + 16, fault), fault);
  const ByteVector bytes = everySecond<0>(first, last) << 4 | everySecond<1>(first, last);
  std::memcpy(out, &bytes, sizeof bytes);
  return !hasAny(fault, ~std::uint64_t{0});
}

}  // namespace

void writeHex(std::span<const unsigned char> bytes, unsigned short* out) {
  for (; bytes.size() >= 8; bytes = bytes.subspan(8), out += 16) {
    std::uint64_t word;
    std::memcpy(&word, bytes.data(), sizeof word);
    const ByteVector characters = digitVector(word);
    const auto isLetter = std::bit_cast<ByteVector>(characters > '9');
    writeSixteen(characters + (isLetter & kLetterGap), out);
  }
  for (const unsigned char byte : bytes) {
    *out++ = static_cast<unsigned char>(kDigits[byte >> 4]);
    *out++ = static_cast<unsigned char>(kDigits[byte & 15]);
  }
}

HexReading readHex(UnitView text, unsigned char* out) {
  std::size_t at = 0, size = 0;
  unsigned high = 0;
  bool isHalf = false;  // `high` is waiting for the low half of its byte
  while (at < text.size()) {
    for (; text.size() - at >= kBlockUnits && readBlock(text.data() + at, out + size); at += kBlockUnits)
      size += kBlockBytes;
    // White space is seldom alone: so many units as a block has go one by one, and more up to a whole byte.
    const std::size_t end = std::min(at + kBlockUnits, text.size());
    for (; at < end || (isHalf && at < text.size()); ++at) {
      const unsigned value = valueOf(text[at]);
      if (value == kForeign) {
        if (!isSpace(text[at])) return {size, HexFault::foreign};
        continue;
      }
      if (isHalf) out[size++] = static_cast<unsigned char>(high | value);
      high = value << 4;
      isHalf = !isHalf;
    }
  }
  return {size, isHalf ? HexFault::oddCount : HexFault::none};
}

}  // namespace oxr::core
