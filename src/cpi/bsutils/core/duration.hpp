#pragma once

#include <cstdint>

#include "kelunits.hpp"
#include "pwftypes.hpp"

// Durations as text of the ISO 8601 kind, read and written, and compared.
//
//   "-P1DT2H3M4.5S"   negative: a day, two hours, three minutes, four and a half seconds
//   "P1Y2M"           a year and two months
//
// A duration is years and months, or days down to microseconds, never both. The reader takes rather more than the
// standard does, in the exact ways of its table; the writer knows one form for each duration. Neither allocates.
namespace oxr::core {

enum class DurationFault : std::uint8_t {
  none,
  invalid,      // no duration
  range,        // a field above 2147483647, or fields that come to more than 64 bits of microseconds together
  tooManyDays,  // a field of more than 99999999 days
  combination,  // years or months beside days, hours, minutes or seconds
};

struct DurationReading {
  PWFInterval value{};
  DurationFault fault = DurationFault::none;
  // How many fractions were finer than a microsecond, so that digits were cut. Those before a fault count too.
  std::uint32_t fineFractions = 0;
};

// Reads a text up to its end or to its first U+0000.
DurationReading readDuration(UnitView text);

// A number as it stands in a duration: an integer as it is; a fraction, 0 to 999999 microseconds, as the digits after
// the point, without trailing zeros, so that none is left of 0. REQUIRES: the value isn't negative.
//
// Example:
//   const DurationField field(50'000, true);
//   field.write(text.appendForOverwrite(field.length()));  // "05"
class DurationField {
 public:
  DurationField(std::int32_t value, bool isFraction);

  std::uint32_t length() const { return length_; }
  void write(unsigned short* out) const {
    std::uint32_t rest = digits_;
    std::uint32_t left = length_;
    // From the end, two digits at a time, which halves the divisions.
    for (; left >= 2; left -= 2, rest /= 100) {
      out[left - 1] = static_cast<unsigned short>('0' + rest % 10);
      out[left - 2] = static_cast<unsigned short>('0' + rest / 10 % 10);
    }
    if (left != 0) *out = static_cast<unsigned short>('0' + rest % 10);
  }

 private:
  std::uint32_t digits_;  // in its lowest `length_` places
  std::uint32_t length_;
};

inline constexpr std::int64_t kMicrosecondsOfSecond = 1'000'000;
inline constexpr std::int64_t kMicrosecondsOfMinute = 60 * kMicrosecondsOfSecond;
inline constexpr std::int64_t kMicrosecondsOfHour = 60 * kMicrosecondsOfMinute;
inline constexpr std::int64_t kMicrosecondsOfDay = 24 * kMicrosecondsOfHour;

// Spells a duration in its one form, from left to right: `unit(char)` for each sign and designator, and
// `field(std::int32_t value, bool isFraction)` for each number. Fields that are 0 are left out, but for the seconds
// before a fraction and the "0" of "PT0S". A negative field belongs to no duration; it is handed to `field` like any
// other.
template <class Unit, class Field>
void spellDuration(const PWFInterval& value, Unit unit, Field field) {
  const auto spell = [&](std::int32_t number, char designator) {
    if (number == 0) return;
    field(number, false);
    unit(designator);
  };
  const std::int64_t all = value._microseconds;
  const std::int64_t ofDay = all % kMicrosecondsOfDay;
  const auto secondsOfDay = static_cast<std::int32_t>(ofDay / kMicrosecondsOfSecond);
  const auto fraction = static_cast<std::int32_t>(ofDay % kMicrosecondsOfSecond);
  if (value._sign != 0) unit('-');
  unit('P');
  spell(value._years, 'Y');
  spell(value._months, 'M');
  spell(static_cast<std::int32_t>(all / kMicrosecondsOfDay), 'D');
  if (ofDay != 0) unit('T');
  spell(secondsOfDay / 3600, 'H');
  spell(secondsOfDay / 60 % 60, 'M');
  if (secondsOfDay % 60 != 0 || fraction != 0) {
    field(secondsOfDay % 60, false);
    if (fraction != 0) {
      unit('.');
      field(fraction, true);
    }
    unit('S');
  }
  if (value._years != 0 || value._months != 0 || all != 0) return;
  for (const char zero : {'T', '0', 'S'})
    unit(zero);
}

// "-P2147483647Y2147483647M106751991DT23H59M59.999999S" and some more.
inline constexpr std::uint32_t kMaxDurationLength = 64;

// Writes the form to `out`, which has room for kMaxDurationLength units, and gives its length; 0 where a field is
// negative.
std::uint32_t writeDuration(const PWFInterval& value, unsigned short* out);

// Whether two durations are the same. Those of nothing are, whatever their signs. Otherwise the signs must be; two that
// have microseconds are compared by these alone, all others by their months, which both must have.
bool sameDuration(const PWFInterval& left, const PWFInterval& right);

}  // namespace oxr::core
