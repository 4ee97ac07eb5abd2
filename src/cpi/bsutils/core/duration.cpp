// The reader is a table: the state is the designator that was read last, and the cell of the state's row in the next
// designator's column says what that one does. What stands between two designators is a number, which may be missing.
//
// Some cells look like faults and are meant (Intervals.AreReadOrRefused): "T" may come again and again and takes the
// state back each time, "H" and "S" need none before them, and a number that is not there counts as 0.

#include "core/duration.hpp"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>

#include "core/decimaltext.hpp"
#include "core/numbertextwrite.hpp"

namespace oxr::core {

namespace {

enum State : std::uint8_t { kStart, kYears, kMonths, kDays, kTime, kHours, kMinutes, kFraction, kSeconds, kStates };

enum Effect : std::uint8_t {
  none,      // refused
  setYears,  // the number becomes the years; the others of this kind likewise
  setMonths,
  addDays,  // the number is added; the others of this kind likewise
  addHours,
  addMinutes,
  addWhole,     // the seconds before a point
  addSeconds,   // the seconds without a fraction
  addFraction,  // the number is the digits after the point
  startTime,    // no number may be there
  kEffects
};

constexpr std::uint8_t kDesignators = 7;

// clang-format off
constexpr Effect kEffectOf[kStates][kDesignators + 1] = {
    //               Y         M           D        T          H         .         S            other
    /* start    */ { setYears, setMonths,  addDays, startTime, addHours, addWhole, addSeconds,  none },
    /* years    */ { none,     setMonths,  addDays, startTime, addHours, addWhole, addSeconds,  none },
    /* months   */ { none,     none,       addDays, startTime, addHours, addWhole, addSeconds,  none },
    /* days     */ { none,     none,       none,    startTime, addHours, addWhole, addSeconds,  none },
    /* time     */ { none,     addMinutes, none,    startTime, addHours, addWhole, addSeconds,  none },
    /* hours    */ { none,     addMinutes, none,    startTime, none,     addWhole, addSeconds,  none },
    /* minutes  */ { none,     none,       none,    startTime, none,     addWhole, addSeconds,  none },
    /* fraction */ { none,     none,       none,    startTime, none,     none,     addFraction, none },
    /* seconds  */ { none,     none,       none,    startTime, none,     none,     none,        none },
};

struct Consequence {
  State next;
  std::int64_t microseconds = 0;  // of a number of 1
};
constexpr Consequence kConsequences[kEffects] = {
    /* none        */ { kStart },
    /* setYears    */ { kYears },
    /* setMonths   */ { kMonths },
    /* addDays     */ { kDays, kMicrosecondsOfDay },
    /* addHours    */ { kHours, kMicrosecondsOfHour },
    /* addMinutes  */ { kMinutes, kMicrosecondsOfMinute },
    /* addWhole    */ { kFraction, kMicrosecondsOfSecond },
    /* addSeconds  */ { kSeconds, kMicrosecondsOfSecond },
    /* addFraction */ { kSeconds, 1 },
    /* startTime   */ { kTime },
};
// clang-format on

// The column of each ASCII character; the last one for what designates nothing.
constexpr std::array<std::uint8_t, 128> kColumns = [] {
  std::array<std::uint8_t, 128> columns{};
  std::fill(columns.begin(), columns.end(), kDesignators);
  constexpr char kOrder[] = "YMDTH.S";
  for (std::uint8_t column = 0; column < kDesignators; ++column)
    columns[static_cast<unsigned char>(kOrder[column])] = column;
  return columns;
}();
static_assert(kEffectOf[kTime][kColumns['M']] == addMinutes && kEffectOf[kStart][kColumns['M']] == setMonths);

constexpr std::int64_t kMaxNumber = 2'147'483'647;
constexpr std::int64_t kMaxDays = 99'999'999;
constexpr std::uint32_t kFractionDigits = 6;  // down to microseconds
// No product of a number and its microseconds passes 64 bits; only their sum can.
static_assert(kMaxNumber < INT64_MAX / kMicrosecondsOfHour && kMaxDays < INT64_MAX / kMicrosecondsOfDay);

bool isDigit(unsigned short unit) {
  return isAsciiDigit(unit) || (unit > 0x7F && u_isdigit(unit));
}

class Reader {
 public:
  explicit Reader(UnitView text) : start_(text.data()), next_(start_), end_(start_ + text.size()) {}

  DurationReading read() {
    DurationReading reading;
    reading.value._sign = unit() == '-';
    next_ += reading.value._sign;
    if (unit() != 'P') {
      reading.fault = DurationFault::invalid;
      return reading;
    }
    ++next_;
    // A text without any field is none either.
    do
      reading.fault = readField(reading.value);
    while (reading.fault == DurationFault::none && unit() != 0);
    reading.value._microseconds = microseconds_;
    reading.fineFractions = fineFractions_;
    if (reading.fault == DurationFault::none) reading.fault = faultOfAll(reading.value);
    return reading;
  }

