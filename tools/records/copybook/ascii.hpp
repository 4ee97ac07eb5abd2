#pragma once

#include <string>
#include <string_view>

// Letters, digits and case of ASCII. The words of COBOL have no other characters, and no locale changes what they mean.

namespace oxr::rec::copybook {

constexpr bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr char upperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool isQuote(char c) {
  return c == '"' || c == '\'';
}

std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
bool equalIgnoringCase(std::string_view a, std::string_view b);

}  // namespace oxr::rec::copybook
