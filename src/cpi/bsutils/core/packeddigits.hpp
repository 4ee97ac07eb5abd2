#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "kelunits.hpp"

// Packed decimals: two digits a byte, most significant first, the sign in the very last half byte. A field stored the
// other way round is reversed byte by byte as one unit; the half bytes keep their places.
namespace oxr::core {

inline constexpr unsigned kPackedMinus = 0xD;           // the one half byte that reads as negative
inline constexpr unsigned kPackedAlternateMinus = 0xB;  // tested as a negative sign, read as positive
inline constexpr unsigned kPackedUnsigned = 0xF;        // written into unsigned fields

enum class PackedFault { none, noSign, negativeUnsigned, badDigit };

// What is wrong with the sign of a field.
constexpr PackedFault signFault(unsigned sign, bool isSigned) {
  if (sign <= 9) return PackedFault::noSign;
  const bool negative = sign == kPackedMinus || sign == kPackedAlternateMinus;
  return negative && !isSigned ? PackedFault::negativeUnsigned : PackedFault::none;
}

// What is wrong with a field split into half bytes, the sign last: the sign is looked at first, then the digits from
// the last one on.
PackedFault packedFault(std::span<const unsigned char> nibbles, bool isSigned);

// A view of a field of `size` bytes, at least one, that shows the normal order whichever way it is stored.
class PackedField {
 public:
  PackedField(const unsigned char* bytes, int size, bool reversed)
      : first_(reversed ? bytes + size - 1 : bytes),
        step_(reversed ? -1 : 1),
        size_(static_cast<std::uint32_t>(size)) {}

  std::uint32_t digitCount() const { return 2 * size_ - 1; }
  unsigned sign() const { return byteAt(size_ - 1) & 0x0F; }
  unsigned char byteAt(std::uint32_t index) const { return first_[static_cast<std::ptrdiff_t>(index) * step_]; }

  // Writes all digits as text to `out`, with a point behind the first `beforePoint` of them; all of them: no point.
  // False when a half byte is no digit; the text is then unspecified.
  bool writeDigits(unsigned short* out, std::uint32_t beforePoint) const;

 private:
  const unsigned char* first_;
  std::ptrdiff_t step_;
  std::uint32_t size_;
};

// A whole number without leading zeros. It has `count` digits; where that is more than `digits` shows, its last zeros
// found no room in the buffer.
struct IntegerDigits {
  bool negative;
  UnitView digits;
  std::uint64_t count;
};
inline constexpr std::size_t kMaxQuickDigits = 64;

// The whole number that remains of a canonical decimal when its point moves `places` to the right and the rest is cut.
// `text` is zero-terminated; `buffer` holds the digits. Nothing for text that is not canonical (a sign, digits, one
// point) or too long for the buffer: such text takes the general way.
std::optional<IntegerDigits> integerDigits(const unsigned short* text, int places,
                                           std::array<unsigned short, kMaxQuickDigits>& buffer);

// Bytes that `count` digits and a sign need.
constexpr std::uint64_t packedSize(std::uint64_t count) {
  return count / 2 + 1;
}

// Fills a field with digits, zeros in front, and the sign. REQUIRES: packedSize(digits.size()) <= field.size().
// A half byte is taken from a character without a test: the high one is its low four bits, the low one the character
// less "0".
void packDigits(UnitView digits, unsigned sign, std::span<unsigned char> field, bool reversed);

}  // namespace oxr::core
