#include "records/copybook/expander.hpp"

#include <algorithm>
#include <map>

#include "records/copybook/replacing.hpp"
#include "records/copybook/textfinder.hpp"
#include "records/copybook/tokenreader.hpp"

// A text is cut into tokens as a whole, what its COPY statement replaces is replaced in it, and then its own statements
// are obeyed from the first to the last:
//
//   copy    = COPY name [ OF|IN name ] [ SUPPRESS [ PRINTING ] ] [ REPLACING { replacement } ] period
//   replace = REPLACE [ ALSO ] { replacement } period  |  REPLACE [ LAST ] OFF period
//   replacement = [ LEADING | TRAILING ] part BY part;  part = pseudo-text | literal | word
//   include = EXEC SQL INCLUDE name END-EXEC [ period ]
//
// REPLACE holds for all that follows it up to the next REPLACE, copied texts as well.

namespace oxr::rec::copybook {

namespace {

constexpr std::size_t kMaxDepth = 32;
constexpr std::size_t kMaxTokens = 1U << 20;
constexpr std::size_t kMaxCopiedBytes = 16U << 20;
constexpr std::size_t kMaxReplacedWords = 1024;
constexpr std::size_t kMaxCopies = 16384;

class Expander {
 public:
  Expander(Source& source, const CopybookOptions& options)
      : source_(source), options_(options), finder_(options), effort_(source) {}

  std::vector<Token> run() {
    const Token end = expandFile(0, options_.format == SourceFormat::free, {});
    endReplace();
    result_.push_back(end);
    return std::move(result_);
  }

 private:
  // What a COPY statement says.
  struct Copy {
    Token name;
    std::string library;
    std::vector<Replacement> replacements;
  };
  using Replacements = std::vector<const std::vector<Replacement>*>;  // the innermost COPY's first

  // Returns the token at the end of the text.
  Token expandFile(FileIndex file, bool isFreeInDoubt, const Replacements& replacements) {
    Lexer lexer(source_, file, options_.format, isFreeInDoubt);
    if (lexer.hasDecimalComma()) source_.setDecimalComma();
    std::vector<Token> tokens;
    do {
      tokens.push_back(lexer.take());
      effort_.addWord(tokens.back());
      if (tokens.size() > kMaxTokens) raiseTooMany(tokens.back().place);
    } while (tokens.back().kind != TokenKind::end);
    for (const auto* list : replacements)
      tokens = replaced(effort_, std::move(tokens), *list);
    open_.push_back(file);
    TokenReader reader(source_, tokens);
    while (reader.peek().kind != TokenKind::end)
      statement(reader, lexer.isFree(), replacements);
    open_.pop_back();
    return tokens.back();
  }

  void statement(TokenReader& reader, bool isFree, const Replacements& replacements) {
    if (reader.accept("COPY")) {
      Copy copied = readCopy(reader);
      Replacements inner{&copied.replacements};
      inner.insert(inner.end(), replacements.begin(), replacements.end());
      copy(copied, isFree, inner);
    } else if (reader.peek().isWord("EXEC") && isLanguage(reader.peekSecond())) {
      execute(reader, isFree, replacements);
    } else if (reader.accept("REPLACE")) {
      endReplace();
      replace_ = readReplace(reader);
    } else {
      result_.push_back(reader.take());
      if (result_.size() > kMaxTokens) raiseTooMany(result_.back().place);
    }
  }

  // Of other statements than SQL's INCLUDE nothing is read; nor of an INCLUDE of what the database brings along.
  void execute(TokenReader& reader, bool isFree, const Replacements& replacements) {
    const Place place = reader.take().place;
    const bool isSql = reader.accept("SQL");
    if (isSql && reader.accept("INCLUDE") && reader.peek().kind != TokenKind::end) {
      const Token name = reader.take();
      if (!name.isWord("SQLCA") && !name.isWord("SQLDA")) copy({name, {}, {}}, isFree, replacements);
    }
    while (!reader.accept("END-EXEC")) {
      if (reader.peek().kind == TokenKind::end) source_.raise(place, "EXEC has no END-EXEC");
      reader.take();
    }
    if (reader.peek().kind == TokenKind::period) reader.take();
  }

  static bool isLanguage(const Token& token) {
    return token.isWord("SQL") || token.isWord("CICS") || token.isWord("DLI");
  }

  static std::string nameOf(const Token& token) {
    if (token.kind == TokenKind::word) return token.text;
    return token.text.substr(1, token.text.size() - 2);
  }

  static Token takeName(TokenReader& reader) {
    const Token& token = reader.peek();
    const bool isText = token.kind == TokenKind::literal && isQuote(token.text.front()) && token.text.size() > 2;
    if (!isText && token.kind != TokenKind::word) reader.raiseExpected("the name of a copybook");
    return reader.take();
  }

  Copy readCopy(TokenReader& reader) const {
    Copy result;
    result.name = takeName(reader);
    if (reader.accept("OF") || reader.accept("IN")) result.library = nameOf(takeName(reader));
    if (reader.accept("SUPPRESS")) reader.accept("PRINTING");
    if (reader.accept("REPLACING")) result.replacements = readReplacements(reader);
    endStatement(reader, "REPLACING or a period after COPY");
    return result;
  }

