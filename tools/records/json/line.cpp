#include "records/json/line.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace oxr::rec {

namespace {

using narrowing::isAny, narrowing::kLanes, narrowing::load, narrowing::loadHalves, narrowing::Units;

constexpr std::size_t kMostBytes = 6;  // of a unit: "\\u001F"
constexpr unsigned kReplacement = 0xFFFD;

constexpr bool isHigh(unsigned unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool isLow(unsigned unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// What stands behind the backslash of an escaped ASCII character: a letter, or 'u' and four digits. 0 for one that is
// not escaped.
constexpr std::array<char, 0x80> kEscapes = [] {
  std::array<char, 0x80> escapes{};
  std::fill_n(escapes.begin(), 0x20, 'u');
  for (const unsigned char itself : {'"', '\\'})
    escapes[itself] = static_cast<char>(itself);
  escapes['\b'] = 'b', escapes['\f'] = 'f', escapes['\n'] = 'n', escapes['\r'] = 'r', escapes['\t'] = 't';
  return escapes;
}();

char* putEscape(unsigned unit, char* to) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  *to++ = '\\';
  *to++ = 'u';
  for (int shift = 12; shift >= 0; shift -= 4)
    *to++ = kDigits[unit >> shift & 0xF];
  return to;
}

// A unit of more than seven bits that is no half of a pair. Some are characters that JSON allows in a string, but that
// many readers of lines take for the end of one.
char* putWide(unsigned unit, char* to) {
  if (unit == 0x85 || unit == 0x2028 || unit == 0x2029) return putEscape(unit, to);
  if (unit < 0x800) {
    *to++ = static_cast<char>(0xC0 | unit >> 6);
  } else {
    *to++ = static_cast<char>(0xE0 | unit >> 12);
    *to++ = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
  }
  *to++ = static_cast<char>(0x80 | (unit & 0x3F));
  return to;
}

char* putPair(unsigned high, unsigned low, char* to) {
  const unsigned character = 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF);
  *to++ = static_cast<char>(0xF0 | character >> 18);
  for (int shift = 12; shift >= 0; shift -= 6)
    *to++ = static_cast<char>(0x80 | (character >> shift & 0x3F));
  return to;
}

// Writes the unit at `at` and, of a pair, the next one, and moves `at` to the last of them. A half of a pair that
// stands alone gives U+FFFD: whatever is in a file, the JSON is valid. Returns where it ends.
char* putOddUnit(UnitView text, std::size_t& at, char* to) {
  const unsigned unit = text[at];
  if (unit < kEscapes.size()) {
    if (kEscapes[unit] == 'u') return putEscape(unit, to);
    *to++ = '\\';
    *to++ = kEscapes[unit];
    return to;
  }
  if (isHigh(unit) && at + 1 < text.size() && isLow(text[at + 1])) return putPair(unit, text[++at], to);
  return putWide(isHigh(unit) || isLow(unit) ? kReplacement : unit, to);
}

// Writes any text as UTF-8 with what JSON escapes. Returns where it ends.
char* putText(UnitView text, char* to) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const unsigned unit = text[at];
    if (unit < kEscapes.size() && kEscapes[unit] == 0)
      *to++ = static_cast<char>(unit);
    else
      to = putOddUnit(text, at, to);
  }
  return to;
}

constexpr bool isDigit(unsigned short unit) {
  return unit >= '0' && unit <= '9';
}

// How many leading zeros may go: a digit stays after them.
std::size_t superfluousZeros(UnitView digits) {
  std::size_t at = 0;
  while (at + 1 < digits.size() && digits[at] == '0' && isDigit(digits[at + 1]))
    ++at;
  return at;
}

// Writes a decimal without its sign. Returns where it ends, or null if the text is no decimal. `*point` is where its
// point is written, null if it has none.
char* writeDigits(UnitView digits, char* to, char** point) {
  std::size_t at = superfluousZeros(digits);
  *point = nullptr;
  if (at < digits.size() && digits[at] == '.' && digits.size() > at + 1) *to++ = '0';
  char* const begin = to;
  for (; at < digits.size(); ++at) {
    *to = static_cast<char>(digits[at]);
    if (!isDigit(digits[at])) {
      if (digits[at] != '.' || *point != nullptr) return nullptr;
      *point = to;
    }
    ++to;
  }
  if (to == begin) return nullptr;
  if (*point == to - 1) {
    *point = nullptr;
    return to - 1 == begin ? nullptr : to - 1;
  }
  return to;
}

__extension__ using DoubleWord = unsigned __int128;

constexpr short kNotAscii = ~0x7F;

std::uint64_t bytesOf(Units units) {
  return narrowing::halvesOf(narrowing::lowBytes(units, units)).low;
}

constexpr int lowestBit(std::uint64_t word) {
  return std::countr_zero(word);
}
constexpr int lowestBit(DoubleWord word) {
  const auto low = static_cast<std::uint64_t>(word);
  return low != 0 ? lowestBit(low) : 64 + lowestBit(static_cast<std::uint64_t>(word >> 64));
}

