#pragma once

#include <cstddef>
#include <string_view>

// Columns of a copybook count characters. Its text is UTF-8, or of some code page with a byte a character: bytes that
// are no UTF-8 count as a character each.

namespace oxr::rec::copybook {

// Bytes of the character that starts at `at`, 1 to 4.
constexpr std::size_t characterBytes(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t bytes = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
  if (at + bytes > text.size()) return 1;
  for (std::size_t i = 1; i < bytes; ++i)
    if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80) return 1;
  return bytes;
}

constexpr std::size_t countCharacters(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); at += characterBytes(text, at))
    ++count;
  return count;
}

// Where the character with this index starts, or the size of the text if it has fewer.
constexpr std::size_t byteOfCharacter(std::string_view text, std::size_t index) {
  std::size_t at = 0;
  for (; index > 0 && at < text.size(); --index)
    at += characterBytes(text, at);
  return at;
}
static_assert(countCharacters("a\xC3\xA4\xE4.") == 4 && byteOfCharacter("a\xC3\xA4z", 2) == 3);

}  // namespace oxr::rec::copybook
