#pragma once

#include <optional>

#include "records/copybook/lexer.hpp"

namespace oxr::rec::copybook {

// What single words of a copybook can mean. A word may mean several of these: where it stands decides.

enum class Usage : std::uint8_t {
  display,
  binary,
  nativeBinary,
  packed,
  unsignedPacked,
  national,
  dbcs,
  // Those from here on have no picture.
  shortFloat,
  longFloat,
  binaryChar,
  binaryShort,
  binaryLong,
  binaryDouble,
  index,
  pointer,
  pointer32,
  codePointer,  // to a procedure or a function
};

// The usage that a word such as COMP-3, COMPUTATIONAL-3 or BINARY names.
std::optional<Usage> findUsage(const Token& token);
// Whether the word is a usage of the language that no layout can have here, such as COMP-X or OBJECT.
bool isRefusedUsage(const Token& token);
// Whether the word is a usage that fields are also called by: INDEX or POINTER, and those that are refused.
bool isUsageOrName(const Token& token);

// Whether the word is a name: letters, digits, "-" and "_" with at least one letter. The signs of national conventions
// and of placeholders that nobody replaced (":TAG:-ID") count as letters do in a name, but do not make one.
bool isName(const Token& token);

// Whether the token is a literal, a number or a figurative constant.
bool isValue(const Token& token);

// Whether the word opens a phrase after the number of times in OCCURS.
bool isOccursPhrase(const Token& token);

}  // namespace oxr::rec::copybook