// Writes a decimal whose characters lie in a register, the first one lowest, so that nothing about it takes a loop.
// Each has had that of '0' taken off bit by bit; the last one is the highest byte, and zeros come before the first.
// Returns where the text ends, or null for what is no decimal and for one with nothing before or behind its point. All
// of the word's bytes may be written to.
template <class Word>
char* writeWord(Word values, char* to) {
  constexpr Word kEach = static_cast<Word>(~Word{0}) / 0xFF;
  constexpr int kSize = sizeof(Word);
  // Added to 0x76 a digit stays below 0x80, and every other ASCII character below 0x100.
  const Word others = (values + 0x76 * kEach) & 0x80 * kEach;
  int point = kSize;
  if (others != 0) {
    point = lowestBit(others) / 8;
    const auto other = static_cast<unsigned char>(values >> 8 * point);
    if ((others & (others - 1)) != 0 || other != ('.' ^ '0') || point == 0 || point == kSize - 1) return nullptr;
  }
  // A digit stays before the point.
  const int zeros = std::min(values == 0 ? kSize : lowestBit(values) / 8, point - 1);
  const Word text = (values ^ '0' * kEach) >> 8 * zeros;
  std::memcpy(to, &text, sizeof text);
  return to + (kSize - zeros);
}

constexpr std::size_t kShortRoom = sizeof(DoubleWord);

// Writes a decimal of one to 16 units without its sign, digits that may have a point among them. Null for all others.
// kShortRoom bytes may be written to.
char* writeShort(UnitView units, char* to) {
  constexpr std::uint64_t kZeros = 0x3030303030303030U;
  const std::size_t size = units.size();
  if (size == 0 || size > 2 * kLanes) return nullptr;
  if (size > kLanes) {
    const Units front = load(units.data()), back = load(units.data() + size - kLanes);
    if (isAny((front | back) & kNotAscii)) return nullptr;
    const std::uint64_t low = (bytesOf(front) ^ kZeros) << 8 * (2 * kLanes - size);
    return writeWord(DoubleWord{bytesOf(back) ^ kZeros} << 64 | low, to);
  }
  if (size >= kLanes / 2) {
    const Units halves = loadHalves(units.data(), units.data() + size - kLanes / 2);
    if (isAny(halves & kNotAscii)) return nullptr;
    // The upper half is the last one; the lower loses the units that both have.
    const std::uint64_t values = bytesOf(halves) ^ kZeros;
    return writeWord(values >> 32 << 32 | (values << 32 >> 32 << 8 * (kLanes - size) & 0xFFFFFFFFU), to);
  }
  // The first, the middle and the last of one to three.
  const std::uint64_t first = units[0], middle = units[size / 2], last = units[size - 1];
  if ((first | middle | last) > 0x7F) return nullptr;
  const std::uint64_t bytes = first | middle << 8 * (size / 2) | last << 8 * (size - 1);
  return writeWord((bytes ^ kZeros) << 8 * (kLanes - size), to);
}

}  // namespace

JsonKey::JsonKey(UnitView name) {
  JsonLine line;
  line.buffer().put(',');
  line.text(name);
  line.buffer().put(':');
  text_ = line.buffer().text();
  size_ = text_.size();
  text_.append(kBlock + 1, ' ');
}

void JsonLine::generalText(UnitView text) {
  char* const to = out_.room(kMostBytes * text.size() + 2);
  *to = '"';
  char* const end = putText(text, to + 1);
  *end = '"';
  out_.endAt(end + 1);
}

void JsonLine::real(double value) {
  constexpr std::size_t kRoom = 32;
  char* const to = out_.room(kRoom);
  out_.endAt(std::to_chars(to, to + kRoom, value).ptr);
}

void JsonLine::integer(std::int64_t value) {
  constexpr std::size_t kRoom = 20;
  char* const to = out_.room(kRoom);
  out_.endAt(std::to_chars(to, to + kRoom, value).ptr);
}

// Nearly all decimals are short.
void JsonLine::decimal(UnitView value, bool pointsAsText) {
  const bool isNegative = !value.empty() && value[0] == '-';
  char* const to = out_.room(1 + kShortRoom);
  *to = '-';
  char* const end = pointsAsText ? nullptr : writeShort(value.substr(isNegative), to + isNegative);
  if (end == nullptr) [[unlikely]]
    return generalDecimal(value, pointsAsText);
  out_.endAt(end);
}

void JsonLine::generalDecimal(UnitView value, bool pointsAsText) {
  UnitView digits = value;
  const bool isNegative = !digits.empty() && digits[0] == '-';
  if (isNegative) digits.remove_prefix(1);
  // Besides the digits: a leading quote, the minus, and a zero before the point or a trailing quote.
  char* const begin = out_.room(digits.size() + 4);
  char* const start = begin + (pointsAsText ? 1 : 0);
  *begin = '"';
  if (isNegative) *start = '-';
  char* point = nullptr;
  char* end = writeDigits(digits, start + (isNegative ? 1 : 0), &point);
  if (end == nullptr) return text(value);
  if (point != nullptr && pointsAsText)
    *end++ = '"';
  else if (pointsAsText)
    end = std::copy(begin + 1, end, begin);
  out_.endAt(end);
}

}  // namespace oxr::rec
