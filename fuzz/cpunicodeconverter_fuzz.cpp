// Any bytes in any of several code pages, in any sequence of whole strings and small steps, in lock step with a plain
// ICU converter that has room for everything.

#include "cpunicodeconverter.hpp"

#include <unicode/ucnv_err.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Page {
  int ccsid;
  const char* name;
};
constexpr Page kPages[] = {{37, "ibm-37"},    {424, "ibm-424"},   {1252, "ibm-1252"}, {1208, "UTF-8"},
                           {943, "ibm-943"},  {930, "ibm-930"},   {1390, "ibm-1390"}, {33722, "ibm-33722"},
                           {5488, "gb18030"}, {1200, "UTF-16BE"}, {1232, "UTF-32BE"}, {1363, "ibm-1363"}};

void substitute(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes, std::int32_t length,
                UConverterCallbackReason reason, UErrorCode* status) {
  if (*status != U_TRUNCATED_CHAR_FOUND)
    UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason, status);
}

void require(bool holds) {
  if (!holds) std::abort();
}

// Converts up to `room` units of what is left of `source`.
std::u16string step(UConverter* model, const char*& source, const char* limit, std::size_t room, bool flush,
                    UErrorCode& status) {
  std::u16string units(room, u'\0');
  char16_t* const begin = units.data();
  char16_t* end = begin;
  status = U_ZERO_ERROR;
  ucnv_toUnicode(model, &end, begin + room, &source, limit, nullptr, flush, &status);
  units.resize(static_cast<std::size_t>(end - begin));
  return units;
}

std::u16string unitsOf(const unsigned short* units, std::size_t count) {
  return std::u16string(units, units + count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const Page& page = kPages[data[0] % std::size(kPages)];
  CPUnicodeConverter converter(page.ccsid, eEndianBig);
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer model(ucnv_open(page.name, &status));
  ucnv_setToUCallBack(model.getAlias(), substitute, nullptr, nullptr, nullptr, &status);
  ucnv_setFallback(model.getAlias(), true);
  require(U_SUCCESS(status));

  // Each round: a byte that says what to do, and up to 31 bytes to do it with.
  for (std::size_t at = 1; at < size;) {
    const unsigned what = data[at++];
    const std::size_t count = std::min<std::size_t>(what & 31, size - at);
    const std::string bytes(reinterpret_cast<const char*>(data + at), count);
    at += count;
    const char* modelSource = bytes.data();
    const char* const limit = modelSource + count;
    UErrorCode modelStatus = U_ZERO_ERROR;
    if ((what & 32) != 0) {
      KelWstring text;
      converter.toUnicodeString(text, bytes.data(), static_cast<int>(count), status);
      if (count == 0) {
        require(status == U_ILLEGAL_ARGUMENT_ERROR);
        continue;
      }
      const std::u16string expected = step(model.getAlias(), modelSource, limit, 4096, true, modelStatus);
      if (U_FAILURE(modelStatus)) ucnv_resetToUnicode(model.getAlias());
      require(status == modelStatus && unitsOf(text.characters(), text.length()) == expected);
    } else {
      const std::size_t room = what >> 6;
      const bool flush = (what & 1) != 0;
      unsigned short units[4], *target = units;
      const char* source = bytes.data();
      status = U_ZERO_ERROR;
      converter.toUnicode(target, units + room, source, limit, nullptr, flush, status);
      const std::u16string expected = step(model.getAlias(), modelSource, limit, room, flush, modelStatus);
      require(status == modelStatus && source == modelSource);
      require(unitsOf(units, static_cast<std::size_t>(target - units)) == expected);
    }
  }
  return 0;
}
