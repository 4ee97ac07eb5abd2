#include "records/copybook/lines.hpp"

#include <algorithm>
#include <array>

#include "records/copybook/ascii.hpp"

// A line goes through three steps: its tabs become blanks, so that columns can be counted; a directive is obeyed; and
// what is no program text (sequence area, indicator, comments, all after column 72) is blanked or cut off.

namespace oxr::rec::copybook {

namespace {

constexpr std::size_t kIndicator = 6;      // index of column 7
constexpr std::size_t kFixedTextEnd = 72;  // columns of a fixed line that are read

constexpr std::array<std::string_view, 4> kListingControls = {"EJECT", "SKIP1", "SKIP2", "SKIP3"};

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// Takes the first blank-delimited word off a text without leading blanks.
std::string_view takeWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find(' '));
  text = trim(text.substr(word.size()));
  return word;
}

bool isListingControl(std::string_view text) {
  if (text.ends_with('.')) text.remove_suffix(1);
  return std::any_of(kListingControls.begin(), kListingControls.end(),
                     [&](std::string_view control) { return equalIgnoringCase(text, control); });
}

// "D" marks a debugging line, but before a letter it is rather the first letter of a clause (test
// Copybook.LinesAreReadInEitherFormat).
bool isDebugLine(std::string_view line) {
  return upperCase(line[kIndicator]) == 'D' && (line.size() == kIndicator + 1 || !isLetter(line[kIndicator + 1]));
}

// Does an entry start here: one or two digits, blanks, a letter?
bool startsEntry(std::string_view text) {
  std::size_t digits = 0;
  while (digits < text.size() && isDigit(text[digits]))
    ++digits;
  if (digits == 0 || digits > 2 || digits == text.size() || text[digits] != ' ') return false;
  const std::string_view rest = trim(text.substr(digits));
  return !rest.empty() && (isLetter(rest[0]) || rest[0] == ':');
}

// The first line that starts an entry decides. A directive before it also means that the text starts as fixed.
bool looksFree(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); at += lineAt(text, at).size() + 1) {
    const std::string line = expandTabs(lineAt(text, at).substr(0, 2 * kFixedTextEnd));
    const std::size_t first = line.find_first_not_of(' ');
    if (first == std::string::npos || line[first] == '*') continue;
    if (first < kIndicator && startsEntry(std::string_view(line).substr(first))) return true;
    if (line.size() > kIndicator && startsEntry(trim(std::string_view(line).substr(kIndicator)))) return false;
    if (line.compare(first, 2, ">>") == 0) return false;
  }
  return false;
}

}  // namespace

LineReader::LineReader(const Source& source, SourceFormat format)
    : source_(source),
      isFree_(format == SourceFormat::free || (format == SourceFormat::detect && looksFree(source.text()))) {}

bool LineReader::nextRaw() {
  const std::string_view text = source_.text();
  if (at_ >= text.size()) return false;
  const std::size_t end = text.find('\n', at_);
  const std::string_view line = lineAt(text, at_);
  expanded_ = expandTabs(line);
  hadTab_ = line.find('\t') != std::string_view::npos;
  at_ = end == std::string_view::npos ? text.size() : end + 1;
  ++number_;
  return true;
}

// Follows ">>SOURCE [FORMAT] [IS] FREE|FIXED". Returns true if the line was a directive.
bool LineReader::obeyDirective() {
  std::string_view rest = trim(expanded_);
  if (!rest.starts_with(">>") && !isFree_ && expanded_.size() > kIndicator)
    rest = trim(std::string_view(expanded_).substr(kIndicator));
  if (!rest.starts_with(">>")) return false;
  const Place place{number_, static_cast<std::uint32_t>(expanded_.find('>') + 1)};
  rest = trim(rest.substr(2));
  const bool isSource = equalIgnoringCase(takeWord(rest), "SOURCE");
  std::string_view word = takeWord(rest);
  if (equalIgnoringCase(word, "FORMAT")) word = takeWord(rest);
  if (equalIgnoringCase(word, "IS")) word = takeWord(rest);
  if (word.ends_with('.')) word.remove_suffix(1);
  const bool toFree = equalIgnoringCase(word, "FREE");
  if (!isSource || (!toFree && !equalIgnoringCase(word, "FIXED")))
    source_.raise(place, "the only directives known are >>SOURCE FORMAT FREE and >>SOURCE FORMAT FIXED");
  isFree_ = toFree;
  return true;
}

// Makes program text of expanded_. Returns false if there is none.
bool LineReader::reduce(ProgramLine& line) const {
  const std::size_t first = expanded_.find_first_not_of(' ');
  if (first == std::string::npos || expanded_[first] == '*') return false;
  line.isContinuation = false;
  if (!isFree_) {
    if (expanded_.size() <= kIndicator) return false;
    const char indicator = expanded_[kIndicator];
    if (indicator == '*' || indicator == '/' || isDebugLine(expanded_)) return false;
    line.isContinuation = indicator == '-';
  }
  line.number = number_;
  line.text = expanded_;
  if (!isFree_) {
    std::fill_n(line.text.begin(), line.isContinuation ? kIndicator + 1 : kIndicator, ' ');
    if (!hadTab_ && line.text.size() > kFixedTextEnd) line.text.resize(kFixedTextEnd);
  }
  const std::string_view text = trim(line.text);
  return !text.empty() && !isListingControl(text);
}

bool LineReader::next(ProgramLine& line) {
  while (nextRaw())
    if (!obeyDirective() && reduce(line)) return true;
  return false;
}

}  // namespace oxr::rec::copybook
