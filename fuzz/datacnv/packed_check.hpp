#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"
#include "support/fastway.hpp"

// Packed decimals against models by plain string steps, and their numbers against the members that define them.
namespace oxr::fuzz {

inline DataCnv packedConverter(bool reversed) {
  return DataCnv(37, eEndianBig, reversed ? eEndianLittle : eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr,
                 0, true, 12, false, eMessageStandardDefault, nullptr);
}

// What `convert` gives, or "OXR" and the number of what it raises.
template <class Convert>
std::string packedOutcome(Convert convert) {
  try {
    return convert();
  } catch (const KelConversionException& e) {
    return "OXR" + std::to_string(e.messageNumber() & 0xFFFF);
  }
}

// The text of a field in normal order; "OXR5505" for a bad one.
inline std::string packedTextModel(const std::vector<unsigned char>& field, int places, bool isSigned) {
  std::string text;
  for (const unsigned char byte : field)
    for (const int nibble : {byte >> 4, byte & 15})
      text += "0123456789ABCDEF"[nibble];
  const char sign = text.back();
  text.pop_back();
  if (sign <= '9' || (!isSigned && (sign == 'B' || sign == 'D'))) return "OXR5505";
  if (text.find_first_not_of("0123456789") != text.npos) return "OXR5505";
  if (sign == 'D') text.insert(0, "-");
  if (places <= 0) return text + std::string(static_cast<std::size_t>(-places), '0');
  const auto count = static_cast<std::size_t>(places);
  if (count > text.size()) return "0." + std::string(count - text.size(), '0') + text;
  text.insert(text.size() - count, ".");
  return text.front() == '.' ? "0" + text : text;
}

// The field of a canonical decimal in normal order, as hex digits; "OXR5507" where it does not fit.
inline std::string packedFieldModel(std::string text, std::size_t size, int places, bool isSigned) {
  const bool hadMinus = text.starts_with('-');
  const std::string sign = hadMinus ? "-" : "";
  text.erase(0, text.find_first_not_of("+-"));
  std::string whole = text.substr(0, text.find('.'));
  std::string fraction = whole.size() == text.size() ? "" : text.substr(whole.size() + 1);
  // The minus is a position too, and falls away with the digits after the point.
  whole = sign + whole;
  for (; places > 0; --places) {
    whole += fraction.empty() ? '0' : fraction.front();
    fraction.erase(0, 1);
  }
  whole.resize(static_cast<std::size_t>(std::max<long>(0, static_cast<long>(whole.size()) + places)));
  const bool negative = whole.starts_with('-');
  whole.erase(0, std::min(whole.find_first_not_of("-0"), whole.size()));
  const std::size_t digits = 2 * size - 1;
  if (whole.empty() && digits > 0) whole = "0";
  if (whole.size() > digits) return "OXR5507";
  return std::string(digits - whole.size(), '0') + whole + (!isSigned ? 'F' : negative ? 'D' : 'C');
}

// A field that is likely to be a good one.
inline std::vector<unsigned char> drawPackedField(Choices& choices, std::size_t most) {
  std::vector<unsigned char> field(choices.upTo(most - 1) + 1);
  for (unsigned char& byte : field)
    byte = static_cast<unsigned char>(choices.upTo(9) << 4 | choices.upTo(9));
  static constexpr unsigned kSigns[] = {12, 12, 13, 13, 15, 11, 10, 14, 3};
  field.back() = static_cast<unsigned char>((field.back() & 0xF0) | choices.oneOf(kSigns));
  if (choices.upTo(15) == 0) field[choices.upTo(field.size() - 1)] ^= 0xA0;
  if (choices.upTo(3) == 0) std::fill_n(field.begin(), choices.upTo(field.size() - 1), static_cast<unsigned char>(0));
  return field;
}

inline ESign drawSign(Choices& choices) {
  return static_cast<ESign>(choices.upTo(4));
}

inline void checkPackedRead(Choices& choices) {
  const bool reversed = choices.coin();
  DataCnv converter = packedConverter(reversed);
  const ESign sign = drawSign(choices);
  const int places = choices.coin() ? choices.between(0, 5) : choices.between(-30, 50);
  std::vector<unsigned char> field = drawPackedField(choices, 24);
  const std::string model = packedTextModel(field, places, sign != eSignNone);
  if (reversed) std::reverse(field.begin(), field.end());
  const auto size = static_cast<int>(field.size());
  const std::string found = packedOutcome([&] {
    const PWFData value = converter.PckdDecToDec(field.data(), size, places, sign);
    return toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
  });
  requireEqual(found, model, "the text of a packed field");
}

// Canonical text into a field; the same text with so many leading zeros that it goes the general way; and any text at
// all, which must only stay within the field.
inline void checkPackedWrite(Choices& choices) {
  const bool reversed = choices.coin();
  DataCnv converter = packedConverter(reversed);
  const ESign sign = drawSign(choices);
  const int places = choices.coin() ? choices.between(0, 9) : choices.between(-20, 40);
  std::vector<unsigned char> field(choices.upTo(17) + 1);
  const auto size = static_cast<int>(field.size());
  const auto write = [&](const KelWstring& text) {
    return packedOutcome([&] {
      converter.PckdDecFromDec(text.characters(), field.data(), size, places, sign);
      if (reversed) std::reverse(field.begin(), field.end());
      std::string digits;
      for (const unsigned char byte : field)
        for (const int nibble : {byte >> 4, byte & 15})
          digits += "0123456789ABCDEF"[nibble];
      return digits;
    });
  };
  std::string digits;
  for (std::size_t count = choices.upTo(22); count > 0; --count)
    digits += static_cast<char>('0' + (choices.upTo(2) == 0 ? 0 : choices.upTo(9)));
  if (choices.coin()) digits.insert(choices.upTo(digits.size()), ".");
  static constexpr const char* kSigns[] = {"", "-", "+"};
  const std::string minus = choices.oneOf(kSigns);
  const std::string model = packedFieldModel(minus + digits, field.size(), places, sign != eSignNone);
  requireEqual(write(fromUtf8(minus + digits)), model, "the field of " + minus + digits);
  if (places >= 0) {
    const std::uint64_t before = generalWaysTaken();
    const std::string general = write(fromUtf8(minus + std::string(65, '0') + digits));
    require(generalWaysTaken() != before, "65 zeros no longer go the general way");
    requireEqual(general, model, "the field of zeros and " + minus + digits);
  }

  KelWstring units;
  static constexpr unsigned short kUnits[] = {'0', '7', '.', '-', '+', ' ', '\t', 'E', 0x0660, 0xD800};
  for (std::size_t count = choices.upTo(40); count > 0; --count) {
    const unsigned short unit = choices.oneOf(kUnits);
    units.appendInternal(&unit, 1, 0);
  }
  const std::string found = write(units);
  require(found.size() == 2 * field.size() || found == "OXR5507", "another failure than that of a full field");
}

// A member for numbers by the bytes of its integer; 0 is the one of doubles, which are numbers here by their bits.
struct PackedNumberCall {
  DataCnv& converter;
  int member, size, places;
  ESign sign;

