#include "records/fields/datepattern.hpp"

#include <algorithm>

namespace oxr::rec {

namespace {

// The pattern without its quoted texts; `quoted` counts their characters.
std::string lettersOf(std::string_view pattern, std::size_t& quoted) {
  std::string letters;
  bool isQuoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\'' && i + 1 < pattern.size() && pattern[i + 1] == '\'') {
      ++quoted;
      ++i;
    } else if (pattern[i] == '\'') {
      isQuoted = !isQuoted;
    } else if (isQuoted) {
      ++quoted;
    } else {
      letters += pattern[i];
    }
  }
  return letters;
}

// A day is told by its number in the year or the month, or by a week and a day of that.
std::string missingIn(std::string_view letters) {
  const auto has = [&](std::string_view any) { return letters.find_first_of(any) != std::string_view::npos; };
  if (!has("MdDeEFwW")) return {};
  if (!has("y")) return "no year (y)";
  if (!has("dDeEFwW") || has("D") || (has("w") && has("eE"))) return {};
  if (!has("Mw")) return "no month (M)";
  return has("d") || (has("FW") && has("eE")) ? "" : "no day (d)";
}

}  // namespace

DatePattern readDatePattern(std::string_view pattern) {
  DatePattern result;
  const std::string letters = lettersOf(pattern, result.digits);
  result.digits += letters.size();
  result.missing = missingIn(letters);
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
