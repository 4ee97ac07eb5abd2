#include <algorithm>
#include <optional>

#include "records/fields/datepattern.hpp"
#include "records/fields/diagnosis.hpp"

// A pattern of fixed width is walked along with a text of that width: digits where it has letters, its own characters
// elsewhere. A text of another width the formatter refuses. Nothing is told where the calendar's answer depends on
// today.

namespace oxr::rec {

namespace {

constexpr int kUnreadableDate = 5540;  // the library's number for a text that is not what a pattern says

struct Range {
  char letter;
  std::size_t width;  // letters in a row that are as many digits; 0 for any number
  int least;
  int most;
};
constexpr Range kRanges[] = {{'y', 4, 1, 9999}, {'y', 2, 0, 99}, {'M', 2, 1, 12}, {'d', 2, 1, 31}, {'D', 3, 1, 366},
                             {'H', 2, 0, 23},   {'m', 2, 0, 59}, {'s', 2, 0, 59}, {'S', 0, 0, 0}};

const Range* rangeOf(char letter, std::size_t width) {
  const Range* const found = std::find_if(std::begin(kRanges), std::end(kRanges), [&](const Range& range) {
    return range.letter == letter && (range.width == width || range.width == 0);
  });
  return found == std::end(kRanges) ? nullptr : found;
}

// Characters of a text by the pattern; nothing if that may differ.
std::optional<std::size_t> widthOf(std::string_view pattern) {
  PatternRuns runs(pattern);
  std::size_t width = 0;
  std::string letters;
  while (const std::optional<PatternRun> run = runs.next()) {
    if (static_cast<unsigned char>(run->literal) >= 0x80) return std::nullopt;
    if (run->letter != 0 &&
        (rangeOf(run->letter, run->width) == nullptr || letters.find(run->letter) != std::string::npos))
      return std::nullopt;
    if (run->letter != 0) letters += run->letter;
    width += run->width;
  }
  return width;
}

FaultReason unreadable(FaultCode code, std::int64_t first, std::int64_t second, std::int64_t third = 0) {
  return {.code = code, .message = kUnreadableDate, .numbers = {first, second, third}};
}

constexpr int kNotTold = -1;

// What is told of the day.
struct Told {
  int year = kNotTold;  // or its last two digits, if the century is not told
  bool hasCentury = false;
  int month = kNotTold;
  int day = kNotTold;
  bool hasDayOfYear = false;

  void add(const PatternRun& run, int value) {
    if (run.letter == 'y') year = value;
    if (run.letter == 'y') hasCentury = run.width == 4;
    if (run.letter == 'M') month = value;
    if (run.letter == 'd') day = value;
    hasDayOfYear |= run.letter == 'D';
  }

  // As many as the month may have where it is not sure.
  int mostDays() const {
    constexpr int kDays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = year % 4 == 0 && (!hasCentury || year % 100 != 0 || year % 400 == 0);
    return month == 2 && year != kNotTold && !isLeap ? 28 : kDays[month - 1];
  }
};

// The first character that is neither a digit nor, where the pattern has one for itself, that one.
std::optional<std::size_t> badCharacter(std::string_view pattern, UnitView text) {
  PatternRuns runs(pattern);
  for (std::optional<PatternRun> run = runs.next(); run; run = runs.next())
    for (std::size_t i = run->at; i < run->at + run->width; ++i) {
      const bool isDigit = text[i] >= '0' && text[i] <= '9';
      if (run->letter == 0 ? text[i] != static_cast<unsigned char>(run->literal) : !isDigit) return i;
    }
  return std::nullopt;
}

int numberIn(UnitView digits) {
  int value = 0;
  for (const unsigned short digit : digits)
    value = 10 * value + (digit - '0');
  return value;
}

}  // namespace

FaultReason dateFault(std::string_view pattern, UnitView text) {
  const std::optional<std::size_t> width = widthOf(pattern);
  if (!width) return {};
  if (text.size() != *width)
    return unreadable(FaultCode::dateLength, static_cast<std::int64_t>(text.size()), static_cast<std::int64_t>(*width));
  if (const auto bad = badCharacter(pattern, text))
    return unreadable(FaultCode::dateCharacter, static_cast<std::int64_t>(*bad), 0, text[*bad]);
  Told told;
  PatternRuns runs(pattern);
  for (std::optional<PatternRun> run = runs.next(); run; run = runs.next()) {
    if (run->letter == 0 || run->letter == 'S') continue;
    const int value = numberIn(text.substr(run->at, run->width));
    const Range& range = *rangeOf(run->letter, run->width);
    if (value < range.least || value > range.most) return unreadable(FaultCode::datePart, run->letter, value);
    told.add(*run, value);
  }
  if (told.month != kNotTold && told.day > told.mostDays() && !told.hasDayOfYear)
    return unreadable(FaultCode::dateDay, told.month, told.day);
  return {};
}

}  // namespace oxr::rec
