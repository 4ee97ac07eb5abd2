#pragma once

#include <string>
#include <vector>

#include "records/copybook/lexer.hpp"

namespace oxr::rec::copybook {

// Goes through a row of tokens that ends with TokenKind::end, which it never passes. Keeps references to both.
class TokenReader {
 public:
  TokenReader(const Source& source, const std::vector<Token>& tokens) : source_(source), tokens_(tokens) {}

  const Token& peek() const { return tokens_[at_]; }
  const Token& peekSecond() const { return tokens_[at_ + 1 < tokens_.size() ? at_ + 1 : at_]; }

  const Token& take() {
    const Token& token = tokens_[at_];
    if (token.kind != TokenKind::end) ++at_;
    return token;
  }

  // Takes the next token if it is this word.
  bool accept(std::string_view word) {
    if (!peek().isWord(word)) return false;
    take();
    return true;
  }

  // Passes over all up to the next period, and that.
  void skipSentence() {
    while (peek().kind != TokenKind::end && peek().kind != TokenKind::period)
      take();
    take();
  }

  [[noreturn]] void raiseExpected(const std::string& what) const {
    if (peek().kind == TokenKind::missing) source_.raise(peek().place, peek().text);
    source_.raise(peek().place, "expected " + what + ", found " + quoted(peek()));
  }

 private:
  const Source& source_;
  const std::vector<Token>& tokens_;
  std::size_t at_ = 0;
};

}  // namespace oxr::rec::copybook
