#pragma once

#include <optional>

#include "records/copybook/lexer.hpp"

namespace oxr::rec::copybook {

// What single words of a copybook can be. A word may be several of these: its place decides.

enum class Usage : std::uint8_t { display, binary, nativeBinary, packed, shortFloat, longFloat };

// COMP-3, COMPUTATIONAL-3, BINARY, ...
std::optional<Usage> findUsage(const Token& token);
// A usage of the language that layouts here can't have: POINTER, INDEX, COMP-6, ...
bool isRefusedUsage(const Token& token);

// Letters, digits, "-" and "_", at least one letter; also the signs of national conventions and of placeholders that
// nobody replaced (":TAG:-ID").
bool isName(const Token& token);

// A literal, a number or a figurative constant.
bool isValue(const Token& token);

// A word that opens a phrase after the number of times in OCCURS.
bool isOccursPhrase(const Token& token);

}  // namespace oxr::rec::copybook
