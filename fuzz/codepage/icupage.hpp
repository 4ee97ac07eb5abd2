#pragma once

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <cstdint>
#include <string>

#include "fuzz/harness/choices.hpp"
#include "pwftypes.hpp"

// What checks of code pages share: the pages, ICU's converter of each with the settings that the library promises, and
// texts to convert.
namespace oxr::fuzz {

struct IcuPage {
  int ccsid;
  EEndian endian;
  const char* icuName;
};

// Those with a form of their own first; then mixed and double-byte ones, with and without shifts, and those with marks.
inline constexpr IcuPage kIcuPages[] = {
    {37, eEndianBig, "ibm-37"},        {1252, eEndianBig, "ibm-1252"},         {424, eEndianBig, "ibm-424"},
    {874, eEndianBig, "ibm-874"},      {850, eEndianBig, "ibm-850"},           {367, eEndianBig, "ibm-367"},
    {1140, eEndianLittle, "ibm-1140"}, {819, eEndianBig, "ibm-819"},           {1208, eEndianBig, "UTF-8"},
    {1208, eEndianLittle, "UTF-8"},    {1200, eEndianBig, "UTF-16BE"},         {1200, eEndianLittle, "UTF-16LE"},
    {943, eEndianBig, "ibm-943"},      {930, eEndianBig, "ibm-930"},           {939, eEndianBig, "ibm-939"},
    {1390, eEndianBig, "ibm-1390"},    {1388, eEndianBig, "ibm-1388"},         {33722, eEndianBig, "ibm-33722"},
    {5488, eEndianBig, "gb18030"},     {1232, eEndianBig, "UTF-32BE"},         {1363, eEndianBig, "ibm-1363"},
    {1204, eEndianLittle, "UTF-16"},   {1204, eEndianBig, "UTF-16,version=2"}, {1236, eEndianLittle, "UTF-32"},
    {5054, eEndianBig, "ibm-5054"},    {25546, eEndianBig, "ibm-25546"}};

inline void substituteAllButTruncation(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes,
                                       std::int32_t length, UConverterCallbackReason reason, UErrorCode* status) {
  if (*status != U_TRUNCATED_CHAR_FOUND)
    UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason, status);
}

inline icu::LocalUConverterPointer openByIcu(const IcuPage& page) {
  UErrorCode status = U_ZERO_ERROR;
  icu::LocalUConverterPointer result(ucnv_open(page.icuName, &status));
  UConverter* const icu = result.getAlias();
  ucnv_setToUCallBack(icu, substituteAllButTruncation, nullptr, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(icu, UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  require(U_SUCCESS(status), std::string("no converter ") + page.icuName);
  ucnv_setFallback(icu, true);
  return result;
}

// A run of characters of one kind, long enough for blocks; few choices, so that short inputs give long texts. Mostly
// well formed: lone surrogates, byte-order marks and any unit at all come now and then.
inline void drawPageRun(Choices& choices, std::u16string& text) {
  static constexpr char16_t kRare[] = {0xFEFF, 0xFFFE, 0xFFFD, 0xAD, 0x200B, 0xFF21, 0, 0xD800, 0xDFFF, 0x80, 0x7F};
  const std::size_t kind = choices.upTo(9);
  std::uint32_t state = choices.any<std::uint16_t>();
  for (std::size_t left = choices.upTo(choices.coin() ? 40 : 3); left != 0; --left) {
    state = state * 1664525 + 1013904223;
    const std::uint32_t value = state >> 8;
    switch (kind) {
      case 0:
      case 1:
      case 2:
        text += static_cast<char16_t>('0' + value % 75);
        break;
      case 3:
        text += static_cast<char16_t>(0x80 + value % 0x780);
        break;
      case 4:
        text += static_cast<char16_t>(0x3041 + value % 0x6000);
        break;
      case 5:
        text += {static_cast<char16_t>(0xD800 + value % 0x400), static_cast<char16_t>(0xDC00 + value / 0x400 % 0x400)};
        break;
      case 6:
        text += static_cast<char16_t>(value % 40 == 0 ? 0xD800 + value / 40 % 0x800 : 0xA0 + value % 0x60);
        break;
      case 7:
        text += kRare[value % std::size(kRare)];
        break;
      case 8:
        text += static_cast<char16_t>(value % 0x80);
        break;
      default:
        text += static_cast<char16_t>(value);
    }
  }
}
inline std::u16string drawPageText(Choices& choices) {
  std::u16string text;
  for (std::size_t runs = choices.upTo(5); runs != 0; --runs)
    drawPageRun(choices, text);
  return text;
}

// The bytes of such a text, some of them spoilt now and then; or any few bytes.
inline std::string drawPageBytes(Choices& choices, const IcuPage& page) {
  if (choices.upTo(7) == 0) {
    const auto bytes = choices.bytes(choices.upTo(40));
    return {bytes.begin(), bytes.end()};
  }
  const std::u16string text = drawPageText(choices);
  std::string result(8 * text.size() + 16, '\0');
  UErrorCode status = U_ZERO_ERROR;
  const auto length = ucnv_fromUChars(openByIcu(page).getAlias(), result.data(), static_cast<int>(result.size()),
                                      text.data(), static_cast<int>(text.size()), &status);
  result.resize(static_cast<std::size_t>(length));
  if (!result.empty() && choices.upTo(3) == 0)
    for (std::size_t faults = choices.upTo(3); faults != 0; --faults)
      result[choices.upTo(result.size() - 1)] = choices.any<char>();
  return result;
}

}  // namespace oxr::fuzz
