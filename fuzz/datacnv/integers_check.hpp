#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "kelexception.hpp"

// Binary integers of every width against a model that goes byte by byte.
namespace oxr::fuzz {

inline DataCnv integerConverter(EEndian order) {
  return DataCnv(37, order, eEndianUnset, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
                 eMessageStandardDefault, nullptr);
}

// The number that `convert` gives, or "OXR" and the number of what it raises.
template <class Convert>
std::string integerOutcome(Convert convert) {
  try {
    return std::to_string(convert());
  } catch (const KelConversionException& e) {
    return "OXR" + std::to_string(e.messageNumber() & 0xFFFF);
  }
}

// A field and how it is to be understood.
struct IntegerForm {
  int size;
  EEndian order;
  ESign sign;

  bool isSigned() const { return sign == eSignLeadingIncluded; }
  // Where in the field the byte of a place stands; place 0 has the least weight.
  int position(int place) const { return order == eEndianLittle ? place : size - 1 - place; }
  std::uint64_t read(const unsigned char* field) const {
    std::uint64_t value = 0;
    for (int place = size - 1; place >= 0; --place)
      value = value << 8 | field[position(place)];
    if (!isSigned() || (field[position(size - 1)] & 0x80) == 0) return value;
    for (int place = size; place < 8; ++place)
      value |= std::uint64_t{0xFF} << 8 * place;
    return value;
  }
  void write(std::uint64_t value, unsigned char* field) const {
    for (int place = 0; place < size; ++place)
      field[position(place)] = static_cast<unsigned char>(value >> 8 * place);
  }
  // A value fits if what is written of it reads as the same number.
  bool holds(PWFInt64 value) const {
    unsigned char field[8];
    write(static_cast<std::uint64_t>(value), field);
    return read(field) == static_cast<std::uint64_t>(value) && (isSigned() || value >= 0);
  }
};

inline IntegerForm drawIntegerForm(Choices& choices) {
  return {1 << choices.upTo(3), static_cast<EEndian>(choices.upTo(3)), static_cast<ESign>(choices.upTo(5))};
}
// Often one near a power of two, where the ranges end.
inline PWFInt64 drawInteger(Choices& choices) {
  const auto bits = choices.any<PWFInt64>();
  if (choices.coin()) return bits >> choices.upTo(63);
  const std::uint64_t power = std::uint64_t{1} << choices.upTo(63);
  return static_cast<PWFInt64>((choices.coin() ? power : 0 - power) + choices.upTo(4) - 2);
}

inline void checkIntegerRead(Choices& choices) {
  const IntegerForm form = drawIntegerForm(choices);
  DataCnv converter = integerConverter(form.order);
  unsigned char area[9];
  unsigned char* const field = area + choices.upTo(1);  // aligned or not
  IntegerForm(form).write(static_cast<std::uint64_t>(drawInteger(choices)), field);
  const std::uint64_t value = form.read(field);
  const IntegerForm plain{form.size, form.order, eSignNone};
  requireEqual(theFastWay([&] { return converter.UIntToUInt64(field, form.size); }), plain.read(field), "UIntToUInt64");
  const auto model = [&](int width) -> std::string {
    if (form.size > width) return "OXR5502";
    if (!form.isSigned() && (value >> (8 * width - 1)) != 0) return "OXR5507";
    return std::to_string(static_cast<PWFInt64>(value));
  };
  const auto readBoth = [&](const char* name, const std::string& expected, auto read) {
    const bool isGood = !expected.starts_with("OXR");
    requireEqual(isGood ? theFastWay([&] { return integerOutcome(read); }) : integerOutcome(read), expected, name);
    requireEqual(theGeneralWay([&] { return integerOutcome(read); }), expected, "the general way");
  };
  readBoth("IntToInt64", model(8), [&] { return converter.IntToInt64(field, form.size, form.sign); });
  readBoth("IntToInt32", model(4), [&] { return converter.IntToInt32(field, form.size, form.sign); });

  // Numbers with a scale of 0, and any other scale, which no number may make slow.
  const double real = form.isSigned() ? static_cast<double>(static_cast<PWFInt64>(value)) : static_cast<double>(value);
  requireEqual(converter.IntToDbl(field, form.size, 0, form.sign), real, "IntToDbl");
  converter.IntToDbl(field, form.size, choices.any<int>(), form.sign);
  unsigned char copy[8];
  const PWFData text = converter.IntToDec(field, form.size, 0);
  converter.IntFromDec(text.getDecimalValue(), copy, form.size, 0);
  requireEqual(plain.read(copy), plain.read(field), "the field of its own decimal");
}

inline void checkIntegerWrite(Choices& choices) {
  const IntegerForm form = drawIntegerForm(choices);
  DataCnv converter = integerConverter(form.order);
  const PWFInt64 value = drawInteger(choices);
  const IntegerForm plain{form.size, form.order, eSignNone};
  const IntegerForm asSigned{form.size, form.order, eSignLeadingIncluded};
  const auto writeBoth = [&](const char* name, const IntegerForm& range, PWFInt64 number, int maxSize, auto write) {
    std::string expected = "OXR5507";
    if (form.size > maxSize)
      expected = "OXR5502";
    else if (range.holds(number))
      expected = std::to_string(static_cast<std::uint64_t>(number) << (64 - 8 * form.size) >> (64 - 8 * form.size));
    const auto written = [&] {
      return integerOutcome([&] {
        unsigned char field[9] = {};
        field[form.size] = 0x5A;
        write(field);
        requireEqual(int{field[form.size]}, 0x5A, "the byte after the field");
        return plain.read(field);
      });
    };
    requireEqual(expected.starts_with("OXR") ? written() : theFastWay(written), expected, name);
    requireEqual(theGeneralWay(written), expected, "the general way");
  };
  const auto narrow = static_cast<PWFInt32>(value);
  const auto positive = static_cast<PWFUInt32>(value);
  int size = form.size;
  writeBoth("IntFromInt64", form, value, 8,
            [&](unsigned char* field) { converter.IntFromInt64(value, field, size, form.sign); });
  writeBoth("IntFromInt32", form, narrow, 4,
            [&](unsigned char* field) { converter.IntFromInt32(narrow, field, size, form.sign); });
  writeBoth("UIntFromUInt32", plain, PWFInt64{positive}, 4,
            [&](unsigned char* field) { converter.UIntFromUInt32(positive, field, size); });

  // A double that is an integer goes where the integer goes; here every ESign but eSignNone is a sign.
  const IntegerForm& real = form.sign == eSignNone ? plain : asSigned;
  const PWFInt64 exact = value >> 11;  // 53 bits
  const auto written = [&](auto write) {
    unsigned char field[8] = {};
    const std::string raised = integerOutcome([&] { return write(field), 0; });
    return raised == "0" ? std::to_string(plain.read(field)) : "refused";
  };
  requireEqual(written([&](unsigned char* field) {
                 converter.IntFromDbl(static_cast<double>(exact), field, size, form.sign, 0);
               }),
               written([&](unsigned char* field) { converter.IntFromInt64(exact, field, size, real.sign); }),
               "IntFromDbl");

  // Any double and any text, scaled by any power, is taken or refused.
  const int scale = choices.upTo(63) == 0 ? choices.any<int>() : choices.between(-70, 70);
  const auto isTakenOrRefused = [](const std::string& outcome) {
    require(outcome == "0" || outcome == "OXR5505" || outcome == "OXR5506" || outcome == "OXR5507",
            "another failure: " + outcome);
  };
  unsigned char field[8];
  isTakenOrRefused(integerOutcome([&] {
    converter.IntFromDbl(choices.any<double>(), field, size, form.sign, scale);
    return 0;
  }));
  static constexpr unsigned short kUnits[] = {'0', '1', '9', '.', '-', '+', ' ', 'e', 0x0660, 0xD800};
  KelWstring text;
  for (std::size_t count = choices.upTo(24); count > 0; --count) {
    const unsigned short unit = choices.oneOf(kUnits);
    text.appendInternal(&unit, 1, 0);
  }
  isTakenOrRefused(integerOutcome([&] {
    converter.IntFromDec(text.characters(), field, size, scale);
    return 0;
  }));
}

}  // namespace oxr::fuzz
