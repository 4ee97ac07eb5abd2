#pragma once

#include <string>
#include <string_view>

#include "records/copybook/ascii.hpp"
#include "records/copybook/lines.hpp"

namespace oxr::rec::copybook {

enum class TokenKind : std::uint8_t {
  word,     // anything between separators: names, keywords, numbers, pictures
  literal,  // a quoted text, with its prefix (X, N, Z, ...) if it has one; Token::text is the source text
  period,   // the end of an entry
  missing,  // a text to copy that was not found; Token::text is what to say if anybody needs it
  end,      // the end of the copybook
};

// The border of a pseudo-text, as in REPLACING ==A== BY ==B==.
inline constexpr std::string_view kPseudoText = "==";

struct Token {
  TokenKind kind = TokenKind::end;
  std::string text;
  Place place;            // of the first character; after the last program text for TokenKind::end
  bool isJoined = false;  // no blank before it: only while texts are replaced are words in parts

  bool isWord(std::string_view word) const { return kind == TokenKind::word && equalIgnoringCase(text, word); }
};

// The token as messages show it: in quotes and shortened, or what it is.
std::string quoted(const Token& token);

// Cuts a text into tokens.
//
// Separators are blanks, the ends of lines, and "," ";" "." before a blank or the end of a line: "9(3).99" is one
// word, "9(3). " is a word and a period. "==", around pseudo-text, is a word wherever it stands. A literal or a word is
// joined over continuation lines.
class Lexer {
 public:
  // See LineReader.
  Lexer(const Source& source, FileIndex file, SourceFormat format, bool isFreeInDoubt);

  // Throws CopybookError for a literal without its closing quote.
  Token take();

  bool isFree() const { return reader_.isFree(); }
  bool hasDecimalComma() const { return reader_.hasDecimalComma(); }

 private:
  Token scanLiteral(Token token);
  Token scanWord(Token token);
  bool skipSeparators();
  bool endsHere(std::size_t at) const;
  bool nextLine();
  bool continueWord();
  Place here();

  const Source& source_;
  const FileIndex file_;
  LineReader reader_;
  ProgramLine line_;  // being read
  ProgramLine lineAhead_;
  bool hasLineAhead_ = false;
  std::size_t at_ = 0;         // in line_.text
  std::size_t countedTo_ = 0;  // the last place that was asked for, and the characters before it: a line may be long
  std::size_t counted_ = 0;
};

}  // namespace oxr::rec::copybook