 private:
  // The unit to be read; the end of the text is a zero like the terminator.
  unsigned short unit() const { return next_ != end_ ? *next_ : 0; }

  // Reads a number, if there is one, and its designator.
  DurationFault readField(PWFInterval& value) {
    // The digits of a fraction come after a 1, so that leading zeros keep their place.
    std::int64_t number = state_ == kFraction;
    const unsigned short* const first = next_;
    // A digit of another script counts by its distance from "0" (Intervals.AreReadOrRefused). A number beyond the range
    // stays there, whatever follows.
    unsigned short designator;
    for (; isDigit(designator = unit()); ++next_) {
      number = number * 10 + designator - '0';
      if (number > kMaxNumber) [[unlikely]]
        number = kMaxNumber + 1;
    }
    const auto digits = static_cast<std::size_t>(next_ - first);
    if (designator == 0) return DurationFault::invalid;
    if (number > kMaxNumber) return DurationFault::range;
    const std::uint8_t column = designator < kColumns.size() ? kColumns[designator] : kDesignators;
    const Effect effect = kEffectOf[state_][column];
    if (effect == addFraction) number = microsecondsOfFraction(number, digits);
    state_ = kConsequences[effect].next;
    ++next_;
    switch (effect) {
      case none:
        return DurationFault::invalid;
      case startTime:
        return digits == 0 ? DurationFault::none : DurationFault::invalid;
      case setYears:
        value._years = static_cast<std::int32_t>(number);
        return DurationFault::none;
      case setMonths:
        value._months = static_cast<std::int32_t>(number);
        return DurationFault::none;
      default:
        break;
    }
    if (effect == addDays && number > kMaxDays) return DurationFault::tooManyDays;
    const bool isTooLong =
        __builtin_add_overflow(microseconds_, number * kConsequences[effect].microseconds, &microseconds_);
    return isTooLong ? DurationFault::range : DurationFault::none;
  }

  // The microseconds of a fraction, given as its digits after a 1. More digits than six are cut, not rounded. A
  // fraction without digits is taken for one with as many as the position of its "S" says: "PT1.S" has 100
  // microseconds (Intervals.AreReadOrRefused).
  std::int64_t microsecondsOfFraction(std::int64_t number, std::size_t digits) {
    const std::size_t count = digits != 0 ? digits : static_cast<std::size_t>(next_ - start_);
    if (count <= kFractionDigits) {
      number *= static_cast<std::int64_t>(kPowersOfTen[kFractionDigits - count]);
    } else {
      ++fineFractions_;
      do
        number /= 10;
      while (number >= 10 * kMicrosecondsOfSecond);
    }
    return number % kMicrosecondsOfSecond;
  }

  // A text may end on the point, but not on the "T".
  DurationFault faultOfAll(const PWFInterval& value) const {
    if (state_ == kTime) return DurationFault::invalid;
    const bool isCombined = (value._years != 0 || value._months != 0) && value._microseconds != 0;
    return isCombined ? DurationFault::combination : DurationFault::none;
  }

  const unsigned short *start_, *next_, *end_;
  State state_ = kStart;
  std::int64_t microseconds_ = 0;
  std::uint32_t fineFractions_ = 0;
};

}  // namespace

DurationReading readDuration(UnitView text) {
  return Reader(text).read();
}

DurationField::DurationField(std::int32_t value, bool isFraction) : digits_(static_cast<std::uint32_t>(value)) {
  length_ = isFraction ? kFractionDigits : IntegerText::digitCount(digits_);
  if (isFraction)
    for (; length_ != 0 && digits_ % 10 == 0; --length_)
      digits_ /= 10;
}

std::uint32_t writeDuration(const PWFInterval& value, unsigned short* out) {
  if (value._years < 0 || value._months < 0 || value._microseconds < 0) return 0;
  const unsigned short* const start = out;
  spellDuration(
      value, [&](char unit) { *out++ = static_cast<unsigned char>(unit); },
      [&](std::int32_t number, bool isFraction) {
        const DurationField field(number, isFraction);
        field.write(out);
        out += field.length();
      });
  return static_cast<std::uint32_t>(out - start);
}

bool sameDuration(const PWFInterval& left, const PWFInterval& right) {
  const auto hasMonths = [](const PWFInterval& value) { return value._years != 0 || value._months != 0; };
  const auto months = [](const PWFInterval& value) {
    return static_cast<std::uint32_t>(value._years) * 12 + static_cast<std::uint32_t>(value._months);
  };
  const bool bothHaveTime = left._microseconds != 0 && right._microseconds != 0;
  const bool isAnyTime = left._microseconds != 0 || right._microseconds != 0;
  if (!isAnyTime && !hasMonths(left) && !hasMonths(right)) return true;
  if (left._sign != right._sign) return false;
  if (bothHaveTime) return left._microseconds == right._microseconds;
  return hasMonths(left) && hasMonths(right) && months(left) == months(right);
}

}  // namespace oxr::core
