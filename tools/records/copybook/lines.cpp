#include "records/copybook/lines.hpp"

#include <algorithm>
#include <array>

#include "records/copybook/ascii.hpp"
#include "records/copybook/characters.hpp"
#include "records/copybook/words.hpp"

// A line goes through three steps: its tabs become blanks, so that columns can be counted; a directive is obeyed; and
// what is no program text (sequence area, indicator, comments, all after column 72) is blanked or cut off.
//
// A program is known by the headers of its divisions, each at the start of a line: before the data division may stand
// what no reader of entries understands (an author's name with a quote in it), so that its line is looked for first.

namespace oxr::rec::copybook {

namespace {

constexpr std::size_t kIndicator = 6;      // index of the character in column 7
constexpr std::size_t kFixedTextEnd = 72;  // columns of a fixed line that are read

// Words that only text of an entry has, at column 73 and after, beside usages that no field is called by.
constexpr std::array<std::string_view, 9> kClauseWords = {"PIC",       "PICTURE", "USAGE", "OCCURS",      "REDEFINES",
                                                          "DEPENDING", "SIGN",    "SYNC",  "SYNCHRONIZED"};

// What a line that starts in columns 1 to 6 of a free text may start with, beside a level.
constexpr std::array<std::string_view, 7> kFreeStarts = {"IDENTIFICATION",  "ID",      "DATA",   "COPY",
                                                         "WORKING-STORAGE", "LINKAGE", "REPLACE"};

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

template <std::size_t N>
bool isOneOf(std::string_view word, const std::array<std::string_view, N>& words) {
  return std::any_of(words.begin(), words.end(),
                     [&](std::string_view known) { return equalIgnoringCase(word, known); });
}

bool isListingControl(std::string_view text) {
  if (text.ends_with('.')) text.remove_suffix(1);
  return isOneOf(text, kListingControls);
}

// Does the text begin with the header of this division: "DATA DIVISION."?
bool startsDivision(std::string_view text, std::string_view division) {
  text = trim(text);
  if (!equalIgnoringCase(takeWord(text), division)) return false;
  std::string_view word = takeWord(text);
  if (word.ends_with('.')) word.remove_suffix(1);
  return equalIgnoringCase(word, "DIVISION");
}

bool isClauseWord(std::string_view word) {
  if (word.ends_with('.')) word.remove_suffix(1);
  const Token token{TokenKind::word, std::string(word), {}};
  const auto usage = findUsage(token);
  return isOneOf(word, kClauseWords) || (usage && *usage != Usage::display && !isUsageOrName(token));
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

// The first line that starts an entry, or a part of a program, decides. A directive before it means that the text
// starts as fixed.
bool looksFree(std::string_view text, bool isFreeInDoubt) {
  for (std::size_t at = 0; at < text.size(); at += lineAt(text, at).size() + 1) {
    const std::string line = expandTabs(lineAt(text, at).substr(0, 2 * kFixedTextEnd));
    const std::size_t first = line.find_first_not_of(' ');
    if (first == std::string::npos || line[first] == '*') continue;
    std::string_view rest = std::string_view(line).substr(first);
    if (first < kIndicator && startsEntry(rest)) return true;
    if (first < kIndicator && isOneOf(takeWord(rest), kFreeStarts) && !rest.empty()) return true;
    const std::size_t behind = byteOfCharacter(line, kIndicator);
    if (behind < line.size() && startsEntry(trim(std::string_view(line).substr(behind)))) return false;
    if (line.compare(first, 2, ">>") == 0) return false;
  }
  return isFreeInDoubt;
}

}  // namespace

LineReader::LineReader(const Source& source, FileIndex file, SourceFormat format, bool isFreeInDoubt)
    : source_(source),
      file_(file),
      text_(source.text(file)),
      isFormatGiven_(format != SourceFormat::detect),
      isFree_(isFormatGiven_ ? format == SourceFormat::free : looksFree(text_, isFreeInDoubt)) {
  findDataDivision();
}

// Walks through all lines once, and starts again.
void LineReader::findDataDivision() {
  const bool wasFree = isFree_;
  firstLine_ = ~0U;
  std::uint32_t dataDivision = 0;
  for (ProgramLine line; dataDivision == 0 && nextReduced(line);) {
    isProgram_ = isProgram_ || startsDivision(line.text, "IDENTIFICATION") || startsDivision(line.text, "ID");
    hasDecimalComma_ = hasDecimalComma_ || upperCase(line.text).find("DECIMAL-POINT") != std::string::npos;
    if (startsDivision(line.text, "DATA")) dataDivision = line.number;
  }
  if (isProgram_ && dataDivision == 0) source_.raise({0, 0, file_}, "the program has no DATA DIVISION");
  isProgram_ = dataDivision != 0;
  hasDecimalComma_ = hasDecimalComma_ && isProgram_;
  firstLine_ = dataDivision;
  isFree_ = wasFree;
  at_ = 0;
  number_ = 0;
}

bool LineReader::nextRaw() {
  if (at_ >= text_.size()) return false;
  const std::size_t end = text_.find('\n', at_);
  const std::string_view line = lineAt(text_, at_);
  expanded_ = expandTabs(line);
  hadTab_ = line.find('\t') != std::string_view::npos;
  at_ = end == std::string_view::npos ? text_.size() : end + 1;
  ++number_;
  return true;
}

// Follows ">>SOURCE [FORMAT] [IS] FREE|FIXED". Returns true if the line was a directive.
bool LineReader::obeyDirective() {
  std::string_view rest = trim(expanded_);
  if (!rest.starts_with(">>") && !isFree_)
    rest = trim(std::string_view(expanded_).substr(byteOfCharacter(expanded_, kIndicator)));
  if (!rest.starts_with(">>")) return false;
  const Place place{number_, static_cast<std::uint32_t>(countCharacters(expanded_.substr(0, expanded_.find('>'))) + 1),
                    file_};
  rest = trim(rest.substr(2));
  const bool isSource = equalIgnoringCase(takeWord(rest), "SOURCE");
  std::string_view word = takeWord(rest);
  if (equalIgnoringCase(word, "FORMAT")) word = takeWord(rest);
  if (equalIgnoringCase(word, "IS")) word = takeWord(rest);
  if (word.ends_with('.')) word.remove_suffix(1);
  const bool toFree = equalIgnoringCase(word, "FREE");
  if (isSource && (toFree || equalIgnoringCase(word, "FIXED")))
    isFree_ = toFree;
  else if (number_ >= firstLine_)
    source_.raise(place, "the only directives known are >>SOURCE FORMAT FREE and >>SOURCE FORMAT FIXED");
  return true;
}

// Makes program text of expanded_. Returns false if there is none.
bool LineReader::reduce(ProgramLine& line) {
  const std::size_t first = expanded_.find_first_not_of(' ');
  if (first == std::string::npos || expanded_[first] == '*') return false;
  endedBehind_ = 0;
  line.isContinuation = false;
  line.number = number_;
  line.text = expanded_;
  if (!isFree_) {
    const std::size_t at = byteOfCharacter(expanded_, kIndicator);
    if (at == expanded_.size()) return false;
    line.text.replace(0, at, kIndicator, ' ');
    const char indicator = line.text[kIndicator];
    if (indicator == '*' || indicator == '/' || isDebugLine(line.text)) return false;
    line.isContinuation = indicator == '-';
    if (line.isContinuation) line.text[kIndicator] = ' ';
    const std::size_t end = byteOfCharacter(line.text, kFixedTextEnd);
    if (!hadTab_ && end < line.text.size()) {
      if (number_ >= firstLine_ && !isFormatGiven_) checkBehind(line.text, end);
      line.text.resize(end);
    }
  }
  const std::string_view text = trim(line.text);
  return !text.empty() && !isListingControl(text);
}

// What stands behind column 72 is often a name of eight characters, or a remark. It looks like text of an entry if it
// has a word of one, or if a word reaches over the border that no period ends before it. A literal may do so: it is
// continued in the next line. A period there may end the entry that this line leaves open, which the next one shows.
void LineReader::checkBehind(const std::string& text, std::size_t end) {
  const std::string_view read = std::string_view(text).substr(0, end);
  if (read.find("*>") != std::string_view::npos || std::count_if(read.begin(), read.end(), isQuote) % 2 != 0) return;
  std::string_view rest = std::string_view(text).substr(end);
  rest = rest.substr(0, rest.find("*>"));
  bool isCode = read.back() != ' ' && read.back() != '.' && !rest.empty() && rest[0] != ' ';
  rest = trim(rest);
  if (rest.ends_with('.') && !trim(read).empty() && !trim(read).ends_with('.')) endedBehind_ = number_;
  while (!isCode && !rest.empty())
    isCode = isClauseWord(takeWord(rest));
  if (isCode) refuseBehind(number_);
}

void LineReader::refuseBehind(std::uint32_t line) const {
  source_.raise({line, static_cast<std::uint32_t>(kFixedTextEnd + 1), file_},
                "text behind column 72 is not read in fixed format, but looks like a part of an entry: --format free "
                "reads it, --format fixed leaves it out");
}

bool LineReader::nextReduced(ProgramLine& line) {
  while (nextRaw())
    if (!obeyDirective() && reduce(line)) return true;
  return false;
}

bool LineReader::next(ProgramLine& line) {
  const std::uint32_t endedBehind = endedBehind_;
  bool isThere = false;
  do {
    isThere = nextReduced(line);
  } while (isThere && line.number < firstLine_);
  if (endedBehind != 0 && (!isThere || startsEntry(trim(line.text)))) refuseBehind(endedBehind);
  if (!isThere) return false;
  if (!isProgram_ || !startsDivision(line.text, "PROCEDURE")) return true;
  at_ = text_.size();
  return false;
}

}  // namespace oxr::rec::copybook
