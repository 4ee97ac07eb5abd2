#include "core/tlog.hpp"

#include <algorithm>

#include "core/digitvectors.hpp"
#include "core/packedfield.hpp"
#include "core/words.hpp"

// Reading takes a field in words of 8 bytes, in either direction, and makes each a vector of sixteen characters; what
// is no digit shows in the word by arithmetic, so that a good field meets no branch for its digits. Writing goes pair
// by pair, since every pair may be the one that fails.
namespace oxr::core {
namespace {

// The hexadecimal digit of each half byte: "0" plus the half byte, moved on to "A" to "F" where that passes "9".
ByteVector hexVector(std::uint64_t bytes) {
  const ByteVector digits = digitVector(bytes);
  const ByteVector isLetter = reinterpret_cast<ByteVector>(digits > '9');
  return digits + (isLetter & static_cast<unsigned char>('A' - '9' - 1));
}

// The bits of the half bytes before the digits, by their count, in a word whose first byte is lowest. The high half of
// a byte comes first.
constexpr std::uint64_t kBeforeDigits[] = {0x00, 0xF0, 0xFF};

// Where the number stands in a text with its sign.
struct NumberInText {
  bool negative;
  std::ptrdiff_t start;  // of the digits, the leading zeros not counted; -1 for an empty text
};
NumberInText findNumber(UnitView text) {
  const auto length = static_cast<std::ptrdiff_t>(text.size());
  const bool negative = !text.empty() && text[0] == '-';
  const bool hasSign = negative || (!text.empty() && text[0] == '+');
  const auto digit = text.find_first_not_of('0', hasSign);
  // One zero stays. It is the sign that is left where there are no digits, and nothing of an empty text.
  return {negative, digit == UnitView::npos ? length - 1 : static_cast<std::ptrdiff_t>(digit)};
}

// Bytes that a number takes in the fixed form, by the rule that goes out: it looks at the whole text and not at the
// count of the digits. Tlog.WritesDecimals.
std::ptrdiff_t fixedFormBytes(std::ptrdiff_t length, const NumberInText& number) {
  if (length % 2 != 0) return (length + 1 - number.start) / 2;
  return (length - number.start) / 2 + (number.negative ? 1 : 0);
}

}  // namespace

// Calls visit(word, index of its first byte) for each 8 bytes in normal order, the first one lowest.
template <class Visit>
void TlogField::visitWords(Visit visit) const {
  const std::size_t size = bytes_.size();
  for (std::size_t first = 0; first < size; first += kStep) {
    const auto count = static_cast<std::uint32_t>(std::min(size - first, kStep));
    const std::uint64_t word = loadLowest(bytes_.data() + (reversed_ ? size - first - count : first), count);
    visit(reversed_ ? reversedBytes(word, count) : word, first);
  }
}

UnitView TlogField::hexText(unsigned short* buffer) const {
  visitWords([&](std::uint64_t word, std::size_t first) { writeSixteen(hexVector(word), buffer + 2 * first); });
  return UnitView(buffer, 2 * bytes_.size());
}

std::optional<UnitView> TlogField::decimalText(unsigned short* buffer) const {
  if (bytes_.empty()) return UnitView();
  const TlogSign sign = tlogSign(reversed_ ? bytes_.back() : bytes_.front());
  std::uint64_t beforeDigits = kBeforeDigits[sign.halfBytes];
  std::uint64_t faults = 0;
  visitWords([&](std::uint64_t word, std::size_t first) {
    faults |= nonDigitHalfBytes(word & ~beforeDigits);
    beforeDigits = 0;
    writeSixteen(digitVector(word), buffer + 2 * first);
  });
  if (faults != 0) return std::nullopt;
  const std::uint32_t start = sign.halfBytes - sign.negative;
  if (sign.negative) buffer[start] = '-';
  return UnitView(buffer + start, 2 * bytes_.size() - start);
}

TlogFault packTlogDecimal(UnitView text, std::span<unsigned char> field, bool fixed) {
  const auto length = static_cast<std::ptrdiff_t>(text.size());
  const auto size = static_cast<std::ptrdiff_t>(field.size());
  const NumberInText number = findNumber(text);
  std::ptrdiff_t position = 0;
  if (fixed) {
    position = size - fixedFormBytes(length, number);
    if (position < 0) return TlogFault::fieldTooSmall;
    std::fill_n(field.begin(), position, static_cast<unsigned char>(0));
  }

  // Above 9 for a character that is no digit.
  const auto digitAt = [text](std::ptrdiff_t at) { return text[static_cast<std::size_t>(at)] - unsigned{'0'}; };
  const auto put = [&](unsigned byte) {
    field[static_cast<std::size_t>(position++)] = static_cast<unsigned char>(byte);
  };
  const unsigned filler = fixed ? 0 : kTlogFiller;
  std::ptrdiff_t next = number.start;
  if ((length - next) % 2 != 0) {
    if (position >= size) return TlogFault::fieldTooSmall;
    if (next < 0 || digitAt(next) > 9) return TlogFault::notADigit;
    put((number.negative ? kTlogMinus : filler) << 4 | digitAt(next++));
  } else if (number.negative) {
    // In the fixed form the minus goes into the last of the leading zeros.
    if (fixed && position-- == 0) return TlogFault::fieldTooSmall;
    if (position >= size) return TlogFault::fieldTooSmall;
    put(filler << 4 | kTlogMinus);
  }
  // An even count of characters is left. Digits without a place are dropped, and a text that ends before the field does
  // is a fault: Tlog.WritesDecimals.
  for (; position < size; next += 2) {
    if (next == length || digitAt(next) > 9 || digitAt(next + 1) > 9) return TlogFault::notADigit;
    put(digitAt(next) << 4 | digitAt(next + 1));
  }
  return TlogFault::none;
}

void packTlogString(std::span<const unsigned char> characters, std::span<unsigned char> field) {
  for (std::size_t i = 0; i < field.size(); ++i)
    field[i] =
        static_cast<unsigned char>(kTlogHalfBytes[characters[2 * i]] << 4 | kTlogHalfBytes[characters[2 * i + 1]]);
}

}  // namespace oxr::core
