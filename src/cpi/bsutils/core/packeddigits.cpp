#include "core/packeddigits.hpp"

#include <algorithm>
#include <cstring>

namespace oxr::core {
namespace {

using DigitPair = std::array<unsigned short, 2>;

// Set in a unit of kDigitPairs whose half byte is no digit.
constexpr unsigned short kNotDigit = 0x8000;

constexpr unsigned short digitUnit(unsigned nibble) {
  return static_cast<unsigned short>(nibble <= 9 ? '0' + nibble : kNotDigit);
}

// The two characters of each byte.
constexpr std::array<DigitPair, 256> kDigitPairs = [] {
  std::array<DigitPair, 256> pairs{};
  for (unsigned byte = 0; byte < 256; ++byte)
    pairs[byte] = {digitUnit(byte >> 4), digitUnit(byte & 0x0F)};
  return pairs;
}();
static_assert(kDigitPairs[0x42] == DigitPair{'4', '2'} && kDigitPairs[0x4A] == DigitPair{'4', kNotDigit});

// Writes the pair of `byte` to `out`; what it returns shows kNotDigit in either half when a half byte is no digit.
std::uint32_t writePair(unsigned char byte, unsigned short* out) {
  std::uint32_t both;
  std::memcpy(&both, kDigitPairs[byte].data(), sizeof both);
  std::memcpy(out, &both, sizeof both);
  return both;
}
constexpr std::uint32_t kNotDigitPair = kNotDigit | std::uint32_t{kNotDigit} << 16;

}  // namespace

PackedFault packedFault(std::span<const unsigned char> nibbles, bool isSigned) {
  if (nibbles.empty()) return PackedFault::noSign;
  const PackedFault sign = signFault(nibbles.back(), isSigned);
  if (sign != PackedFault::none) return sign;
  const auto digits = nibbles.first(nibbles.size() - 1);
  const bool allDigits = std::all_of(digits.rbegin(), digits.rend(), [](unsigned char nibble) { return nibble <= 9; });
  return allDigits ? PackedFault::none : PackedFault::badDigit;
}

bool PackedField::writeDigits(unsigned short* out, std::uint32_t beforePoint) const {
  const std::uint32_t last = size_ - 1;  // the byte that holds one digit and the sign
  const unsigned char* byte = first_;
  std::uint32_t seen = 0;
  std::uint32_t index = 0;
  // Pairs up to the point. The one that straddles it writes its second digit where the point goes.
  for (; index < last && 2 * index < beforePoint; ++index, byte += step_, out += 2)
    seen |= writePair(*byte, out);
  if (beforePoint < digitCount()) {
    const bool straddles = (beforePoint & 1) != 0;
    if (straddles) out[0] = out[-1];
    out[straddles ? -1 : 0] = '.';
    out += 1;
    for (; index < last; ++index, byte += step_, out += 2)
      seen |= writePair(*byte, out);
  }
  const unsigned short digit = kDigitPairs[*byte][0];
  *out = digit;
  return ((seen & kNotDigitPair) | (digit & kNotDigit)) == 0;
}

std::optional<IntegerDigits> integerDigits(const unsigned short* text, int places,
                                           std::array<unsigned short, kMaxQuickDigits>& buffer) {
  const bool hasSign = *text == '-' || *text == '+';
  const bool minus = *text == '-';
  std::size_t count = 0;
  std::optional<std::size_t> point;
  for (text += hasSign ? 1 : 0; *text != 0; ++text) {
    if (*text == '.' && !point) {
      point = count;
      continue;
    }
    if (*text < '0' || *text > '9' || count == buffer.size()) return std::nullopt;
    buffer[count++] = *text;
  }
  const std::int64_t kept = static_cast<std::int64_t>(point.value_or(count)) + places;
  // A sign is a position like any other when the point moves to the left: where it falls behind the point it is cut.
  const bool negative = minus && kept >= 0;
  std::size_t used = kept <= 0 ? 0 : std::min(count, static_cast<std::size_t>(kept));
  const auto* const first = std::find_if(buffer.data(), buffer.data() + used, [](auto unit) { return unit != '0'; });
  const std::size_t skipped = static_cast<std::size_t>(first - buffer.data());
  if (skipped == used) return IntegerDigits{negative, {}, 0};
  const std::uint64_t total = static_cast<std::uint64_t>(kept) - skipped;
  for (; used < buffer.size() && used < static_cast<std::size_t>(kept); ++used)
    buffer[used] = '0';
  return IntegerDigits{negative, UnitView(first, used - skipped), total};
}

void packDigits(UnitView digits, unsigned sign, std::span<unsigned char> field, bool reversed) {
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