  std::vector<Replacement> readReplace(TokenReader& reader) const {
    std::vector<Replacement> result;
    reader.accept("ALSO");
    reader.accept("LAST");
    if (!reader.accept("OFF")) result = readReplacements(reader);
    endStatement(reader, "a period after REPLACE");
    return result;
  }

  static void endStatement(TokenReader& reader, const std::string& expected) {
    if (reader.peek().kind == TokenKind::end) return;
    if (reader.peek().kind != TokenKind::period) reader.raiseExpected(expected);
    reader.take();
  }

  std::vector<Replacement> readReplacements(TokenReader& reader) const {
    std::vector<Replacement> result;
    std::size_t words = 0;  // to compare with at each place of the text
    do {
      Replacement& next = result.emplace_back();
      const Place place = reader.peek().place;
      const bool isWhole = reader.peekSecond().isWord("BY");  // LEADING may be a word to replace
      if (!isWhole && reader.accept("LEADING")) next.where = Replacement::Where::leading;
      if (!isWhole && reader.accept("TRAILING")) next.where = Replacement::Where::trailing;
      next.from = readPart(reader);
      if (!reader.accept("BY")) reader.raiseExpected("BY");
      next.by = readPart(reader);
      words += next.from.size();
      if (words > kMaxReplacedWords) source_.raise(place, "REPLACING has more than 1024 words to replace");
      if (next.from.empty()) source_.raise(place, "there is no text to replace");
      if (next.where != Replacement::Where::whole && !(isOneWord(next.from) && isOneWord(next.by)))
        source_.raise(place, "LEADING and TRAILING replace a part of a word by another");
    } while (reader.peek().kind == TokenKind::word || reader.peek().kind == TokenKind::literal);
    return result;
  }

  // One word, or none.
  static bool isOneWord(const std::vector<Token>& parts) {
    return std::all_of(parts.begin(), parts.end(), [&](const Token& part) {
      return part.kind == TokenKind::word && (part.isJoined || &part == parts.data());
    });
  }

  std::vector<Token> readPart(TokenReader& reader) const {
    std::vector<Token> tokens;
    const Place place = reader.peek().place;
    if (!reader.accept(kPseudoText)) {
      if (reader.peek().kind != TokenKind::word && reader.peek().kind != TokenKind::literal)
        reader.raiseExpected("a text between == and ==, a literal or a word");
      tokens.push_back(reader.take());
      return partsOf(std::move(tokens));
    }
    while (!reader.accept(kPseudoText)) {
      if (reader.peek().kind == TokenKind::end) source_.raise(place, "the text has no closing ==");
      tokens.push_back(reader.take());
    }
    return partsOf(std::move(tokens));
  }

  void copy(const Copy& copied, bool isFree, const Replacements& replacements) {
    const Place place = copied.name.place;
    if (++copies_ > kMaxCopies) source_.raise(place, "more than 16384 texts are copied");
    auto found = finder_.find(source_.fileName(open_.back()), nameOf(copied.name), copied.library);
    if (!found) {
      // A program copies more than what is wanted of it: who needs the text raises.
      result_.push_back({TokenKind::missing,
                         "found no copybook " + quoted(copied.name) + " beside this text or in the folders of -I",
                         place, false});
      return;
    }
    const FileIndex file = fileOf(std::move(*found));
    for (const FileIndex outer : open_)
      if (source_.fileName(outer) == source_.fileName(file))
        source_.raise(place, source_.fileName(file) + " copies itself");
    if (open_.size() == kMaxDepth) source_.raise(place, "copied texts are nested deeper than 32");
    copiedBytes_ += source_.text(file).size();
    if (copiedBytes_ > kMaxCopiedBytes) source_.raise(place, "the texts that are copied have more than 16 MiB");
    expandFile(file, isFree, replacements);
  }

  FileIndex fileOf(FoundText found) {
    const auto [known, isNew] = files_.emplace(found.path, 0);
    if (isNew) known->second = source_.add(std::move(found.text), std::move(found.path));
    return known->second;
  }

  void endReplace() {
    if (!replace_.empty()) {
      const auto begin = result_.begin() + static_cast<std::ptrdiff_t>(replaceFrom_);
      std::vector<Token> tokens(std::make_move_iterator(begin), std::make_move_iterator(result_.end()));
      result_.erase(begin, result_.end());
      for (Token& token : replaced(effort_, std::move(tokens), replace_))
        result_.push_back(std::move(token));
    }
    replaceFrom_ = result_.size();
  }

  [[noreturn]] void raiseTooMany(Place place) const {
    source_.raise(place, "the copybook has more than 1048576 words");
  }

  Source& source_;
  const CopybookOptions& options_;
  TextFinder finder_;
  Effort effort_;
  std::map<std::string, FileIndex> files_;  // of each path
  std::vector<FileIndex> open_;             // the texts that are being read, the outermost first
  std::size_t copiedBytes_ = 0;
  std::size_t copies_ = 0;
  std::vector<Token> result_;
  std::vector<Replacement> replace_;  // of the REPLACE in force
  std::size_t replaceFrom_ = 0;       // where it begins in result_
};

}  // namespace

std::vector<Token> expand(Source& source, const CopybookOptions& options) {
  return Expander(source, options).run();
}

}  // namespace oxr::rec::copybook
