// The float routines against the slow word-by-word way, and fields of integers and floats written and read back.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/byteorder.hpp"
#include "core/hexfloat.hpp"
#include "dataconv.hpp"
#include "kelexception.hpp"
#include "tests/harness/wordfloats.hpp"

namespace {

namespace core = oxr::core;
namespace words = oxr::test::words;

void require(bool holds) {
  if (!holds) std::abort();
}

// Whether `call` goes through; what it raises must be one of the failures that a value can lead to.
template <class Call>
bool succeeds(Call call) {
  try {
    call();
    return true;
  } catch (const KelConversionException& e) {
    const int message = e.messageNumber() & 0xFFFF;
    require(message == 5505 || message == 5506 || message == 5507);
    return false;
  }
}

void compareFormats(std::uint64_t bits) {
  const auto word = static_cast<std::uint32_t>(bits);
  require(core::ieeeFromHex(word) == words::ieeeFromHex(word));
  require(core::hexFromIeee(word) == words::hexFromIeee(word));
  require(core::ieeeFromHex(bits) == words::joined(words::ieeeFromHex(words::split(bits))));
  require(core::hexFromIeee(bits) == words::joined(words::hexFromIeee(words::split(bits))));
}

void roundTripFloats(DataCnv& converter, std::uint64_t bits, int size) {
  unsigned char field[8];
  std::memcpy(field, &bits, sizeof field);
  const double value = converter.FltToDbl(field, size);
  unsigned char written[8];
  converter.FltFromDbl(value, written, size);
  // Reading and writing may clamp, but once only.
  const double again = converter.FltToDbl(written, size);
  unsigned char settled[8];
  converter.FltFromDbl(again, settled, size);
  require(std::memcmp(written, settled, static_cast<std::size_t>(size)) == 0);
  converter.FltToDec(field, size, static_cast<int>(bits % 40) - 20);
}

void roundTripIntegers(DataCnv& converter, std::int64_t value, int size, ESign sign, int scale) {
  unsigned char field[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
  field[size] = 0x5A;
  if (succeeds([&] { converter.IntFromInt64(value, field, size, sign); })) {
    require(converter.IntToInt64(field, size, sign) == value);
    const double real = static_cast<double>(value);
    if (static_cast<double>(converter.IntToInt64(field, size, sign)) == real && std::abs(real) < 0x1p53) {
      require(converter.IntToDbl(field, size, 0, sign) == real);
      converter.IntFromDbl(real, field, size, sign == eSignLeadingIncluded ? sign : eSignNone, 0);
      require(converter.IntToInt64(field, size, sign) == value);
    }
  }
  const PWFData text = converter.IntToDec(field, size, 0);
  unsigned char copy[8];
  converter.IntFromDec(text.getDecimalValue(), copy, size, 0);
  require(std::memcmp(copy, field, static_cast<std::size_t>(size)) == 0);
  // Any double, scaled by any power, is taken or refused; nothing is undefined.
  succeeds([&] { converter.IntFromDbl(std::bit_cast<double>(value), field, size, sign, scale); });
  converter.IntToDbl(field, size, scale, sign);
  require(field[size] == 0x5A);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 16) return 0;
  const auto bits = core::loadBytes<std::uint64_t>(data + 4, false);
  const auto widest = static_cast<int>(core::loadBytes<std::uint32_t>(data + 12, false));
  const int scale = (data[1] & 0x70) == 0 ? widest : widest % 64;  // seldom one for which long texts are made
  DataCnv converter(37, EEndian{data[0] % 4}, eEndianBig, EFloatFmt{data[1] % 5}, 53, nullptr, false, nullptr, 0, true,
                    12, false, eMessageStandardDefault, nullptr);
  compareFormats(bits);
  roundTripFloats(converter, bits, (data[2] & 1) != 0 ? 8 : 4);
  const int width = 1 << data[2] % 4;
  roundTripIntegers(converter, static_cast<std::int64_t>(bits) >> data[3] % 64, width, ESign{data[2] / 4 % 6}, scale);

  // Any units as the text of a decimal, of any scale.
  KelWstring text;
  for (std::size_t i = 16; i < size; ++i) {
    const auto unit = static_cast<unsigned short>(data[i] < 0xF0 ? data[i] & 0x7F : data[i] << 8);
    text.appendInternal(&unit, 1, 0);
  }
  unsigned char field[8];
  succeeds([&] { converter.IntFromDec(text.characters(), field, width, scale); });
  succeeds([&] { converter.FltFromDec(text.characters(), field, (data[2] & 1) != 0 ? 8 : 4, scale); });
  return 0;
}
