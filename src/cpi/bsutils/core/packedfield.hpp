#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "kelunits.hpp"

// Packed decimals: two digits a byte, most significant first, the sign in the very last half byte. A field stored the
// other way round is reversed byte by byte as one unit; the half bytes keep their places.
namespace oxr::core {

inline constexpr unsigned kPackedMinus = 0xD;           // the one half byte that reads as negative
inline constexpr unsigned kPackedAlternateMinus = 0xB;  // tested as a negative sign, read as positive
inline constexpr unsigned kPackedUnsigned = 0xF;        // written into unsigned fields

enum class PackedFault { none, noSign, negativeUnsigned, badDigit };

// The two half bytes that say negative.
constexpr bool isNegativeSign(unsigned sign) {
  return (0x2800u >> sign & 1) != 0;
}
static_assert(isNegativeSign(kPackedMinus) && isNegativeSign(kPackedAlternateMinus));

// What is wrong with the sign of a field.
constexpr PackedFault signFault(unsigned sign, bool isSigned) {
  if (sign <= 9) return PackedFault::noSign;
  return isNegativeSign(sign) && !isSigned ? PackedFault::negativeUnsigned : PackedFault::none;
}

// What is wrong with a field split into half bytes, the sign last: the sign is looked at first, then the digits from
// the last one on.
PackedFault packedFault(std::span<const unsigned char> nibbles, bool isSigned);

static_assert(std::endian::native == std::endian::little, "the quick way loads and stores in this order");

// `count` bytes, 1 to 8, the last one uppermost; zeros below them.
inline std::uint64_t loadUppermost(const unsigned char* bytes, std::uint32_t count) {
  // Two loads that overlap, so that nothing behind the field is touched and nothing loops.
  const auto join = [&]<class Half>(Half first, Half last) {
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&last, bytes + count - sizeof last, sizeof last);
    return std::uint64_t{last} << (64 - 8 * sizeof last) | std::uint64_t{first} << (64 - 8 * count);
  };
  if (count >= 4) return join(std::uint32_t{}, std::uint32_t{});
  if (count >= 2) return join(std::uint16_t{}, std::uint16_t{});
  return std::uint64_t{*bytes} << 56;
}
// The same, the first one lowest.
inline std::uint64_t loadBytes(const unsigned char* bytes, std::uint32_t count) {
  return loadUppermost(bytes, count) >> (64 - 8 * count);
}

// The lowest `count` bytes, 1 to 8, the lowest one first.
inline void storeLowest(std::uint64_t bytes, unsigned char* target, std::uint32_t count) {
  const auto split = [&]<class Half>(Half first) {
    const auto last = static_cast<Half>(bytes >> 8 * (count - sizeof(Half)));
    first = static_cast<Half>(bytes);
    std::memcpy(target, &first, sizeof first);
    std::memcpy(target + count - sizeof last, &last, sizeof last);
  };
  if (count >= 4)
    split(std::uint32_t{});
  else if (count >= 2)
    split(std::uint16_t{});
  else
    *target = static_cast<unsigned char>(bytes);
}

// `count` bytes as loaded, the other way round.
constexpr std::uint64_t reversedBytes(std::uint64_t bytes, std::uint32_t count) {
  return __builtin_bswap64(bytes) >> (64 - 8 * count);
}

// The top bit of each half byte that is above 9, of sixteen.
constexpr std::uint64_t aboveNine(std::uint64_t halfBytes) {
  return halfBytes & (halfBytes << 1 | halfBytes << 2) & 0x8888888888888888u;
}
static_assert(aboveNine(0x9876543210987654u) == 0 && aboveNine(0xFEDCBA9876543210u) == 0x8888880000000000u);

// The compilers' own vectors, which every machine has.
using ByteVector [[gnu::vector_size(16)]] = unsigned char;

