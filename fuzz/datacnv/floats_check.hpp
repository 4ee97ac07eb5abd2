#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

#include "dataconv.hpp"
#include "fuzz/datacnv/wordfloats.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "kelexception.hpp"

// Float fields of both formats against the slow routines of wordfloats.hpp.
namespace oxr::fuzz {

// Bits that are random, or have long runs of equal ones, where the rounding goes another way.
inline std::uint64_t drawFloatBits(Choices& choices) {
  const auto bits = choices.any<std::uint64_t>();
  const std::uint64_t run = ~std::uint64_t{0} >> choices.upTo(63);
  switch (choices.upTo(7)) {
    case 0:
      return bits | 0xFFFFFFFFu;
    case 1:
      return bits & ~run;
    case 2:
      return bits | (run & 0x00FFFFFF'FFFFFFFFu);
    case 3:
      return bits & ~(run & 0x00FFFFFF'FFFFFFFFu);
    default:
      return bits;
  }
}

// The bits that an exported routine makes of bits.
template <class Float, class Bits, class... Order>
Bits convertedBits(void (*routine)(Float*, Float*, Order...), Bits bits, Order... order) {
  auto in = std::bit_cast<Float>(bits);
  Float out;
  routine(&in, &out, order...);
  return std::bit_cast<Bits>(out);
}

inline void checkFloatFormats(Choices& choices) {
  const std::uint64_t bits = drawFloatBits(choices);
  const auto word = static_cast<std::uint32_t>(bits >> 32);
  requireEqual(convertedBits(DataCnv::ConvertFloatHFPtoIEEE, word), words::ieeeFromHex(word), "a float read");
  requireEqual(convertedBits(DataCnv::ConvertFloatIEEEtoHFP, word), words::hexFromIeee(word), "a float written");
  // The order is one of words in memory: eEndianBig has the high word first, all others the low one.
  const auto order = static_cast<EEndian>(choices.upTo(3));
  const auto ordered = [order](std::uint64_t pattern) {
    return order == eEndianBig ? std::rotl(pattern, 32) : pattern;
  };
  requireEqual(convertedBits(DataCnv::ConvertDoubleHFPtoIEEE, ordered(bits), order),
               ordered(words::joined(words::ieeeFromHex(words::split(bits)))), "a double read");
  const std::uint64_t hex = words::joined(words::hexFromIeee(words::split(bits)));
  requireEqual(convertedBits(DataCnv::ConvertDoubleIEEEtoHFP, ordered(bits), order), ordered(hex), "a double written");
  // From 16^-64 to 16^63 no bit of a double is lost, whichever its first digit.
  const std::uint64_t exponent = bits >> 52 & 0x7FF;
  if (exponent >= 1023 - 256 && exponent < 1023 - 256 + 504)
    requireEqual(convertedBits(DataCnv::ConvertDoubleHFPtoIEEE, hex, eEndianLittle), bits, "a double there and back");
}

inline void checkFloatFields(Choices& choices) {
  const auto format = static_cast<EFloatFmt>(choices.upTo(4));
  DataCnv converter(37, eEndianBig, eEndianBig, format, 53, nullptr, false, nullptr, 0, true, 12, false,
                    eMessageStandardDefault, nullptr);
  const int size = choices.coin() ? 8 : 4;
  const std::uint64_t bits = drawFloatBits(choices);
  // The field with the most significant byte first, and as the format has it.
  std::string bytes;
  for (int place = 56; place > 56 - 8 * size; place -= 8)
    bytes += static_cast<char>(bits >> place);
  if (format == eFloatIeeeLittle) std::reverse(bytes.begin(), bytes.end());
  const auto* const field = reinterpret_cast<const unsigned char*>(bytes.data());

  const auto word = static_cast<std::uint32_t>(bits >> 32);
  const bool isHex = format == eFloatHexadecimal;
  const double model =
      size == 4 ? double{std::bit_cast<float>(isHex ? words::ieeeFromHex(word) : word)}
                : std::bit_cast<double>(isHex ? words::joined(words::ieeeFromHex(words::split(bits))) : bits);
  const auto readBits = [&] { return std::bit_cast<std::uint64_t>(converter.FltToDbl(field, size)); };
  if (model == model) requireEqual(theFastWay(readBits), std::bit_cast<std::uint64_t>(model), "a field read");
  requireEqual(theGeneralWay(readBits), theFastWay(readBits), "the general way");

  // Writing may clamp or drop bits, but once only.
  const auto written = [&](double value) {
    std::string target(static_cast<std::size_t>(size), '\0');
    converter.FltFromDbl(value, reinterpret_cast<unsigned char*>(target.data()), size);
    return target;
  };
  const double value = converter.FltToDbl(field, size);
  const std::string once = theFastWay([&] { return written(value); });
  require(once == theGeneralWay([&] { return written(value); }), "the general way writes another field");
  require(!(model == model) || isHex || once == bytes, "an IEEE field does not come back");
  require(once == written(converter.FltToDbl(reinterpret_cast<const unsigned char*>(once.data()), size)),
          "what was written is not stable");

  // Any scale, and any text: taken, or refused as no number.
  converter.FltToDec(field, size, choices.between(-20, 20));
  static constexpr unsigned short kUnits[] = {'0', '1', '9', '.', '-', '+', ' ', 'e', 0x0660, 0xD800};
  KelWstring text;
  for (std::size_t count = choices.upTo(24); count > 0; --count) {
    const unsigned short unit = choices.oneOf(kUnits);
    text.appendInternal(&unit, 1, 0);
  }
  unsigned char target[8];
  try {
    converter.FltFromDec(text.characters(), target, size, choices.between(-70, 70));
  } catch (const KelConversionException& e) {
    const int message = e.messageNumber() & 0xFFFF;
    require(message == 5505 || message == 5506, "another failure than that of the text");
  }
}

}  // namespace oxr::fuzz
