#include "records/copybook/replacing.hpp"

#include <algorithm>

// Replacing works on parts of words. A part that follows another without a blank is marked as joined to it: after the
// replacements the marks tell what is one word again.

namespace oxr::rec::copybook {

namespace {

constexpr std::string_view kParts = "():";
constexpr std::size_t kMaxWords = 4U << 20;
constexpr std::size_t kMaxBytes = 64U << 20;
constexpr std::size_t kMaxComparisons = 256U << 20;
constexpr std::size_t kUsualWord = 32;  // bytes, as far as they are not longer

bool isSame(const Token& a, const Token& b) {
  if (a.kind != b.kind) return false;
  return a.kind == TokenKind::literal ? a.text == b.text : equalIgnoringCase(a.text, b.text);
}

std::string textOf(const std::vector<Token>& parts) {
  std::string text;
  for (const Token& part : parts)
    text += part.text;
  return text;
}

class Replacer {
 public:
  Replacer(Effort& effort, std::vector<Token> parts, const std::vector<Replacement>& replacements)
      : effort_(effort), parts_(std::move(parts)), replacements_(replacements) {}

  std::vector<Token> run() {
    while (at_ < parts_.size())
      if (!replaceHere()) push(std::move(parts_[at_++]));
    return std::move(result_);
  }

 private:
  bool replaceHere() {
    for (const Replacement& replacement : replacements_) {
      if (replacement.where != Replacement::Where::whole) {
        if (replaceWithin(replacement)) return true;
        continue;
      }
      if (!fits(replacement.from)) continue;
      put(replacement.by, replacement.from.size());
      return true;
    }
    return false;
  }

  // Replaces the start or the end of the whole word that starts here.
  bool replaceWithin(const Replacement& replacement) {
    if (parts_[at_].kind != TokenKind::word || parts_[at_].isJoined) return false;
    std::size_t end = at_ + 1;
    Token word = parts_[at_];
    for (; end < parts_.size() && parts_[end].isJoined; ++end)
      word.text += parts_[end].text;
    const std::string from = textOf(replacement.from);
    effort_.addComparisons(end - at_ + word.text.size() / kUsualWord, word.place);
    if (word.text.size() < from.size()) return false;
    const bool isLeading = replacement.where == Replacement::Where::leading;
    const std::size_t at = isLeading ? 0 : word.text.size() - from.size();
    if (!equalIgnoringCase(std::string_view(word.text).substr(at, from.size()), from)) return false;
    word.text.replace(at, from.size(), textOf(replacement.by));
    if (!word.text.empty()) push(std::move(word));
    at_ = end;
    return true;
  }

  bool fits(const std::vector<Token>& from) {
    if (from.size() > parts_.size() - at_) return false;
    std::size_t cost = 0;
    const bool isEqual = std::equal(from.begin(), from.end(), parts_.begin() + static_cast<std::ptrdiff_t>(at_),
                                    [&cost](const Token& a, const Token& b) {
                                      cost += 1 + (a.text.size() == b.text.size() ? a.text.size() / kUsualWord : 0);
                                      return isSame(a, b);
                                    });
    effort_.addComparisons(cost, parts_[at_].place);
    return isEqual;
  }

  // The text that is put in stands where the old one did. If nothing is, what follows was joined to it only if it
  // was joined to what stands before.
  void put(const std::vector<Token>& by, std::size_t count) {
    const Place place = parts_[at_].place;
    const bool isJoined = parts_[at_].isJoined;
    at_ += count;
    if (by.empty() && at_ < parts_.size()) parts_[at_].isJoined = parts_[at_].isJoined && isJoined;
    for (std::size_t i = 0; i < by.size(); ++i) {
      Token token = by[i];
      token.place = place;
      if (i == 0) token.isJoined = isJoined;
      push(std::move(token));
    }
  }

  void push(Token token) {
    effort_.addWord(token);
    result_.push_back(std::move(token));
  }

  Effort& effort_;
  std::vector<Token> parts_;
  const std::vector<Replacement>& replacements_;
  std::vector<Token> result_;
  std::size_t at_ = 0;
};

// Makes words of joined parts.
std::vector<Token> joined(std::vector<Token> parts) {
  std::vector<Token> tokens;
  for (Token& part : parts) {
    const bool continues =
        part.isJoined && part.kind == TokenKind::word && !tokens.empty() && tokens.back().kind == TokenKind::word;
    if (continues)
      tokens.back().text += part.text;
    else
      tokens.push_back(std::move(part));
    tokens.back().isJoined = false;
  }
  return tokens;
}

}  // namespace

void Effort::addWord(const Token& word) {
  bytes_ += word.text.size();
  if (++words_ > kMaxWords || bytes_ > kMaxBytes)
    source_.raise(word.place, "the text is too long with all that is copied and replaced in it");
}

void Effort::addComparisons(std::size_t count, Place place) {
  comparisons_ += count;
  if (comparisons_ > kMaxComparisons) source_.raise(place, "replacing would compare more than 268435456 words");
}

std::vector<Token> partsOf(std::vector<Token> tokens) {
  std::vector<Token> parts;
  for (Token& token : tokens) {
    if (token.kind != TokenKind::word || token.text.find_first_of(kParts) == std::string::npos) {
      parts.push_back(std::move(token));
      continue;
    }
    for (std::size_t at = 0; at < token.text.size();) {
      const std::size_t end =
          at == token.text.find_first_of(kParts, at) ? at + 1 : token.text.find_first_of(kParts, at);
      parts.push_back({TokenKind::word, token.text.substr(at, end - at), token.place, at != 0});
      at = std::min(end, token.text.size());
    }
  }
  return parts;
}

std::vector<Token> replaced(Effort& effort, std::vector<Token> tokens, const std::vector<Replacement>& replacements) {
  if (replacements.empty()) return tokens;
  return joined(Replacer(effort, partsOf(std::move(tokens)), replacements).run());
}

}  // namespace oxr::rec::copybook