  PWFInt64 read(const unsigned char* field) const {
    if (member == 0) return std::bit_cast<PWFInt64>(converter.PckdDecToDbl(field, size, places, sign));
    return member == 4 ? converter.PckdDecToInt32(field, size, places, sign)
                       : converter.PckdDecToPWFInt64(field, size, places, sign);
  }
  PWFInt64 readByMembers(const unsigned char* field) const {
    const PWFData decimal = converter.PckdDecToDec(field, size, places, sign);
    if (member == 0)
      return std::bit_cast<PWFInt64>(converter.PWFStringTodouble(KelWstring(UnitView(decimal.getDecimalValue()))));
    unsigned char integer[8];
    converter.IntFromDec(decimal.getDecimalValue(), integer, member, 0);
    return converter.IntToInt64(integer, member, eSignLeadingIncluded);
  }
  void write(PWFInt64 value, unsigned char* field) const {
    if (member == 0) return converter.PckdDecFromDbl(std::bit_cast<double>(value), field, size, places, sign);
    if (member == 4) return converter.PckdDecFromInt32(static_cast<PWFInt32>(value), field, size, places, sign);
    converter.PckdDecFromPWFInt64(value, field, size, places, sign);
  }
  void writeByMembers(PWFInt64 value, unsigned char* field) const {
    KelWstring text;
    unsigned char integer[8];
    if (member == 0) {
      converter.doubleToUString(std::bit_cast<double>(value), text, false);
    } else {
      converter.IntFromInt64(member == 4 ? static_cast<PWFInt32>(value) : value, integer, member, eSignLeadingIncluded);
      text = KelWstring(UnitView(converter.IntToDec(integer, member, 0).getDecimalValue()));
    }
    converter.PckdDecFromDec(text.characters(), field, size, places, sign);
  }
};

inline void checkPackedNumbers(Choices& choices) {
  const bool reversed = choices.coin();
  DataCnv converter = packedConverter(reversed);
  static const bool hasFormatter = DataCnv(packedConverter(false)).getDecimalFormatter() != nullptr;
  require(hasFormatter, "doubles go the fast way once there is a formatter");
  std::vector<unsigned char> field = drawPackedField(choices, 12);
  if (reversed) std::reverse(field.begin(), field.end());
  const PackedNumberCall call{converter, 4 * choices.between(0, 2), static_cast<int>(field.size()),
                              choices.upTo(3) == 0 ? choices.between(-25, 25) : choices.between(0, 2),
                              drawSign(choices)};
  requireEqual(packedOutcome([&] { return std::to_string(call.read(field.data())); }),
               packedOutcome([&] { return std::to_string(call.readByMembers(field.data())); }), "a packed number");

  auto value = choices.any<PWFInt64>() >> choices.upTo(63);
  if (call.member == 0 && choices.coin())
    value = std::bit_cast<PWFInt64>(static_cast<double>(value) / static_cast<double>(1 << choices.upTo(16)));
  const auto written = [&](auto write) {
    std::array<unsigned char, 12> target{};
    return packedOutcome([&] {
      write(target.data());
      return std::string(target.begin(), target.end());
    });
  };
  requireEqual(written([&](unsigned char* target) { call.write(value, target); }),
               written([&](unsigned char* target) { call.writeByMembers(value, target); }), "a number packed");
}

}  // namespace oxr::fuzz
