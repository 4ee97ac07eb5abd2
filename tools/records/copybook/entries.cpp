#include "records/copybook/entries.hpp"

#include <algorithm>
#include <array>

#include "records/copybook/tokenreader.hpp"
#include "records/layout.hpp"

// A parser with one function for each production, over a row of tokens. The clauses of an entry come
// in any order: a table of their first words says which function reads each.
//
// copybook = { entry };
// entry    = level [ name | "FILLER" ] { clause } ( period | end of the copybook );
// Keywords are not reserved: a word is a name or a clause by where it stands, so that fields may be called COUNT or
// ADDRESS as they are in real layouts. Only a word that opens a clause can't be a name.

namespace oxr::rec::copybook {

namespace {

constexpr std::size_t kMaxEntries = 16384;  // bounds the search for names, which compares each with each

// What describes files, not records.
constexpr std::array<std::string_view, 4> kFileEntries = {"FD", "SD", "RD", "CD"};
constexpr std::array<std::string_view, 4> kReadSections = {"FILE", "WORKING-STORAGE", "LOCAL-STORAGE", "LINKAGE"};

class EntryReader {
 public:
  EntryReader(const Source& source, const std::vector<Token>& tokens) : source_(source), tokens_(source, tokens) {}

  std::vector<Entry> readAll();

 private:
  using ClauseReader = void (EntryReader::*)(Entry&, const Token&);
  struct Clause {
    std::string_view word;
    ClauseReader read;
  };
  static const Clause kClauses[];
  static const Clause* findClause(const Token& token);

  [[noreturn]] void raiseExpected(const std::string& what) const { tokens_.raiseExpected(what); }
  bool accept(std::string_view word) { return tokens_.accept(word); }

  template <class Value>
  void requireUnset(const std::optional<Value>& value, const Token& word) {
    if (value) source_.raise(word.place, "a second " + upperCase(word.text) + " in one entry");
  }

  unsigned readLevel();
  bool skipHeader();
  bool skipMissing(std::vector<Entry>& entries);
  void readNext(std::vector<Entry>& entries);
  void readEntry(Entry& entry);
  void readPeriod();
  void readRenames();
  void readCondition();
  Token readName(const std::string& what);
  std::uint32_t readTimes(const std::string& what);
  void readNames();
  void readValues();
  bool acceptValue();

  void picture(Entry& entry, const Token& word);
  void usage(Entry& entry, const Token& word);
  void usageByName(Entry& entry, const Token& word);
  void sign(Entry& entry, const Token& word);
  void occurs(Entry& entry, const Token& word);
  void redefines(Entry& entry, const Token& word);
  void value(Entry& entry, const Token& word);
  void justified(Entry& entry, const Token& word);
  void blankWhenZero(Entry& entry, const Token& word);
  void synchronized(Entry& entry, const Token& word);
  void withoutEffect(Entry& entry, const Token& word);

