#include "records/json/line.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace oxr::rec {

namespace {

// Almost all texts of records consist of characters that stand in a JSON string as they are. Such a text is narrowed
// eight units at a time and tested on the way; any other one goes character by character.
//
// A lane of a test is 0 for a unit that stands in a JSON string as one byte, itself: ASCII but for control characters,
// the quote and the backslash.
using Units = short __attribute__((vector_size(16)));
using Bytes = unsigned char __attribute__((vector_size(8)));
constexpr std::size_t kLanes = 8;

Units refused(Units units) {
  // As signed numbers, the units from U+8000 on are below the blank.
  return (units < 0x20) | (units > 0x7F) | (units == '"') | (units == '\\');
}

bool isAny(Units lanes) {
  std::uint64_t halves[2];
  std::memcpy(halves, &lanes, sizeof lanes);
  return (halves[0] | halves[1]) != 0;
}

Units load(const unsigned short* units) {
  Units loaded;
  std::memcpy(&loaded, units, sizeof loaded);
  return loaded;
}

// Four units from each of two places.
Units loadHalves(const unsigned short* low, const unsigned short* high) {
  std::uint64_t halves[2];
  std::memcpy(&halves[0], low, sizeof halves[0]);
  std::memcpy(&halves[1], high, sizeof halves[1]);
  Units loaded;
  std::memcpy(&loaded, halves, sizeof loaded);
  return loaded;
}

// Writes the text as bytes; false if a unit of it needs more than that, and `to` then holds nothing of use. The last
// block overlaps the one before it, so that no unit outside the text is touched.
bool narrow(UnitView text, char* to) {
  const unsigned short* const from = text.data();
  const std::size_t size = text.size();
  Units bad{};
  if (size >= kLanes) {
    for (std::size_t at = 0;; at = at + 2 * kLanes <= size ? at + kLanes : size - kLanes) {
      const Units units = load(from + at);
      const auto bytes = __builtin_convertvector(units, Bytes);
      std::memcpy(to + at, &bytes, sizeof bytes);
      bad |= refused(units);
      if (at + kLanes == size) return !isAny(bad);
    }
  }
  if (size >= kLanes / 2) {
    const Units units = loadHalves(from, from + size - kLanes / 2);
    const auto bytes = __builtin_convertvector(units, Bytes);
    std::uint32_t halves[2];
    std::memcpy(halves, &bytes, sizeof bytes);
    std::memcpy(to, &halves[0], sizeof halves[0]);
    std::memcpy(to + size - kLanes / 2, &halves[1], sizeof halves[1]);
    return !isAny(refused(units));
  }
  if (size == 0) return true;
  // The first, the middle and the last of one to three units.
  Units few = Units{} + short{' '};
  few[0] = static_cast<short>(from[0]);
  few[1] = static_cast<short>(from[size / 2]);
  few[2] = static_cast<short>(from[size - 1]);
  to[0] = static_cast<char>(few[0]);
  to[size / 2] = static_cast<char>(few[1]);
  to[size - 1] = static_cast<char>(few[2]);
  return !isAny(refused(few));
}

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

// Writes any text as UTF-8 with what JSON escapes. A half of a pair that stands alone gives U+FFFD: whatever is in a
// file, the JSON is valid. Returns where it ends.
char* putText(UnitView text, char* to) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const unsigned unit = text[at];
    if (unit < kEscapes.size()) {
      const char escape = kEscapes[unit];
      if (escape == 'u') {
        to = putEscape(unit, to);
        continue;
      }
      if (escape != 0) *to++ = '\\';
      *to++ = static_cast<char>(escape != 0 ? escape : unit);
    } else if (isHigh(unit) && at + 1 < text.size() && isLow(text[at + 1])) {
      to = putPair(unit, text[++at], to);
    } else {
      to = putWide(isHigh(unit) || isLow(unit) ? kReplacement : unit, to);
    }
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

}  // namespace

JsonKey::JsonKey(UnitView name) {
  JsonBuffer out;
  JsonLine(out).text(name);
  text_ = ',' + std::string(out.GetString(), out.GetSize()) + ':';
  size_ = text_.size();
  text_.append(kBlock + 1, ' ');
}

void JsonLine::text(UnitView text) {
  const std::size_t room = text.size() + 2;
  char* const to = os_->Push(room);
  to[0] = '"';
  to[room - 1] = '"';
  if (!narrow(text, to + 1)) generalText(text);
}

// Goes on from the quotes that text() has put.
void JsonLine::generalText(UnitView text) {
  const std::size_t quotes = text.size() + 2;
  const std::size_t room = kMostBytes * text.size() + 2;
  char* const begin = os_->Push(room - quotes) - quotes;
  char* const end = putText(text, begin + 1);
  *end = '"';
  os_->Pop(room - static_cast<std::size_t>(end + 1 - begin));
}

void JsonLine::real(double value) {
  constexpr std::size_t kRoom = 32;
  char* const to = os_->Push(kRoom);
  os_->Pop(kRoom - static_cast<std::size_t>(std::to_chars(to, to + kRoom, value).ptr - to));
}

void JsonLine::integer(std::int64_t value) {
  constexpr std::size_t kRoom = 20;
  char* const to = os_->Push(kRoom);
  os_->Pop(kRoom - static_cast<std::size_t>(std::to_chars(to, to + kRoom, value).ptr - to));
}

void JsonLine::decimal(UnitView value, bool pointsAsText) {
  UnitView digits = value;
  const bool isNegative = !digits.empty() && digits[0] == '-';
  if (isNegative) digits.remove_prefix(1);
  // Besides the digits: a leading quote, the minus, and a zero before the point or a trailing quote.
  const std::size_t room = digits.size() + 4;
  char* const begin = os_->Push(room);
  char* const start = begin + (pointsAsText ? 1 : 0);
  *begin = '"';
  if (isNegative) *start = '-';
  char* point = nullptr;
  char* end = writeDigits(digits, start + (isNegative ? 1 : 0), &point);
  if (end == nullptr) {
    os_->Pop(room);
    return text(value);
  }
  if (point != nullptr && pointsAsText)
    *end++ = '"';
  else if (pointsAsText)
    end = std::copy(begin + 1, end, begin);
  os_->Pop(room - static_cast<std::size_t>(end - begin));
}

}  // namespace oxr::rec
