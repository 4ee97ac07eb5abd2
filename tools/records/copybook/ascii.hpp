#pragma once

namespace oxr::rec {

// ASCII only and deaf to the locale: COBOL words have no other characters.
constexpr bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr char upperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace oxr::rec
