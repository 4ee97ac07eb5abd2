#include "records/copybook/words.hpp"

#include <algorithm>

namespace oxr::rec::copybook {

namespace {

struct UsageName {
  std::string_view word;  // "COMPUTATIONAL" is turned into "COMP" before the look-up
  Usage usage;
};

constexpr UsageName kUsages[] = {
    {"DISPLAY", Usage::display},
    {"COMP", Usage::binary},
    {"COMP-0", Usage::binary},
    {"COMP-4", Usage::binary},
    {"BINARY", Usage::binary},
    {"COMP-5", Usage::nativeBinary},
    {"COMP-3", Usage::packed},
    {"PACKED-DECIMAL", Usage::packed},
    {"COMP-6", Usage::unsignedPacked},
    {"NATIONAL", Usage::national},
    {"DISPLAY-1", Usage::dbcs},
    {"COMP-1", Usage::shortFloat},
    {"FLOAT-SHORT", Usage::shortFloat},
    {"COMP-2", Usage::longFloat},
    {"FLOAT-LONG", Usage::longFloat},
    {"BINARY-CHAR", Usage::binaryChar},
    {"BINARY-SHORT", Usage::binaryShort},
    {"BINARY-LONG", Usage::binaryLong},
    {"BINARY-DOUBLE", Usage::binaryDouble},
    {"INDEX", Usage::index},
    {"POINTER", Usage::pointer},
    {"POINTER-32", Usage::pointer32},
    {"PROCEDURE-POINTER", Usage::codePointer},
    {"FUNCTION-POINTER", Usage::codePointer},
};

constexpr std::string_view kRefusedUsages[] = {
    "COMP-9",          "COMP-X",          "COMP-N",           "COMP-10",          "OBJECT",         "UTF-8",
    "FLOAT-BINARY-32", "FLOAT-BINARY-64", "FLOAT-DECIMAL-16", "FLOAT-DECIMAL-34", "FLOAT-EXTENDED",
};

constexpr std::string_view kOccursPhrases[] = {"DEPENDING", "ASCENDING", "DESCENDING", "INDEXED"};

constexpr std::string_view kFigurativeConstants[] = {
    "ZERO",      "ZEROS",      "ZEROES", "SPACE",  "SPACES", "HIGH-VALUE", "HIGH-VALUES",
    "LOW-VALUE", "LOW-VALUES", "QUOTE",  "QUOTES", "NULL",   "NULLS",
};

template <std::size_t N>
bool isOneOf(const Token& token, const std::string_view (&words)[N]) {
  return std::any_of(std::begin(words), std::end(words), [&](std::string_view word) { return token.isWord(word); });
}

// The token with COMPUTATIONAL shortened to COMP.
Token shortened(const Token& token) {
  constexpr std::string_view kLong = "COMPUTATIONAL";
  if (!equalIgnoringCase(std::string_view(token.text).substr(0, kLong.size()), kLong)) return token;
  return {token.kind, "COMP" + token.text.substr(kLong.size()), token.place, false};
}

bool isNumber(std::string_view text) {
  return !isLetter(text.front()) && std::any_of(text.begin(), text.end(), isDigit) &&
         std::all_of(text.begin(), text.end(),
                     [](char c) { return isDigit(c) || std::string_view("+-.,eE").find(c) != std::string_view::npos; });
}

}  // namespace

std::optional<Usage> findUsage(const Token& token) {
  const Token word = shortened(token);
  for (const UsageName& usage : kUsages)
    if (word.isWord(usage.word)) return usage.usage;
  return std::nullopt;
}

bool isRefusedUsage(const Token& token) {
  return isOneOf(shortened(token), kRefusedUsages);
}

bool isUsageOrName(const Token& token) {
  const auto usage = findUsage(token);
  return usage ? *usage >= Usage::index : isRefusedUsage(token);
}

bool isName(const Token& token) {
  const std::string& text = token.text;
  return token.kind == TokenKind::word && std::any_of(text.begin(), text.end(), isLetter) &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return isLetter(c) || isDigit(c) || std::string_view("-_#@$:").find(c) != std::string_view::npos;
         });
}

bool isValue(const Token& token) {
  return token.kind == TokenKind::literal ||
         (token.kind == TokenKind::word && (isNumber(token.text) || isOneOf(token, kFigurativeConstants)));
}

bool isOccursPhrase(const Token& token) {
  return isOneOf(token, kOccursPhrases);
}

}  // namespace oxr::rec::copybook
