#include "records/fields/datepattern.hpp"

#include <algorithm>
#include <iterator>

#include "kelexception.hpp"
#include "keltimestampformatter.hpp"
#include "kelwstringconvertor.hpp"
#include "records/counted.hpp"

namespace oxr::rec {

namespace {

constexpr bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Letters that stand for a number, with the digits of the largest one.
struct NumberLetter {
  char letter;
  std::size_t digits;
};
constexpr NumberLetter kNumbers[] = {{'y', 2}, {'M', 2}, {'d', 2}, {'D', 3}, {'F', 1}, {'e', 1}, {'w', 2}, {'W', 1},
                                     {'H', 2}, {'k', 2}, {'K', 2}, {'h', 2}, {'m', 2}, {'s', 2}, {'S', 1}};

// Nothing for a literal and for a name: months and days of the week have one from three letters on.
const NumberLetter* numberOf(const PatternRun& run) {
  if ((run.letter == 'M' || run.letter == 'e') && run.width >= 3) return nullptr;
  const auto* const found = std::find_if(std::begin(kNumbers), std::end(kNumbers),
                                         [&run](const NumberLetter& number) { return number.letter == run.letter; });
  return found == std::end(kNumbers) ? nullptr : found;
}

bool compiles(std::string_view pattern) {
  try {
    static_cast<void>(KelTimeStampPattern(fromUtf8(std::string(pattern))));
    return true;
  } catch (const KelRecoverableException&) {
    return false;
  }
}

std::string textOf(const PatternRun& run) {
  return std::string(run.width, run.letter);
}

// A day is told by its number in the year or the month, or by a week and a day of that.
std::string missingIn(std::string_view letters) {
  const auto has = [&](std::string_view any) { return letters.find_first_of(any) != std::string_view::npos; };
  if (!has("MdDeEFwW")) return {};
  if (!has("y")) return "has no year (y)";
  if (!has("dDeEFwW") || has("D") || (has("w") && has("eE"))) return {};
  if (!has("Mw")) return "has no month (M)";
  return has("d") || (has("FW") && has("eE")) ? "" : "has no day (d)";
}

// What the formatter has no meaning for.
std::string meaningless(std::string_view pattern) {
  if (compiles(pattern)) return {};
  PatternRuns runs(pattern);
  for (std::optional<PatternRun> run = runs.next(); run; run = runs.next())
    if (run->letter != 0 && !compiles(textOf(*run)))
      return "has " + textOf(*run) + ", which stands for nothing; text goes between single quotes";
  return std::count(pattern.begin(), pattern.end(), '\'') % 2 != 0 ? "has a quote that is not closed"
                                                                   : "has a U that is not its last letter";
}

// Of several hours the last one counts.
std::string halfDayMissing(std::string_view letters) {
  const std::size_t hour = letters.find_last_of("HkKh");
  if (hour == std::string_view::npos || letters[hour] == 'H' || letters[hour] == 'k') return {};
  if (letters.find('a') != std::string_view::npos) return {};
  return "has hours up to 12 (h, K) and no half of the day (a); H counts up to 23";
}

// A number right behind another one has as many digits as letters, so that both can be told apart.
std::string tooNarrow(std::string_view pattern) {
  PatternRuns runs(pattern);
  bool isBehindNumber = false;
  for (std::optional<PatternRun> run = runs.next(); run; run = runs.next()) {
    const NumberLetter* const number = numberOf(*run);
    const bool isYear = number != nullptr && number->letter == 'y';
    if (isBehindNumber && number != nullptr && (run->width < number->digits || (isYear && run->width == 3)))
      return "has " + textOf(*run) + " right behind other digits, where that is " + counted(run->width, "digit") +
             "; it takes " + (isYear ? "yy or yyyy" : std::string(number->digits, run->letter));
    isBehindNumber = number != nullptr;
  }
  return {};
}

std::string faultOf(std::string_view pattern, std::string_view letters) {
  for (std::string fault : {missingIn(letters), meaningless(pattern), halfDayMissing(letters), tooNarrow(pattern)})
    if (!fault.empty()) return fault;
  return {};
}

}  // namespace

std::optional<PatternRun> PatternRuns::next() {
  while (!rest_.empty() && rest_[0] == '\'') {
    const bool isQuote = rest_.size() > 1 && rest_[1] == '\'';
    if (isQuote) rest_.remove_prefix(1);
    if (isQuote) return take({.literal = '\''});
    rest_.remove_prefix(1);
    isQuoted_ = !isQuoted_;
  }
  if (rest_.empty()) return std::nullopt;
  if (isQuoted_ || !isLetter(rest_[0])) return take({.literal = rest_[0]});
  return take({.letter = rest_[0], .width = std::min(rest_.find_first_not_of(rest_[0]), rest_.size())});
}

PatternRun PatternRuns::take(PatternRun run) {
  rest_.remove_prefix(run.width);
  run.at = at_;
  at_ += run.width;
  return run;
}

DatePattern readDatePattern(std::string_view pattern) {
  DatePattern result;
  std::string letters;
  PatternRuns runs(pattern);
  for (std::optional<PatternRun> run = runs.next(); run; run = runs.next()) {
    if (run->letter != 0) letters += textOf(*run);
    result.digits += run->width;
    const bool isDigit = run->literal >= '0' && run->literal <= '9';
    result.isAllDigits = result.isAllDigits && (isDigit || numberOf(*run) != nullptr);
  }
  result.fault = faultOf(pattern, letters);
  const auto has = [&](std::string_view any) { return letters.find_first_of(any) != std::string::npos; };
  const bool hasDay = has("dDeEFwW");
  if (has("y") || has("M") || hasDay) result.iso = hasDay ? "yyyy-MM-dd" : has("M") ? "yyyy-MM" : "yyyy";
  if (has("HhKkmsS")) {
    result.iso += result.iso.empty() ? "HH:mm:ss" : "'T'HH:mm:ss";
    const auto fraction = static_cast<std::size_t>(std::count(letters.begin(), letters.end(), 'S'));
    if (fraction != 0) result.iso += '.' + std::string(fraction, 'S');
  }
  if (has("zZ")) result.iso += "ZZZ";
  return result;
}

}  // namespace oxr::rec
