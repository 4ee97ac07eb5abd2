// The shapes are tables: for each length of a text the characters to look at, the more telling ones first, and the
// index of the pattern that they lead to.

#include "core/isoshape.hpp"

#include <unicode/uchar.h>

#include <cstdint>
#include <iterator>
#include <span>

namespace oxr::core {

namespace {

constexpr std::string_view kDatePatterns[] = {"-yy",     "yyyy",    "--MM",      "---dd",     "-yy-MM",
                                              "yyyy-MM", "--MM-dd", "-yy-MM-dd", "yyyy-MM-dd"};

// "ZZ" takes an offset of hours, or of hours and minutes, "ZZZ" one with minutes or "Z".
constexpr std::string_view kTimePatterns[] = {
    "HH",
    "HH:mm",
    "HHZZ",
    "HH:mm:ss",
    "HH:mmZZ",
    "HH:mm:ss.S",
    "HH:mm:ss,S",
    "HH:mm:ss.SS",
    "HH:mm:ss,SS",
    "HH:mm:ssZZ",
    "HH:mmZZZ",
    "HH:mm:ss.SSS",
    "HH:mm:ss,SSS",
    "HH:mm:ss.SZZ",
    "HH:mm:ss,SZZ",
    "HH:mm:ss.SSZZ",
    "HH:mm:ss,SSZZ",
    "HH:mm:ssZZZ",
    "HH:mm:ss.SSSZZ",
    "HH:mm:ss,SSSZZ",
    "HH:mm:ss.SZZZ",
    "HH:mm:ss,SZZZ",
    "HH:mm:ss.SSZZZ",
    "HH:mm:ss,SSZZZ",
    "HH:mm:ss.SSSZZZ",
    "HH:mm:ss,SSSZZZ",
};
static_assert(std::size(kTimePatterns) == 26);

// Dates that may have a time after them: those whose last part is the day.
constexpr bool mayHaveTime(int date) {
  return date == 3 || date >= 6;
}

constexpr char kAny = 0, kDigit = 'd', kSign = 's';  // else the character itself

struct Test {
  std::uint8_t position = 0;
  char wanted = kAny;
};

// A text of this length that passes both tests has the pattern with this index. The first such rule counts.
struct Rule {
  std::uint8_t length;
  std::int8_t index;
  Test first;
  Test second = {};
};

// clang-format off
constexpr Rule kDateRules[] = {
    {3, 0, {0, '-'}},
    {4, 2, {0, '-'}},           {4, 1, {0, kDigit}},
    {5, 3, {0, '-'}},
    {6, 4, {0, '-'}},
    {7, 6, {4, '-'}, {0, '-'}}, {7, 5, {4, '-'}},
    {9, 7, {0, '-'}},
    {10, 8, {4, '-'}},
};

constexpr Rule kTimeRules[] = {
    {2, 0, {0, kDigit}},
    {5, 1, {2, ':'}},              {5, 2, {2, kSign}},
    {6, 10, {5, 'Z'}},
    {8, 3, {5, ':'}},              {8, 4, {5, kSign}},
    {9, 17, {8, 'Z'}},
    {10, 5, {8, '.'}},             {10, 6, {8, ','}},
    {11, 20, {8, '.'}, {10, 'Z'}}, {11, 7, {8, '.'}},
    {11, 21, {8, ','}, {10, 'Z'}}, {11, 8, {8, ','}},
    {11, 9, {2, ':'}, {5, ':'}},   {11, 10, {2, ':'}},
    {12, 22, {8, '.'}, {11, 'Z'}}, {12, 11, {8, '.'}},
    {12, 23, {8, ','}, {11, 'Z'}}, {12, 12, {8, ','}},
    {13, 24, {8, '.'}, {12, 'Z'}}, {13, 13, {8, '.'}},
    {13, 25, {8, ','}, {12, 'Z'}}, {13, 14, {8, ','}},
    {14, 15, {8, '.'}},            {14, 16, {8, ','}},   {14, 17, {8, kSign}},
    {15, 18, {8, '.'}},            {15, 19, {8, ','}},
    {16, 20, {8, '.'}},            {16, 21, {8, ','}},
    {17, 22, {8, '.'}},            {17, 23, {8, ','}},
    {18, 24, {8, '.'}},            {18, 25, {8, ','}},
};
// clang-format on

// REQUIRES: the position lies inside the text, as that of every rule does in a text of its length.
bool passes(UnitView text, const Test& test) {
  const unsigned short unit = text[test.position];
  switch (test.wanted) {
    case kAny:
      return true;
    case kDigit:
      return u_isdigit(unit) != 0;
    case kSign:
      return unit == '+' || unit == '-';
    default:
      return unit == static_cast<unsigned short>(test.wanted);
  }
}

int indexBy(std::span<const Rule> rules, UnitView text) {
  for (const Rule& rule : rules)
    if (rule.length == text.size() && passes(text, rule.first) && passes(text, rule.second)) return rule.index;
  return -1;
}

// A text without a "T": some lengths are those of dates only, and some of both.
bool looksLikeDate(UnitView text) {
  switch (text.size()) {
    case 3:
    case 4:
    case 7:
      return true;
    case 5:
    case 6:
    case 9:
      return text[0] == '-';
    case 10:
      return text[4] == '-';
    default:
      return false;
  }
}

struct OutputPattern {
  std::string_view typeName;
  std::string_view pattern;
};
constexpr OutputPattern kOutputPatterns[] = {
    {"date", "yyyy-MM-dd"}, {"time", "HH:mm:ss.SSSZZZ"}, {"gDay", "---dd"},         {"gYear", "yyyy"},
    {"gMonth", "--MM"},     {"gMonthDay", "--MM-dd"},    {"gYearMonth", "yyyy-MM"},
};

}  // namespace

int isoDateIndex(UnitView text) {
  return indexBy(kDateRules, text);
}

int isoTimeIndex(UnitView text) {
  return indexBy(kTimeRules, text);
}

bool isoShapeOf(UnitView text, IsoShape& shape) {
  const std::size_t marker = text.find(u'T');
  const bool isMarked = marker == 0, isBoth = marker != UnitView::npos && !isMarked;
  if (isBoth || (!isMarked && looksLikeDate(text))) {
    shape.date = isoDateIndex(text.substr(0, marker));
    if (shape.date < 0) return false;
    if (!isBoth) return true;
  }
  shape.isMarked = isMarked;
  shape.time = isoTimeIndex(marker == UnitView::npos ? text : text.substr(marker + 1));
  return shape.time >= 0 && (!isBoth || mayHaveTime(shape.date));
}

void appendIsoPattern(const IsoShape& shape, IsoPattern& pattern) {
  if (shape.date >= 0) pattern.append(kDatePatterns[shape.date]);
  if (shape.isMarked || (shape.date >= 0 && shape.time >= 0)) pattern.append("'T'");
  if (shape.time >= 0) pattern.append(kTimePatterns[shape.time]);
}

std::string_view isoOutputPattern(UnitView typeName) {
  for (const OutputPattern& output : kOutputPatterns)
    if (isText(typeName, output.typeName)) return output.pattern;
  return kIsoDateTimePattern;
}

}  // namespace oxr::core
