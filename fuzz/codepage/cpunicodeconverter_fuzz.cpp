// Any bytes and any code units in any of several code pages, in any sequence of whole strings and small steps, in lock
// step with a plain ICU converter.

#include "cpunicodeconverter.hpp"

#include <unicode/ucnv_err.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

struct Page {
  int ccsid;
  EEndian endian;
  const char* name;
};
constexpr Page kPages[] = {
    {37, eEndianBig, "ibm-37"},     {424, eEndianBig, "ibm-424"},      {1252, eEndianBig, "ibm-1252"},
    {1208, eEndianBig, "UTF-8"},    {943, eEndianBig, "ibm-943"},      {930, eEndianBig, "ibm-930"},
    {1390, eEndianBig, "ibm-1390"}, {33722, eEndianBig, "ibm-33722"},  {5488, eEndianBig, "gb18030"},
    {1200, eEndianBig, "UTF-16BE"}, {1232, eEndianBig, "UTF-32BE"},    {1363, eEndianBig, "ibm-1363"},
    {1208, eEndianBig, "UTF-8"},    {1200, eEndianLittle, "UTF-16LE"}, {1140, eEndianBig, "ibm-1140"},
    {1204, eEndianLittle, "UTF-16"}};

void substitute(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes, std::int32_t length,
                UConverterCallbackReason reason, UErrorCode* status) {
  if (*status != U_TRUNCATED_CHAR_FOUND)
    UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason, status);
}

void require(bool holds) {
  if (!holds) std::abort();
}

std::u16string unitsOf(const unsigned short* units, std::size_t count) {
  return std::u16string(units, units + count);
}

// A converter of the library and one of ICU that are given the same.
class Lockstep {
 public:
  explicit Lockstep(const Page& page) : converter_(page.ccsid, page.endian) {
    UErrorCode status = U_ZERO_ERROR;
    model_.adoptInstead(ucnv_open(page.name, &status));
    ucnv_setToUCallBack(model_.getAlias(), substitute, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(model_.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
    ucnv_setFallback(model_.getAlias(), true);
    require(U_SUCCESS(status));
  }

  void decodeString(const std::string& bytes) {
    KelWstring text;
    UErrorCode status = U_ZERO_ERROR;
    converter_.toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()), status);
    if (bytes.empty()) return require(status == U_ILLEGAL_ARGUMENT_ERROR);
    const auto [units, passed, modelStatus] = decodedByModel(bytes, 4096, true);
    if (U_FAILURE(modelStatus)) ucnv_resetToUnicode(model_.getAlias());
    require(status == modelStatus && unitsOf(text.characters(), text.length()) == units);
  }
  void decode(const std::string& bytes, std::size_t room, bool flush) {
    unsigned short units[64], *target = units;
    const char* source = bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    converter_.toUnicode(target, units + room, source, source + bytes.size(), nullptr, flush, status);
    const auto [expected, passed, modelStatus] = decodedByModel(bytes, room, flush);
    require(status == modelStatus && source - bytes.data() == passed);
    require(unitsOf(units, static_cast<std::size_t>(target - units)) == expected);
  }
  void encodeString(const std::u16string& units, int room) {
    char bytes[64];
    UErrorCode status = U_ZERO_ERROR;
    int size = room;
    converter_.fromUnicodeString(bytes, size, KelWstring(asHosts(units), static_cast<unsigned>(units.size())), status);
    if (room == 0) return require(status == U_ILLEGAL_ARGUMENT_ERROR);
    const auto [expected, passed, modelStatus] = encodedByModel(units, static_cast<std::size_t>(room), true);
    if (U_FAILURE(modelStatus)) ucnv_resetFromUnicode(model_.getAlias());
    require(status == modelStatus && std::string(bytes, static_cast<std::size_t>(size)) == expected);
  }
  void encode(const std::u16string& units, std::size_t room, bool flush) {
    char bytes[64], *target = bytes;
    const unsigned short *const begin = asHosts(units), *source = begin;
    UErrorCode status = U_ZERO_ERROR;
    converter_.fromUnicode(target, bytes + room, source, source + units.size(), nullptr, flush, status);
    const auto [expected, passed, modelStatus] = encodedByModel(units, room, flush);
    require(status == modelStatus && source - begin == passed && std::string(bytes, target) == expected);
  }

 private:
  template <class Text>
  struct Step {
    Text text;
    std::ptrdiff_t passed;
    UErrorCode status = U_ZERO_ERROR;
  };

  static const unsigned short* asHosts(const std::u16string& units) {
    return reinterpret_cast<const unsigned short*>(units.data());
  }
  Step<std::u16string> decodedByModel(const std::string& bytes, std::size_t room, bool flush) {
    Step<std::u16string> step{std::u16string(room, u'\0'), 0};
    const char* source = bytes.data();
    char16_t* target = step.text.data();
    ucnv_toUnicode(model_.getAlias(), &target, target + room, &source, source + bytes.size(), nullptr, flush,
                   &step.status);
    step.text.resize(static_cast<std::size_t>(target - step.text.data()));
    step.passed = source - bytes.data();
    return step;
  }
  Step<std::string> encodedByModel(const std::u16string& units, std::size_t room, bool flush) {
    Step<std::string> step{std::string(room, '\0'), 0};
    const char16_t* source = units.data();
    char* target = step.text.data();
    ucnv_fromUnicode(model_.getAlias(), &target, target + room, &source, source + units.size(), nullptr, flush,
                     &step.status);
    step.text.resize(static_cast<std::size_t>(target - step.text.data()));
    step.passed = source - units.data();
    return step;
  }

  CPUnicodeConverter converter_;
  icu::LocalUConverterPointer model_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  Lockstep both(kPages[data[0] % std::size(kPages)]);
  // Each round: a byte that says what to do, one that says with how much room, and up to 63 bytes to do it with.
  for (std::size_t at = 1; at + 1 < size;) {
    const unsigned what = data[at], room = data[at + 1] & 63u;
    const bool flush = (data[at + 1] & 64) != 0, widened = (data[at + 1] & 128) != 0;
    at += 2;
    const std::size_t count = std::min<std::size_t>(what & 63, size - at);
    const std::string bytes(reinterpret_cast<const char*>(data + at), count);
    at += count;
    // Units of two bytes each, or a byte each: most text is in the lower code units.
    std::u16string units;
    for (std::size_t i = 0; i + 1 < count; i += widened ? 1 : 2)
      units += static_cast<char16_t>((widened ? 0 : static_cast<unsigned char>(bytes[i + 1]) << 8) |
                                     static_cast<unsigned char>(bytes[i]));
    switch (what >> 6) {
      case 0:
        both.decodeString(bytes);
        break;
      case 1:
        both.decode(bytes, room, flush);
        break;
      case 2:
        both.encodeString(units, static_cast<int>(room));
        break;
      default:
        both.encode(units, room, flush);
    }
  }
  return 0;
}