  const Source& source_;
  TokenReader tokens_;
};

const EntryReader::Clause EntryReader::kClauses[] = {
    {"PIC", &EntryReader::picture},
    {"PICTURE", &EntryReader::picture},
    {"USAGE", &EntryReader::usage},
    {"SIGN", &EntryReader::sign},
    {"LEADING", &EntryReader::sign},
    {"TRAILING", &EntryReader::sign},
    {"OCCURS", &EntryReader::occurs},
    {"REDEFINES", &EntryReader::redefines},
    {"VALUE", &EntryReader::value},
    {"VALUES", &EntryReader::value},
    {"JUSTIFIED", &EntryReader::justified},
    {"JUST", &EntryReader::justified},
    {"BLANK", &EntryReader::blankWhenZero},
    {"SYNCHRONIZED", &EntryReader::synchronized},
    {"SYNC", &EntryReader::synchronized},
    {"GLOBAL", &EntryReader::withoutEffect},
    {"EXTERNAL", &EntryReader::withoutEffect},
};

const EntryReader::Clause* EntryReader::findClause(const Token& token) {
  static constexpr Clause kUsageByName{"", &EntryReader::usageByName};
  if (token.kind != TokenKind::word) return nullptr;
  for (const Clause& clause : kClauses)
    if (token.isWord(clause.word)) return &clause;
  return findUsage(token) || isRefusedUsage(token) ? &kUsageByName : nullptr;
}

// PIC[TURE] [IS] picture
void EntryReader::picture(Entry& entry, const Token& word) {
  requireUnset(entry.picture, word);
  accept("IS");
  if (tokens_.peek().kind != TokenKind::word) raiseExpected("a picture");
  Token token = tokens_.take();
  auto result = readPicture(token.text);
  if (const auto* fault = std::get_if<PictureFault>(&result)) {
    token.place.column += static_cast<std::uint32_t>(fault->position);
    source_.raise(token.place, fault->message);
  }
  entry.picture = PictureClause{std::get<Picture>(result), std::move(token.text), token.place};
}

// USAGE [IS] name
void EntryReader::usage(Entry& entry, const Token&) {
  accept("IS");
  const Token name = tokens_.peek();
  if (!findUsage(name) && !isRefusedUsage(name)) raiseExpected("a usage such as COMP-3");
  tokens_.take();
  usageByName(entry, name);
}

void EntryReader::usageByName(Entry& entry, const Token& word) {
  const auto usage = findUsage(word);
  if (!usage) source_.raise(word.place, "the usage " + upperCase(word.text) + " is not supported");
  requireUnset(entry.usage, word);
  entry.usage = UsageClause{*usage, false, word.place};
  if (*usage >= Usage::binaryChar && *usage <= Usage::binaryDouble && !accept("SIGNED"))
    entry.usage->isUnsigned = accept("UNSIGNED");
}

// [SIGN [IS]] LEADING|TRAILING [SEPARATE [CHARACTER]]
void EntryReader::sign(Entry& entry, const Token& word) {
  requireUnset(entry.sign, word);
  SignClause clause{word.isWord("LEADING"), false, word.place};
  if (word.isWord("SIGN")) {
    accept("IS");
    clause.isLeading = accept("LEADING");
    if (!clause.isLeading && !accept("TRAILING")) raiseExpected("LEADING or TRAILING after SIGN");
  }
  clause.isSeparate = accept("SEPARATE");
  if (clause.isSeparate) accept("CHARACTER");
  entry.sign = clause;
}

std::uint32_t EntryReader::readTimes(const std::string& what) {
  const Token& token = tokens_.peek();
  if (token.kind != TokenKind::word || !std::all_of(token.text.begin(), token.text.end(), isDigit)) raiseExpected(what);
  std::uint32_t times = 0;
  for (const char digit : token.text) {
    times = times * 10 + static_cast<std::uint32_t>(digit - '0');
    if (times > kMaxRecordBytes) source_.raise(token.place, "the number of times is too large");
  }
  tokens_.take();
  return times;
}

Token EntryReader::readName(const std::string& what) {
  if (!isName(tokens_.peek())) raiseExpected(what);
  return tokens_.take();
}

// Names up to the next clause, at least one.
void EntryReader::readNames() {
  do {
    readName("a name");
    while (accept("OF") || accept("IN"))
      readName("a name");
  } while (isName(tokens_.peek()) && !findClause(tokens_.peek()) && !isOccursPhrase(tokens_.peek()));
}

// OCCURS n [TO n] [TIMES] [DEPENDING [ON] name { OF|IN name }] { ASCENDING|DESCENDING [KEY] [IS] names }
//   { INDEXED [BY] names }
void EntryReader::occurs(Entry& entry, const Token& word) {
  requireUnset(entry.occurs, word);
  OccursClause clause{1, 1, {}, word.place};
  const Place timesPlace = tokens_.peek().place;
  clause.max = readTimes("a number of times after OCCURS");
  clause.min = clause.max;
  const bool hasRange = accept("TO");
  if (hasRange) clause.max = readTimes("the largest number of times after TO");
  if (clause.max == 0 || clause.min > clause.max)
    source_.raise(timesPlace, "the number of times must be 1 or more, a range must rise");
  accept("TIMES");
  for (;;) {
    if (clause.counter.empty() && accept("DEPENDING")) {
      accept("ON");
      do {
        clause.counter.push_back(readName("a name after DEPENDING ON"));
      } while (accept("OF") || accept("IN"));
    } else if (accept("ASCENDING") || accept("DESCENDING")) {
      accept("KEY");
      accept("IS");
      readNames();
    } else if (accept("INDEXED")) {
      accept("BY");
      readNames();
    } else {
      break;
    }
  }
  if (hasRange && clause.counter.empty()) raiseExpected("DEPENDING ON after the range of OCCURS");
  // Without a range the lower bound is not said; records with no occurrence are common.
  if (!hasRange && !clause.counter.empty()) clause.min = 0;
  entry.occurs = std::move(clause);
}

void EntryReader::redefines(Entry& entry, const Token& word) {
  requireUnset(entry.redefines, word);
  entry.redefines = readName("a name after REDEFINES");
}

// [ALL] literal | number | figurative constant
bool EntryReader::acceptValue() {
  const bool isAll = accept("ALL");
  if (isValue(tokens_.peek())) {
    tokens_.take();
    return true;
  }
  if (isAll) raiseExpected("a literal after ALL");
  return false;
}

// [IS|ARE] value { [THRU|THROUGH] value }
void EntryReader::readValues() {
  if (!accept("IS")) accept("ARE");
  if (!acceptValue()) raiseExpected("a literal after VALUE");
  for (;;) {
    const bool isRange = accept("THRU") || accept("THROUGH");
    if (acceptValue()) continue;
    if (isRange) raiseExpected("a literal after THRU");
    return;
  }
}

void EntryReader::value(Entry&, const Token&) {
  readValues();
}

void EntryReader::justified(Entry& entry, const Token&) {
  accept("RIGHT");
  entry.isJustified = true;
}

void EntryReader::blankWhenZero(Entry& entry, const Token&) {
  accept("WHEN");
  if (!accept("ZERO") && !accept("ZEROS") && !accept("ZEROES")) raiseExpected("ZERO after BLANK WHEN");
  entry.isBlankWhenZero = true;
}

void EntryReader::synchronized(Entry& entry, const Token& word) {
  if (!accept("LEFT")) accept("RIGHT");
  entry.synchronized = word.place;
}

void EntryReader::withoutEffect(Entry&, const Token&) {}

// A missing period is forgiven at the end of the copybook only.
void EntryReader::readPeriod() {
  if (tokens_.peek().kind == TokenKind::end) return;
  if (tokens_.peek().kind != TokenKind::period) raiseExpected("a clause or a period");
  tokens_.take();
}

// 66 name RENAMES name { OF|IN name } [THRU|THROUGH name { OF|IN name }]
void EntryReader::readRenames() {
  readName("a name");
  if (!accept("RENAMES")) raiseExpected("RENAMES");
  do {
    do {
      readName("a name");
    } while (accept("OF") || accept("IN"));
  } while (accept("THRU") || accept("THROUGH"));
}

// 88 name VALUE[S] values [[WHEN] [SET] [TO] FALSE [IS] value]
void EntryReader::readCondition() {
  readName("a name");
  if (!accept("VALUE") && !accept("VALUES")) raiseExpected("VALUE");
  readValues();
  if (tokens_.peek().isWord("WHEN") || tokens_.peek().isWord("FALSE")) {
    for (const std::string_view word : {"WHEN", "SET", "TO"})
      accept(word);
    if (!accept("FALSE")) raiseExpected("FALSE");
    accept("IS");
    if (!acceptValue()) raiseExpected("a literal after FALSE");
  }
}

unsigned EntryReader::readLevel() {
  const Token& token = tokens_.peek();
  const bool isLevel = token.kind == TokenKind::word && token.text.size() <= 2 &&
                       std::all_of(token.text.begin(), token.text.end(), isDigit);
  const unsigned level = isLevel ? static_cast<unsigned>(std::stoul(token.text)) : 0;
  if (level == 0 || (level > 49 && level != 66 && level != 77 && level != 78 && level != 88))
    raiseExpected("a level number (01 to 49, 66, 77 or 88)");
  tokens_.take();
  return level;
}

void EntryReader::readEntry(Entry& entry) {
  // Fields are also called INDEX or OBJECT.
  if (tokens_.peek().kind == TokenKind::word && (!findClause(tokens_.peek()) || isUsageOrName(tokens_.peek()))) {
    const Token name = readName("a name");
    if (!name.isWord("FILLER")) entry.name = name.text;
  }
  for (;;) {
    if (accept("IS") && !tokens_.peek().isWord("GLOBAL") && !tokens_.peek().isWord("EXTERNAL"))
      raiseExpected("GLOBAL or EXTERNAL after IS");
    const Clause* clause = findClause(tokens_.peek());
    if (!clause) return;
    const Token word = tokens_.take();
    (this->*clause->read)(entry, word);
  }
}

// Passes over headers of divisions and sections, entries of files, and whole sections that describe no records. Returns
// false if an entry comes.
bool EntryReader::skipHeader() {
  const Token& token = tokens_.peek();
  const Token& second = tokens_.peekSecond();
  const auto isOneOf = [&](const auto& words) {
    return std::any_of(std::begin(words), std::end(words), [&](std::string_view word) { return token.isWord(word); });
  };
  if (isOneOf(kFileEntries) || (token.isWord("DATA") && second.isWord("DIVISION"))) {
    tokens_.skipSentence();
    return true;
  }
  if (!second.isWord("SECTION") || !isName(token)) return false;
  const bool isRead = isOneOf(kReadSections);
  tokens_.skipSentence();
  while (!isRead && tokens_.peek().kind != TokenKind::end && !tokens_.peekSecond().isWord("SECTION"))
    tokens_.take();
  return true;
}

// A text that was not found may hold more of the record before it, or other records: it counts as that one's fault.
bool EntryReader::skipMissing(std::vector<Entry>& entries) {
  if (tokens_.peek().kind != TokenKind::missing) return false;
  try {
    raiseExpected("an entry");
  } catch (const CopybookError& error) {
    if (entries.empty()) throw;
    if (!entries.back().fault) entries.back().fault = error;
  }
  tokens_.take();
  return true;
}

void EntryReader::readNext(std::vector<Entry>& entries) {
  const Place place = tokens_.peek().place;
  const unsigned level = readLevel();
  const bool hasStorage = level != 66 && level != 78 && level != 88;
  if (hasStorage) {
    if (entries.size() == kMaxEntries)
      source_.raise(place, "the copybook has more than " + std::to_string(kMaxEntries) + " entries");
    entries.emplace_back();
    entries.back().level = static_cast<std::uint8_t>(level);
    entries.back().place = place;
  }
  try {
    if (level == 66) readRenames();
    if (level == 78) tokens_.skipSentence();
    if (level == 88) readCondition();
    if (hasStorage) readEntry(entries.back());
    if (level != 78) readPeriod();
  } catch (const CopybookError& error) {
    if (entries.empty()) throw;
    if (!entries.back().fault) entries.back().fault = error;
    tokens_.skipSentence();
  }
}

std::vector<Entry> EntryReader::readAll() {
  std::vector<Entry> entries;
  while (tokens_.peek().kind != TokenKind::end)
    if (!skipMissing(entries) && !skipHeader()) readNext(entries);
  return entries;
}

}  // namespace

std::vector<Entry> readEntries(const Source& source, const std::vector<Token>& tokens) {
  return EntryReader(source, tokens).readAll();
}

}  // namespace oxr::rec::copybook
