#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace oxr::rec::copybook {

inline constexpr unsigned kMaxDigits = 255;

// What a PICTURE string says by itself, before USAGE and SIGN are known.
struct Picture {
  enum class Category : std::uint8_t { text, edited, numeric, wide, graphic };  // wide: N, graphic: G
  Category category = Category::text;
  std::uint32_t characters = 0;  // of the field; S, V and P take none
  std::uint16_t digits = 0;      // numeric: the 9s, 1 to kMaxDigits
  std::int16_t scale = 0;        // numeric: digits after the point, the Ps counted; negative for Ps on the right
  bool isSigned = false;         // starts with S
};

struct PictureFault {
  std::size_t position = 0;  // of the character at fault, from 0
  std::string message;
};

// Reads "S9(13)V99" and the like, in either case of letters.
//
//   readPicture("SPPP9(5)")  // numeric, 5 digits, scale 8, 5 characters, signed
//   readPicture("ZZ9.99CR")  // edited, 8 characters
std::variant<Picture, PictureFault> readPicture(std::string_view text);

}  // namespace oxr::rec::copybook
