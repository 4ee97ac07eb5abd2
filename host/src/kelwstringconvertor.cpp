#include "kelwstringconvertor.hpp"

#include <unicode/unistr.h>
#include <unicode/utf16.h>

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

std::string toUtf8(UnitView text) {
  std::string result;
  icu::UnicodeString(false, icu::ConstChar16Ptr(text.data()), static_cast<int32_t>(text.size())).toUTF8String(result);
  return result;
}

KelWstring fromUtf8(std::string_view text) {
  const icu::UnicodeString units = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
  KelWstring result;
  unsigned short* const target = result.resizeForOverwrite(static_cast<unsigned>(units.length()));
  units.extract(0, units.length(), oxr::toIcu(target));
  return result;
}

}  // namespace oxr
