#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/digitvectors.hpp"
#include "core/words.hpp"
#include "kelunits.hpp"

// Packed decimals: two digits a byte, most significant first, the sign in the very last half byte. A field stored the
// other way round is reversed byte by byte as one unit; the half bytes keep their places.
//
//   12 34 5D   reads as   -12345        5D 34 12   is the same field reversed
//
// Up to eight bytes are one register: all digits are tested at once, and sixteen of them become text at once.
namespace oxr::core {

inline constexpr unsigned kPackedMinus = 0xD;           // the one half byte that reads as negative
inline constexpr unsigned kPackedAlternateMinus = 0xB;  // tested as a negative sign, read as positive
inline constexpr unsigned kPackedUnsigned = 0xF;        // written into unsigned fields

// The half byte to write: `positive` is that of a positive value in a signed field.
constexpr unsigned packedSign(bool isSigned, bool negative, unsigned positive) {
  if (!isSigned) return kPackedUnsigned;
  return negative ? kPackedMinus : positive;
}

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

// The top bit of each of sixteen half bytes that is no digit.
constexpr std::uint64_t nonDigitHalfBytes(std::uint64_t halfBytes) {
  return halfBytes & (halfBytes << 1 | halfBytes << 2) & 0x8888888888888888u;
}
static_assert(nonDigitHalfBytes(0x9876543210987654u) == 0 &&
              nonDigitHalfBytes(0xFEDCBA9876543210u) == 0x8888880000000000u);

// Up to 8 bytes of a field in a register, the last one in normal order uppermost.
class PackedWord {
 public:
  static constexpr std::uint32_t kMaxSize = 8;

  PackedWord() = default;
  // Takes `size` bytes, 1 to 8, that follow each other in memory.
  PackedWord(const unsigned char* bytes, std::uint32_t size, bool reversed)
      : bytes_(loadUppermost(bytes, size)), free_(64 - 8 * size) {
    if (reversed) bytes_ = __builtin_bswap64(bytes_ >> free_);
  }

  // The last half byte, and whether it alone is no digit. For a word that ends its field.
  unsigned sign() const { return static_cast<unsigned>(bytes_ >> 56) & 0x0F; }
  bool isAllDigitsButSign() const { return nonDigitHalfBytes(bytes_) == std::uint64_t{8} << 56; }
  // Whether all half bytes are digits. For a word that does not end its field.
  bool isAllDigits() const { return nonDigitHalfBytes(bytes_) == 0; }

  // Writes the half bytes as digits. Always 16 units are written; those beyond the field's end have no meaning.
  void write(unsigned short* out) const { writeSixteen(digitVector(bytes_ >> free_), out); }
  // The same with a point after the first `whole` digits, 1 to 15, and so 17 units.
  void writePointed(std::uint32_t whole, unsigned short* out) const {
    writePointedSixteen(digitVector(bytes_ >> free_), whole, out);
  }

 private:
  std::uint64_t bytes_ = 0;
  std::uint32_t free_ = 0;  // bits below them
};

// A field of 9 to 16 bytes as two full words, which overlap unless it has 16.
class PackedWords {
 public:
  static constexpr std::uint32_t kMaxSize = 2 * PackedWord::kMaxSize;
  static constexpr std::uint32_t kMaxPlaces = 14;  // a point with digits of the last word on both sides

  PackedWords() = default;
  PackedWords(const unsigned char* bytes, std::uint32_t size, bool reversed)
      : first_(bytes + (reversed ? size - PackedWord::kMaxSize : 0), PackedWord::kMaxSize, reversed),
        last_(bytes + (reversed ? 0 : size - PackedWord::kMaxSize), PackedWord::kMaxSize, reversed),
        lastDigits_(2 * (size - PackedWord::kMaxSize)) {}

  unsigned sign() const { return last_.sign(); }
  bool isAllDigitsButSign() const { return first_.isAllDigits() && last_.isAllDigitsButSign(); }

  // Writes the half bytes as digits, and one unit more, where the sign is.
  void write(unsigned short* out) const {
    first_.write(out);
    last_.write(out + lastDigits_);
  }
  // The same with a point before the last `places` digits, 1 to kMaxPlaces.
  void writePointed(std::uint32_t places, unsigned short* out) const {
    first_.write(out);
    last_.writePointed(2 * PackedWord::kMaxSize - 1 - places, out + lastDigits_);
  }

 private:
  PackedWord first_, last_;
  std::uint32_t lastDigits_ = 0;  // digits before those of the last word
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
  // Writes the digits of a good field, and nothing beyond them.
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

// The same for fields of 9 to 16 bytes, whose two ends overlap.
template <class LongWord>
inline bool packLong(LongWord digits, unsigned sign, unsigned char* field, std::uint32_t size, bool reversed) {
  static_assert(sizeof(LongWord) == 16);
  if (digits >> 4 * (2 * size - 1) != 0) return false;
  const LongWord bytes = digits << 4 | sign;
  auto low = static_cast<std::uint64_t>(bytes);
  auto high = static_cast<std::uint64_t>(bytes >> 8 * (size - sizeof low));
  if (!reversed) {
    low = __builtin_bswap64(low);
    high = __builtin_bswap64(high);
  }
  const std::uint32_t last = size - sizeof low;
  std::memcpy(field + (reversed ? last : 0), &high, sizeof high);
  std::memcpy(field + (reversed ? 0 : last), &low, sizeof low);
  return true;
}

// Fills a field with digits, leading zeros, and the sign. REQUIRES: packedSize(digits.size()) <= field.size().
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
