#include "records/copybook/lexer.hpp"

#include <algorithm>
#include <array>

#include "records/copybook/characters.hpp"

// The lexer holds the line that it reads and the one after it. It needs the next line since a
// continuation line tells of itself, not the line that it continues: only a look at it shows whether a word or a
// literal that reaches the end of its line is complete.

namespace oxr::rec::copybook {

namespace {

constexpr std::array<std::string_view, 8> kLiteralPrefixes = {"X", "N", "Z", "G", "NX", "B", "BX", "U"};

bool isLiteralPrefix(std::string_view word) {
  return std::any_of(kLiteralPrefixes.begin(), kLiteralPrefixes.end(),
                     [&](std::string_view prefix) { return equalIgnoringCase(word, prefix); });
}

}  // namespace

std::string quoted(const Token& token) {
  constexpr std::size_t kShown = 40;
  if (token.kind == TokenKind::period) return "the period";
  if (token.kind == TokenKind::end) return "the end of the copybook";
  std::string text = token.text.size() > kShown ? token.text.substr(0, kShown) + "..." : token.text;
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return token.kind == TokenKind::literal ? text : '\'' + text + '\'';
}

Lexer::Lexer(const Source& source, FileIndex file, SourceFormat format, bool isFreeInDoubt)
    : source_(source), file_(file), reader_(source, file, format, isFreeInDoubt) {
  hasLineAhead_ = reader_.next(lineAhead_);
  nextLine();
}

Place Lexer::here() {
  if (at_ < countedTo_) countedTo_ = counted_ = 0;
  counted_ += countCharacters(std::string_view(line_.text).substr(countedTo_, at_ - countedTo_));
  countedTo_ = at_;
  return {std::max(line_.number, 1U), static_cast<std::uint32_t>(counted_ + 1), file_};
}

// Returns false at the end of the copybook; here() is then still the end of the last line.
bool Lexer::nextLine() {
  if (!hasLineAhead_) return false;
  std::swap(line_, lineAhead_);
  hasLineAhead_ = reader_.next(lineAhead_);
  at_ = countedTo_ = counted_ = 0;
  return true;
}

// Does a token end before this position, since there is a blank, the end of the line, a comment or the
// border of a pseudo-text?
bool Lexer::endsHere(std::size_t at) const {
  return at >= line_.text.size() || line_.text[at] == ' ' || line_.text.compare(at, 2, "*>") == 0 ||
         line_.text.compare(at, 2, kPseudoText) == 0;
}

// Goes to the next token. Returns false at the end of the copybook.
bool Lexer::skipSeparators() {
  for (;;) {
    const std::string& text = line_.text;
    while (at_ < text.size() && (text[at_] == ' ' || ((text[at_] == ',' || text[at_] == ';') && endsHere(at_ + 1))))
      ++at_;
    if (at_ < text.size() && text.compare(at_, 2, "*>") != 0) return true;
    if (!nextLine()) return false;
  }
}

Token Lexer::take() {
  const bool found = skipSeparators();
  Token token{TokenKind::end, {}, here(), false};
  if (!found) return token;
  const char c = line_.text[at_];
  if (c == '.' && endsHere(at_ + 1)) {
    ++at_;
    token.kind = TokenKind::period;
    return token;
  }
  if (line_.text.compare(at_, 2, kPseudoText) == 0) {
    at_ += kPseudoText.size();
    token.kind = TokenKind::word;
    token.text = kPseudoText;
    return token;
  }
  return isQuote(c) ? scanLiteral(std::move(token)) : scanWord(std::move(token));
}

// quote { character | quote quote } quote. In fixed format a literal that reaches the end of its line goes on after
// the quote that opens the text of a continuation line.
Token Lexer::scanLiteral(Token token) {
  token.kind = TokenKind::literal;
  const char quote = line_.text[at_];
  token.text += line_.text[at_++];
  for (;;) {
    if (at_ == line_.text.size()) {
      if (!hasLineAhead_ || !lineAhead_.isContinuation) source_.raise(token.place, "the literal has no closing quote");
      nextLine();
      at_ = line_.text.find_first_not_of(' ');  // a line with program text is never blank
      if (line_.text[at_] != quote) source_.raise(here(), "expected the quote that continues the literal");
      ++at_;
      continue;
    }
    const char c = line_.text[at_++];
    token.text += c;
    if (c != quote) continue;
    if (at_ == line_.text.size() || line_.text[at_] != quote) return token;
    token.text += line_.text[at_++];
  }
}

// Goes to the continuation line if the word that ends here goes on there, and tells whether it does.
bool Lexer::continueWord() {
  if (!hasLineAhead_ || !lineAhead_.isContinuation) return false;
  if (line_.text.find_first_not_of(' ', at_) != std::string::npos) return false;
  const std::size_t first = lineAhead_.text.find_first_not_of(' ');
  if (isQuote(lineAhead_.text[first])) return false;
  nextLine();
  at_ = first;
  return true;
}

Token Lexer::scanWord(Token token) {
  token.kind = TokenKind::word;
  do {
    for (const std::string& text = line_.text; !endsHere(at_); ++at_) {
      const char c = text[at_];
      if ((c == '.' || c == ',' || c == ';') && endsHere(at_ + 1)) return token;
      if (isQuote(c)) return isLiteralPrefix(token.text) ? scanLiteral(std::move(token)) : token;
      token.text += c;
    }
  } while (continueWord());
  return token;
}

}  // namespace oxr::rec::copybook
