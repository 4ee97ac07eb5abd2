// Compiles date-time patterns.
//
// A pattern is cut into runs of one letter, quoted text and single units. Each run of a letter becomes one field by the
// table of letters. Afterwards three things are worked out that depend on a field's neighbours: how the digits of a row
// of numbers are shared out, what of the beginning is always equally wide, and how much room a text can take.

#include "timepattern.hpp"

#include <algorithm>
#include <optional>

namespace oxr {

namespace {

// More letters than this in a row mean nothing sensible and would only ask for room.
constexpr std::size_t kMaxLetters = 64;
// Room for the longest name of a month, a day, half a day or an era, and for a localized offset.
constexpr std::size_t kNameRoom = 64;
constexpr std::size_t kOffsetRoom = 9;  // "+hh:mm:ss"

// A letter as a number: the widest value decides how many digits a field of few letters may have.
struct NumberLetter {
  char letter;
  TimeKind kind;
  std::uint8_t widest;
};
constexpr NumberLetter kNumberLetters[] = {
    {'y', TimeKind::year, 4},       {'M', TimeKind::month, 2},          {'d', TimeKind::day, 2},
    {'D', TimeKind::dayOfYear, 3},  {'F', TimeKind::weekdayInMonth, 1}, {'e', TimeKind::localWeekday, 1},
    {'w', TimeKind::weekOfYear, 2}, {'W', TimeKind::weekOfMonth, 1},    {'H', TimeKind::hour, 2},
    {'k', TimeKind::hour24, 2},     {'K', TimeKind::hour11, 2},         {'h', TimeKind::hour12, 2},
    {'m', TimeKind::minute, 2},     {'s', TimeKind::second, 2},         {'S', TimeKind::fraction, 0},
};

// A letter that stands for a name: from how many letters on, and the width of the name with so many and more.
struct NameLetter {
  char letter;
  TimeKind kind;
  std::uint8_t fewest;
  std::array<NameWidth, 4> widths;  // of fewest or up to 3 letters, of 4, 5, 6
  std::uint8_t mostLetters;
};
constexpr NameWidth kAbbreviated = NameWidth::abbreviated, kFull = NameWidth::full, kNarrow = NameWidth::narrow,
                    kShortest = NameWidth::shortest;
constexpr NameLetter kNameLetters[] = {
    {'M', TimeKind::monthName, 3, {kAbbreviated, kFull, kNarrow}, 5},
    {'E', TimeKind::weekdayName, 1, {kAbbreviated, kFull, kNarrow, kShortest}, 6},
    {'e', TimeKind::weekdayName, 3, {kAbbreviated, kFull, kNarrow, kShortest}, 6},
    {'a', TimeKind::halfDay, 1, {kAbbreviated, kAbbreviated, kNarrow}, 5},
    {'G', TimeKind::era, 1, {kAbbreviated, kFull, kNarrow}, 5},
    {'z', TimeKind::zoneName, 1, {kAbbreviated, kFull}, 4},
};

constexpr std::size_t kMaxOffsetLetters = 5;

bool isLetter(unsigned short unit) {
  return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

std::optional<TimeField> nameField(unsigned short letter, std::size_t count) {
  for (const NameLetter& entry : kNameLetters) {
    if (entry.letter != letter || count < entry.fewest || count > entry.mostLetters) continue;
    TimeField field{entry.kind, static_cast<std::uint8_t>(count)};
    field.width = entry.widths[count <= 3 ? 0 : count - 3];
    return field;
  }
  return std::nullopt;
}

std::optional<TimeField> numberField(unsigned short letter, std::size_t count) {
  for (const NumberLetter& entry : kNumberLetters) {
    if (entry.letter != letter) continue;
    // From three letters on these two are names; too many of a name's letters are not a number either.
    if (count >= 3 && (entry.kind == TimeKind::month || entry.kind == TimeKind::localWeekday)) return std::nullopt;
    const auto letters = static_cast<std::uint8_t>(count);
    TimeField field{entry.kind, letters, letters, std::max(letters, entry.widest)};
    if (entry.kind == TimeKind::year && count == 2) field.most = 2;  // the last two digits of the year
    return field;
  }
  return std::nullopt;
}

std::optional<TimeField> fieldOf(unsigned short letter, std::size_t count) {
  if (letter == 'Z') {
    if (count > kMaxOffsetLetters) return std::nullopt;
    TimeField field{TimeKind::offset, static_cast<std::uint8_t>(count)};
    field.form = static_cast<OffsetForm>(count - 1);
    return field;
  }
  const std::optional<TimeField> name = nameField(letter, count);
  return name ? name : numberField(letter, count);
}

// Cuts the pattern into fields.
class Cutter {
 public:
  Cutter(UnitView pattern, TimeProgram& program) : rest_(pattern), program_(program) {}

  const char* cut() {
    while (!rest_.empty()) {
      const unsigned short unit = rest_.front();
      const char* const fault = unit == '\'' ? cutQuoted() : isLetter(unit) ? cutLetters() : cutLiteral();
      if (fault != nullptr) return fault;
    }
    return nullptr;
  }

 private:
  void addLiteral(unsigned short unit) {
    TimeField field{TimeKind::literal};
    field.unit = unit;
    program_.fields.push_back(field);
  }

  const char* cutLiteral() {
    addLiteral(rest_.front());
    rest_.remove_prefix(1);
    return nullptr;
  }

  // Two quotes are one, outside of quoted text and inside.
  const char* cutQuoted() {
    rest_.remove_prefix(1);
    if (!rest_.empty() && rest_.front() == '\'') return cutLiteral();
    while (!rest_.empty()) {
      const unsigned short unit = rest_.front();
      rest_.remove_prefix(1);
      if (unit == '\'') {
        if (rest_.empty() || rest_.front() != '\'') return nullptr;
        rest_.remove_prefix(1);
      }
      addLiteral(unit);
    }
    return "A quote is not closed";
  }

  const char* cutLetters() {
    const unsigned short letter = rest_.front();
    const std::size_t count = std::min(rest_.find_first_not_of(letter), rest_.size());
    if (letter == 'U') {
      if (rest_.size() != 1) return "U is not the last letter";
      program_.writesUtcAsZ = true;
    } else {
      const std::optional<TimeField> field = count <= kMaxLetters ? fieldOf(letter, count) : std::nullopt;
      if (!field) return "A letter has no meaning, or stands too often";
      program_.fields.push_back(*field);
    }
    rest_.remove_prefix(count);
    return nullptr;
  }

  UnitView rest_;
  TimeProgram& program_;
};

bool beginsWithDigit(const TimeField& field) {
  return isNumber(field.kind) || (field.kind == TimeKind::literal && field.unit >= '0' && field.unit <= '9');
}

// Shares the digits out in rows of numbers.
void linkRows(std::vector<TimeField>& fields) {
  for (std::size_t i = fields.size(); i-- > 1;) {
    TimeField& field = fields[i - 1];
    const TimeField& next = fields[i];
    field.isBeforeDigits = beginsWithDigit(next);
    if (!isNumber(field.kind) || !isNumber(next.kind)) continue;
    field.digitsAfter = static_cast<std::uint8_t>(std::min(255, next.least + next.digitsAfter));
    fields[i].isLaterInRow = true;
    fields[i].digitsAfter = 0;
  }
}

// Whether every text of the field has as many digits as it has letters and, for literals, one ASCII unit no digit.
bool isFixed(const TimeField& field) {
  if (field.kind == TimeKind::literal) return field.unit < 0x80 && !beginsWithDigit(field);
  if (indexOf(field.kind) >= kShapeKinds) return false;
  if (field.kind == TimeKind::fraction) return field.letters <= 6;
  return field.letters == (field.kind == TimeKind::year ? 4 : 2);
}

void addToShape(TimeShape& shape, const TimeField& field) {
  if (field.kind == TimeKind::literal) {
    shape.units[shape.width++] = field.unit;
    shape.endsInDigit = false;
    return;
  }
  shape.kinds |= bitOf(field.kind);
  shape.places[indexOf(field.kind)] = static_cast<std::uint8_t>(shape.width);
  if (field.kind == TimeKind::fraction) shape.fractionDigits = field.letters;
  std::fill_n(shape.units.begin() + static_cast<std::ptrdiff_t>(shape.width), field.letters, '0');
  shape.width += field.letters;
  shape.endsInDigit = true;
}

// The shape of the fields from the first on, as far as there is one.
TimeShape shapeOf(const std::vector<TimeField>& fields) {
  TimeShape shape;
  for (const TimeField& field : fields) {
    const std::size_t width = field.kind == TimeKind::literal ? 1 : field.letters;
    if (!isFixed(field) || (shape.kinds & bitOf(field.kind)) != 0 || shape.width + width > TimeShape::kMaxWidth) break;
    addToShape(shape, field);
    ++shape.fieldCount;
  }
  // A number that follows at once would share the digits.
  const bool isCut = shape.fieldCount < fields.size() && shape.endsInDigit && beginsWithDigit(fields[shape.fieldCount]);
  if (shape.width < TimeShape::kBlock || isCut) return TimeShape();
  constexpr std::uint32_t kDate = bitOf(TimeKind::year) | bitOf(TimeKind::month) | bitOf(TimeKind::day);
  shape.isWhole = ((shape.kinds & kDate) == kDate || (shape.kinds & kDate) == 0) &&
                  (shape.fieldCount == fields.size() ||
                   (shape.fieldCount + 1 == fields.size() && fields.back().kind == TimeKind::offset &&
                    fields.back().form != OffsetForm::localized));
  for (std::size_t block = 0; block * TimeShape::kBlock < shape.width; ++block)
    for (std::size_t i = 0; i < TimeShape::kBlock; ++i) {
      const unsigned short unit = shape.units[shape.blockBegin(block) + i];
      shape.lowest[block][i] = unit;
      shape.range[block][i] = unit == '0' ? 9 : 0;
    }
  return shape;
}

// The most units that a field is written with. A name of a zone can be of any length and is measured when it is known.
std::size_t roomFor(const TimeField& field) {
  if (field.kind == TimeKind::literal) return 1;
  if (isNumber(field.kind)) return std::max<std::size_t>(field.most, 4);
  if (field.kind == TimeKind::zoneName) return 0;
  return field.kind == TimeKind::offset && field.form != OffsetForm::localized ? kOffsetRoom : kNameRoom;
}

}  // namespace

const char* compileTimePattern(UnitView pattern, TimeProgram& program) {
  if (const char* const fault = Cutter(pattern, program).cut()) return fault;
  linkRows(program.fields);
  program.shape = shapeOf(program.fields);
  for (const TimeField& field : program.fields) {
    program.kinds |= bitOf(field.kind);
    program.maxUnits += roomFor(field);
  }
  program.maxUnits = std::max(program.maxUnits, TimeShape::kMaxWidth);  // a shape is copied whole
  return nullptr;
}

}  // namespace oxr
