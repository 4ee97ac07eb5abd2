#include "kelwstringconvertor.hpp"

#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <array>
#include <cwchar>

namespace KelWstringConvertor {

KelWstring toKelWstring(const wchar_t* text) {
  KelWstring result;
  if (text == nullptr) return result;
  // One unit a character is what most texts need; the others make the string grow.
  result.reserve(static_cast<unsigned>(std::wcslen(text)));
  for (; *text != 0; ++text) {
    unsigned short units[2];
    unsigned count = 0;
    UBool failed = false;
    U16_APPEND(units, count, 2, static_cast<UChar32>(*text), failed);
    if (failed) units[count++] = 0xFFFD;
    result.appendInternal(units, count, 0);
  }
  return result;
}

}  // namespace KelWstringConvertor

KelWstring convertString(const wchar_t* text) {
  KelWstring result;
  if (text == nullptr) return result;
  unsigned short* const units = result.resizeForOverwrite(static_cast<unsigned>(std::wcslen(text)));
  for (unsigned i = 0; i < result.length(); ++i)
    units[i] = convertChar(text[i]);
  return result;
}

namespace oxr {

namespace {

constexpr UChar32 kReplacement = 0xFFFD;  // for what is malformed

}  // namespace

// ICU's strings would need memory of their own here, and come back empty without it.

std::string toUtf8(UnitView text) {
  constexpr std::size_t kUsualUnits = 256;  // of a text for which the stack will do: three bytes a unit are enough
  const auto units = static_cast<std::int32_t>(text.size());
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t length = 0;
  if (text.size() <= kUsualUnits) {
    std::array<char, 3 * kUsualUnits> bytes;
    u_strToUTF8WithSub(bytes.data(), bytes.size(), &length, toIcu(text.data()), units, kReplacement, nullptr, &status);
    return {bytes.data(), static_cast<std::size_t>(length)};
  }
  u_strToUTF8WithSub(nullptr, 0, &length, toIcu(text.data()), units, kReplacement, nullptr, &status);
  status = U_ZERO_ERROR;  // there was no room, which was to be
  std::string result(static_cast<std::size_t>(length), '\0');
  u_strToUTF8WithSub(result.data(), length, nullptr, toIcu(text.data()), units, kReplacement, nullptr, &status);
  return result;
}

// A text has no more units than bytes.
KelWstring fromUtf8(std::string_view text) {
  KelWstring result;
  if (text.empty()) return result;
  char16_t* const units = toIcu(result.resizeForOverwrite(static_cast<unsigned>(text.size())));
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t length = 0;
  u_strFromUTF8WithSub(units, static_cast<std::int32_t>(text.size()), &length, text.data(),
                       static_cast<std::int32_t>(text.size()), kReplacement, nullptr, &status);
  result.cutTo(static_cast<unsigned>(length));
  return result;
}

}  // namespace oxr
