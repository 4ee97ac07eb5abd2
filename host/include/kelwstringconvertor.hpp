#pragma once

#include <string>
#include <string_view>

#include "kelexport.hpp"
#include "kelwstring.hpp"

// Text in the system's wide characters into the host's.
namespace KelWstringConvertor {

// The text in UTF-16: a character above U+FFFF becomes a surrogate pair. Null gives an empty string.
KELHOST_EXPORT KelWstring toKelWstring(const wchar_t* text);

}  // namespace KelWstringConvertor

// The low 8 bits of `character` as a code unit.
constexpr unsigned short convertChar(wchar_t character) {
  return static_cast<unsigned short>(character & 0xFF);
}

// The text of a Latin-1 literal: each character gives its low 8 bits, so characters above U+00FF are not preserved.
// Made for the string tables that are built at load. Null gives an empty string.
KELHOST_EXPORT KelWstring convertString(const wchar_t* text);

namespace oxr {

// UTF-16 to UTF-8 and back, for tests, tools and the log. An unpaired surrogate or a malformed sequence becomes U+FFFD.
KELHOST_EXPORT std::string toUtf8(UnitView text);
inline std::string toUtf8(const KelWstring& text) {
  return toUtf8(text.view());
}
KELHOST_EXPORT KelWstring fromUtf8(std::string_view text);

}  // namespace oxr
