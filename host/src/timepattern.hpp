#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kelunits.hpp"

// A date-time pattern as a program: a row of fields that the reader and the writer walk along.
namespace oxr {

// What a field of a pattern stands for. Numbers come first, then names, then zones.
enum class TimeKind : std::uint8_t {
  year,
  month,
  day,
  hour,  // 0 to 23
  minute,
  second,
  fraction,
  dayOfYear,
  hour24,  // 1 to 24
  hour11,  // 0 to 11
  hour12,  // 1 to 12
  weekOfYear,
  weekOfMonth,
  weekdayInMonth,  // the second Saturday of the month: 2
  localWeekday,    // 1 for the first day of the week
  monthName,
  weekdayName,
  halfDay,
  era,
  offset,
  zoneName,
  literal,
};

constexpr std::size_t kNumberKinds = static_cast<std::size_t>(TimeKind::monthName);
// Numbers and the names that stand for numbers, which the reader keeps a value for.
constexpr std::size_t kValueKinds = static_cast<std::size_t>(TimeKind::offset);
// The kinds that a shape holds: year to fraction.
constexpr std::size_t kShapeKinds = static_cast<std::size_t>(TimeKind::fraction) + 1;

constexpr std::size_t indexOf(TimeKind kind) {
  return static_cast<std::size_t>(kind);
}
constexpr bool isNumber(TimeKind kind) {
  return indexOf(kind) < kNumberKinds;
}

// How wide a name or an offset is written; the letters of a field decide.
enum class NameWidth : std::uint8_t { abbreviated, full, narrow, shortest };
enum class OffsetForm : std::uint8_t { basic, hours, extended, localized, extendedOrZ };

struct TimeField {
  TimeKind kind;
  std::uint8_t letters = 0;
  std::uint8_t least = 0;  // digits of a number
  std::uint8_t most = 0;
  // In a row of numbers with nothing in between: the digits that the later ones take, for the first of them; and
  // whether a field is one of the later ones, which take `least` digits each.
  std::uint8_t digitsAfter = 0;
  bool isLaterInRow = false;
  bool isBeforeDigits = false;  // the next field begins with a digit
  NameWidth width = NameWidth::abbreviated;
  OffsetForm form = OffsetForm::basic;
  unsigned short unit = 0;  // of a literal
};

// The fields at the beginning of a pattern that are always equally wide: numbers of year to fraction with leading
// zeros, and ASCII literals. Texts are held against the whole of it at once, eight units at a time: each unit, less the
// lowest one of its place, is not above the place's range (9 for a digit, 0 for a literal).
struct TimeShape {
  static constexpr std::size_t kBlock = 8;
  static constexpr std::size_t kMaxWidth = 4 * kBlock;
  static constexpr std::uint8_t kAbsent = 0xFF;
  using Block = std::array<unsigned short, kBlock>;

  std::size_t width = 0;       // units; 0 where there is no such beginning, or too short a one
  std::size_t fieldCount = 0;  // of the pattern
  std::uint32_t kinds = 0;     // a bit for each that it holds
  bool endsInDigit = false;
  // It is the whole pattern, or all but an offset after it, and has year, month and day or none of them.
  bool isWhole = false;
  std::array<std::uint8_t, kShapeKinds> places;  // the unit at which a kind's digits begin
  std::uint8_t fractionDigits = 0;
  // Block i holds the units from blockBegin(i) on: the last one ends with the shape and so may overlap its neighbour.
  std::array<Block, kMaxWidth / kBlock> lowest{};
  std::array<Block, kMaxWidth / kBlock> range{};
  std::array<unsigned short, kMaxWidth> units{};  // the literals where they stand, "0" for digits

  TimeShape() { places.fill(kAbsent); }
  std::size_t blockBegin(std::size_t block) const {
    return block * kBlock + kBlock <= width ? block * kBlock : width - kBlock;
  }
};

struct TimeProgram {
  std::vector<TimeField> fields;
  TimeShape shape;
  std::size_t maxUnits = 0;   // of a text that is written, names of zones not counted
  std::uint32_t kinds = 0;    // a bit for each kind that it holds
  bool writesUtcAsZ = false;  // the pattern ends in U
};

constexpr std::uint32_t bitOf(TimeKind kind) {
  return std::uint32_t{1} << indexOf(kind);
}

// What is wrong with a pattern, in words; null for nothing. Only then the program is whole.
const char* compileTimePattern(UnitView pattern, TimeProgram& program);

}  // namespace oxr
