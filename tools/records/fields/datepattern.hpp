#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace oxr::rec {

// A run of a letter in a pattern of the date-time formatter, or a character that stands for itself.
struct PatternRun {
  char letter = 0;  // 0: it is `literal`
  char literal = 0;
  std::size_t at = 0;  // where it begins in a text that has as many characters for each run as the pattern
  std::size_t width = 1;
};

// A pattern, run by run.
class PatternRuns {
 public:
  explicit PatternRuns(std::string_view pattern) : rest_(pattern) {}

  // Nothing at the end.
  std::optional<PatternRun> next();

 private:
  PatternRun take(PatternRun run);

  std::string_view rest_;
  bool isQuoted_ = false;
  std::size_t at_ = 0;
};

// What a pattern of the date-time formatter tells about a date.
struct DatePattern {
  std::string iso;          // the pattern of the same date in ISO form: "yyyy-MM-dd'T'HH:mm:ss.SSS"
  std::size_t digits = 0;   // units of a text by the pattern, quotes left out
  bool isAllDigits = true;  // a text by it has nothing but digits
  // Why no date, or not each, can be read by it: "has no year (y)". What it lacks of a date that it has a part of, the
  // formatter would take from today.
  std::string fault{};
};

// Gives the parts of a date that the pattern has: year; year and month; all of it; hours to seconds, the fraction with
// as many digits as the pattern has, and the zone.
DatePattern readDatePattern(std::string_view pattern);

}  // namespace oxr::rec
