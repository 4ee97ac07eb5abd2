#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Text of unknown origin, such as data of a message or the name of a file, for a log or a terminal.

namespace oxr {

// Bytes of the character of UTF-8 that `text` begins with, which is stored in `character`; 0 if it begins with none.
constexpr std::size_t firstCharacter(std::string_view text, std::uint32_t& character) {
  const auto byte = [&](std::size_t at) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[at])); };
  const std::uint32_t lead = byte(0);
  const std::size_t size = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (size == 0 || size > text.size()) return 0;
  character = size == 1 ? lead : lead & (0xFFU >> (size + 1));
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    character = (character << 6) | (byte(i) & 0x3F);
  }
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xD800 && character < 0xE000;
  return character < kLeast[size] || character > 0x10FFFF || isSurrogate ? 0 : size;
}

// Whether a terminal obeys the character instead of showing it: controls, and what changes the direction of writing,
// ends a line or is not seen, so that a text could look like another one.
constexpr bool isControl(std::uint32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x061C ||
         (character >= 0x200B && character <= 0x200F) || (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2060 && character <= 0x206F) || character == 0xFEFF;
}

// The text with such characters as "\x1b" or, above ASCII, as "\u009b"; so are bytes that are no UTF-8, as "\x9b".
inline std::string printable(std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    std::uint32_t character = 0;
    const std::size_t size = firstCharacter(text.substr(at), character);
    if (size != 0 && !isControl(character)) {
      shown += text.substr(at, size);
    } else {
      const std::uint32_t number = size != 0 ? character : static_cast<unsigned char>(text[at]);
      shown += size > 1 ? "\\u" : "\\x";
      for (int shift = size > 1 ? 12 : 4; shift >= 0; shift -= 4)
        shown += kHex[(number >> shift) & 15];
    }
    at += size != 0 ? size : 1;
  }
  return shown;
}

}  // namespace oxr
