#include "core/packedfield.hpp"

#include <algorithm>

namespace oxr::core {
PackedFault packedFault(std::span<const unsigned char> nibbles, bool isSigned) {
  if (nibbles.empty()) return PackedFault::noSign;
  const PackedFault sign = signFault(nibbles.back(), isSigned);
  if (sign != PackedFault::none) return sign;
  const auto digits = nibbles.first(nibbles.size() - 1);
  const bool allDigits = std::all_of(digits.rbegin(), digits.rend(), [](unsigned char nibble) { return nibble <= 9; });
  return allDigits ? PackedFault::none : PackedFault::badDigit;
}

bool PackedField::isGood(bool isSigned) const {
  std::uint32_t first = 0;
  for (; size_ - first > PackedWord::kMaxSize; first += PackedWord::kMaxSize)
    if (!word(first).isAllDigits()) return false;
  return word(first).isAllDigitsButSign() && signFault(sign(), isSigned) == PackedFault::none;
}

void PackedField::writeDigits(unsigned short* out) const {
  std::uint32_t first = 0;
  for (; size_ - first > PackedWord::kMaxSize; first += PackedWord::kMaxSize, out += 2 * PackedWord::kMaxSize)
    word(first).write(out);
  unsigned short last[2 * PackedWord::kMaxSize];
  word(first).write(last);
  std::copy_n(last, 2 * (size_ - first) - 1, out);
}

}  // namespace oxr::core