// The half bytes of eight bytes as digits, a byte each.
inline ByteVector digitVector(std::uint64_t bytes) {
  using Words [[gnu::vector_size(16)]] = std::uint64_t;
  const auto packed = std::bit_cast<ByteVector>(Words{bytes, 0});
  const ByteVector high = packed >> 4;
  const ByteVector low = packed & 0x0F;
  return '0' + __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

// A unit for each character of the vector.
inline void writeSixteen(ByteVector characters, unsigned short* out) {
  const ByteVector none = {};
  const ByteVector first =
      __builtin_shufflevector(characters, none, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const ByteVector last =
      __builtin_shufflevector(characters, none, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  std::memcpy(out, &first, sizeof first);
  std::memcpy(out + 8, &last, sizeof last);
}

// The first sixteen bytes select what is to be taken, the others do not.
inline constexpr std::array<unsigned char, 32> kSelect = [] {
  std::array<unsigned char, 32> select{};
  std::fill_n(select.begin(), 16, static_cast<unsigned char>(0xFF));
  return select;
}();

// The characters as units, with a point behind the first `whole` of them, 1 to 16. Without a branch: a point behind the
// last digit is there for the caller to write over.
inline void writePointedSixteen(ByteVector characters, std::uint32_t whole, unsigned short* out) {
  const ByteVector none = {};
  const ByteVector later =
      __builtin_shufflevector(none, characters, 0, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30);
  ByteVector isWhole;
  std::memcpy(&isWhole, kSelect.data() + 16 - whole, sizeof isWhole);
  writeSixteen((characters & isWhole) | (later & ~isWhole), out);
  out[whole] = '.';
}

// Up to 8 bytes of a field in a register, the last one in normal order uppermost.
class PackedWord {
 public:
  static constexpr std::uint32_t kMaxSize = 8;

  // `size` bytes, 1 to 8, that follow each other in memory.
  PackedWord(const unsigned char* bytes, std::uint32_t size, bool reversed)
      : bytes_(loadUppermost(bytes, size)), free_(64 - 8 * size) {
    if (reversed) bytes_ = __builtin_bswap64(bytes_ >> free_);
  }

  // Both of a word that ends its field. The sign must be above 9.
  unsigned sign() const { return static_cast<unsigned>(bytes_ >> 56) & 0x0F; }
  bool isAllDigitsButSign() const { return aboveNine(bytes_) == std::uint64_t{8} << 56; }
  // Of any other.
  bool isAllDigits() const { return aboveNine(bytes_) == 0; }

  // Writes the half bytes as digits. Always 16 units are written, those behind the field's end without meaning.
  void write(unsigned short* out) const { writeSixteen(digitVector(bytes_ >> free_), out); }
  // The same with a point behind the first `whole` digits, 1 to 15.
  void writePointed(std::uint32_t whole, unsigned short* out) const {
    writePointedSixteen(digitVector(bytes_ >> free_), whole, out);
  }

 private:
  std::uint64_t bytes_;
  std::uint32_t free_;  // bits below them
};

// A view of a field of `size` bytes, at least one, that shows the normal order whichever way it is stored.
class PackedField {
 public:
  PackedField(const unsigned char* bytes, int size, bool reversed)
      : bytes_(bytes), size_(static_cast<std::uint32_t>(size)), reversed_(reversed) {}

  std::uint32_t digitCount() const { return 2 * size_ - 1; }
  // The half bytes in normal order; the last one, at digitCount(), is the sign.
  unsigned char nibble(std::uint32_t index) const {
    const std::uint32_t byte = index / 2;
    const unsigned char value = bytes_[reversed_ ? size_ - 1 - byte : byte];
    return static_cast<unsigned char>(index % 2 == 0 ? value >> 4 : value & 0x0F);
  }
  unsigned sign() const { return nibble(digitCount()); }
  // Whether sign and digits are what they should be.
  bool isGood(bool isSigned) const;
  // Writes the digits of a good field, and nothing behind them.
  void writeDigits(unsigned short* out) const;

 private:
  PackedWord word(std::uint32_t first) const {
    const std::uint32_t count = std::min(size_ - first, PackedWord::kMaxSize);
    return PackedWord(bytes_ + (reversed_ ? size_ - first - count : first), count, reversed_);
  }

  const unsigned char* bytes_;
  std::uint32_t size_;
  bool reversed_;
};

// A whole number without leading zeros. It has `count` digits; where that is more than `digits` shows, its last zeros
// found no room in the buffer.
struct IntegerDigits {
  bool negative;
  UnitView digits;
  std::uint64_t count;
};
using DigitBuffer = std::array<unsigned short, 64>;

// The whole number that remains of a canonical decimal when its point moves `places` to the right and the rest is cut.
// `text` is zero-terminated; the digits go to `buffer`. False for text that is not canonical (a sign, digits, one
// point) or too long for the buffer: such text takes the general way.
inline bool integerDigits(const unsigned short* text, int places, DigitBuffer& buffer, IntegerDigits& number) {
  constexpr std::size_t kNoPoint = ~std::size_t{0};
  const bool minus = *text == '-';
  if (minus || *text == '+') ++text;
  std::size_t count = 0;
  std::size_t point = kNoPoint;
  for (; *text != 0; ++text) {
    if (static_cast<unsigned>(*text) - '0' <= 9 && count < buffer.size()) {
      buffer[count++] = *text;
    } else {
      if (*text != '.' || point != kNoPoint) return false;
      point = count;
    }
  }
  const std::int64_t kept = static_cast<std::int64_t>(point != kNoPoint ? point : count) + places;
  // A sign is a position like any other when the point moves to the left: where it falls behind the point it is cut.
  number.negative = minus && kept >= 0;
  const std::size_t whole = kept <= 0 ? 0 : static_cast<std::size_t>(kept);
  std::size_t used = std::min(count, whole);
  std::size_t zeros = 0;
  while (zeros < used && buffer[zeros] == '0')
    ++zeros;
  number.count = zeros == used ? 0 : whole - zeros;
  if (number.count != 0)
    while (used < whole && used < buffer.size())
      buffer[used++] = '0';
  number.digits = UnitView(buffer.data() + zeros, used - zeros);
  return true;
}

// The same for up to 15 digits and a point that moves `places`, 0 to 15, to the right: the digits as half bytes, the
// last one lowest. False for text that takes another way.
inline bool shortIntegerDigits(const unsigned short* text, std::uint32_t places, std::uint64_t& digits,
                               bool& negative) {
  negative = *text == '-';
  if (negative || *text == '+') ++text;
  std::uint64_t taken = 0;
  const auto takeDigits = [&] {
    const unsigned short* const first = text;
    for (unsigned digit; (digit = unsigned{*text} - '0') <= 9; ++text)
      taken = taken << 4 | digit;
    return static_cast<std::size_t>(text - first);
  };
  const std::size_t whole = takeDigits();
  std::size_t fraction = 0;
  if (*text == '.') {
    ++text;
    fraction = takeDigits();
  }
  if (*text != 0 || whole + std::max<std::size_t>(fraction, places) > 15) return false;
  digits = fraction <= places ? taken << 4 * (places - fraction) : taken >> 4 * (fraction - places);
  return true;
}

// Bytes that `count` digits and a sign need.
constexpr std::uint64_t packedSize(std::uint64_t count) {
  return count / 2 + 1;
}

// Fills a field of `size` bytes, 1 to 8, with digits as half bytes and the sign. False if they are too many.
inline bool packShort(std::uint64_t digits, unsigned sign, unsigned char* field, std::uint32_t size, bool reversed) {
  if (digits >> 4 * (2 * size - 1) != 0) return false;
  const std::uint64_t bytes = digits << 4 | sign;
  storeLowest(reversed ? bytes : reversedBytes(bytes, size), field, size);
  return true;
}

// Fills a field with digits, zeros in front, and the sign. REQUIRES: packedSize(digits.size()) <= field.size().
// A half byte is taken from a character without a test: the high one is its low four bits, the low one the character
// less "0".
inline void packDigits(UnitView digits, unsigned sign, std::span<unsigned char> field, bool reversed) {
  const std::size_t count = digits.size();
  const std::size_t filled = static_cast<std::size_t>(packedSize(count));
  const std::size_t zeros = field.size() - filled;
  const std::ptrdiff_t step = reversed ? -1 : 1;
  unsigned char* out = reversed ? field.data() + field.size() - 1 : field.data();
  const auto put = [&](unsigned high, unsigned low) {
    *out = static_cast<unsigned char>((high & 0x0F) << 4 | low);
    out += step;
  };
  for (std::size_t i = 0; i < zeros; ++i)
    put(0, 0);
  std::size_t next = 0;
  if (count % 2 == 0 && count != 0) put(0, digits[next++] - unsigned{'0'});
  for (; next + 1 < count; next += 2)
    put(digits[next], digits[next + 1] - unsigned{'0'});
  put(count != 0 ? digits[next] : 0, sign);
}

}  // namespace oxr::core
