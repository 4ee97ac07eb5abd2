#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr ESign kUnsigned = eSignNone;
constexpr ESign kSigned = eSignLeadingIncluded;

std::string read(const Bytes& field, int scale, ESign sign, EEndian order = eEndianBig) {
  DataCnv converter = converterFor(500, eEndianBig, order);
  const PWFData value = converter.PckdDecToDec(field.data(), static_cast<int>(field.size()), scale, sign);
  return toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
}

Bytes written(std::string_view text, int size, int scale, ESign sign, EEndian order = eEndianBig) {
  DataCnv converter = converterFor(500, eEndianBig, order);
  Bytes field(static_cast<std::size_t>(size) + 2, 0xEE);  // a guard on either side
  converter.PckdDecFromDec(k(text).characters(), field.data() + 1, size, scale, sign);
  EXPECT_TRUE(field.front() == 0xEE && field.back() == 0xEE);
  return Bytes(field.begin() + 1, field.end() - 1);
}

TEST(Packed, ReadsDigitsSignsAndScales) {
  const struct {
    const char* what;
    Bytes field;
    int scale;
    ESign sign;
    const char* text;
  } cases[] = {
      {"no scale", {0x12, 0x3C}, 0, kSigned, "123"},
      {"leading zeros stay", {0x00, 0x12, 0x3C}, 0, kSigned, "00123"},
      {"point before an even count", {0x12, 0x3C}, 1, kSigned, "12.3"},
      {"point before an odd count", {0x12, 0x3C}, 2, kSigned, "1.23"},
      {"all digits behind the point", {0x12, 0x3C}, 3, kSigned, "0.123"},
      {"scale beyond the digits", {0x12, 0x3C}, 5, kSigned, "0.00123"},
      {"scale below 0", {0x12, 0x3D}, -2, kSigned, "-12300"},
      {"negative", {0x12, 0x3D}, 2, kSigned, "-1.23"},
      {"negative zero", {0x00, 0x0D}, 0, kSigned, "-000"},
      {"one byte", {0x7C}, 0, kSigned, "7"},
      {"one byte, all behind the point", {0x7C}, 1, kUnsigned, "0.7"},
      {"A, E, F are positive", {0x12, 0x3A}, 0, kUnsigned, "123"},
      {"", {0x12, 0x3E}, 0, kSigned, "123"},
      {"", {0x12, 0x3F}, 0, kSigned, "123"},
      {"B is accepted, and positive", {0x12, 0x3B}, 0, kSigned, "123"},
      {"every sign form counts as signed", {0x12, 0x3D}, 0, eSignTrailingSeparate, "-123"},
      {"beyond the inline text",
       {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x56, 0x78, 0x9D},
       9,
       kSigned,
       "-1234567890.123456789"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(read(row.field, row.scale, row.sign), row.text);
    EXPECT_EQ(read(Bytes(row.field.rbegin(), row.field.rend()), row.scale, row.sign, eEndianLittle), row.text);
  }
  EXPECT_EQ(read({0x12, 0x3C}, 0, kSigned, eEndianUnset), "123");
}

TEST(Packed, MinusCountsAsAPosition) {
  EXPECT_EQ(read({0x12, 0x3D}, 3, kSigned), "-.123");
  EXPECT_EQ(read({0x12, 0x3D}, 4, kSigned), "0.-123");
  EXPECT_EQ(read({0x12, 0x3D}, 6, kSigned), "0.00-123");
}

TEST(Packed, RefusesBadFields) {
  DataCnv converter = converterFor(500);
  const struct {
    Bytes field;
    ESign sign;
    const char* text;
    const char* dump;
  } cases[] = {
      {{0x12, 0x34}, kSigned, "packed decimal, no sign found ", "0x1234"},
      {{0xAA, 0xA9}, kUnsigned, "packed decimal, no sign found ", "0xaaa9"},  // the sign comes first
      {{0x12, 0x3D}, kUnsigned, "packed decimal, negative sign found on unsigned data ", "0x123d"},
      {{0x1A, 0x3B}, kUnsigned, "packed decimal, negative sign found on unsigned data ", "0x1a3b"},
      {{0x1A, 0x3C}, kSigned, "packed decimal, non-numeric data found", "0x1a3c"},
      {{0xF2, 0x3C}, kUnsigned, "packed decimal, non-numeric data found", "0xf23c"},
      {{0x12, 0xDC}, kUnsigned, "packed decimal, non-numeric data found", "0x12dc"},
  };
  for (const auto& [field, sign, text, dump] : cases) {
    const Raised expected = conversionFailure(5505, {"CPI Converter Input Data Invalid", text, dump});
    for (const int scale : {0, 1, 2, 9})
      EXPECT_EQ(raisedBy([&, s = sign, &f = field] { converter.PckdDecToDec(f.data(), 2, scale, s); }), expected);
    const unsigned char nibbles[] = {
        static_cast<unsigned char>(field[0] >> 4), static_cast<unsigned char>(field[0] & 15),
        static_cast<unsigned char>(field[1] >> 4), static_cast<unsigned char>(field[1] & 15)};
    EXPECT_EQ(raisedBy([&, s = sign, &f = field] { converter.ValidatePackedDecimal(nibbles, 4, s, f.data()); }),
              expected);
  }
  // The dump shows the field as it came, before any reversal.
  DataCnv little = converterFor(500, eEndianBig, eEndianLittle);
  const Bytes reversed = {0x34, 0x12};
  EXPECT_EQ(raisedBy([&] { little.PckdDecToDec(reversed.data(), 2, 0, kSigned); }).inserts.back(), "0x3412");
  EXPECT_EQ(raisedBy([&] { converter.PckdDecToDec(nullptr, 0, 0, kSigned); }),
            conversionFailure(5502, {"CPI Internal Error", "Null input pointer"}));
  EXPECT_EQ(raisedBy([&] { converter.PckdDecToDec(reversed.data(), 0, 0, kSigned); }),
            conversionFailure(5502, {"CPI Internal Error", "Invalid input size: 0"}));
}

TEST(Packed, WritesDigitsSignsAndScales) {
  const struct {
    const char* text;
    int size;
    int scale;
    ESign sign;
    Bytes field;
  } cases[] = {
      {"123", 2, 0, kSigned, {0x12, 0x3C}},
      {"123", 4, 0, kSigned, {0x00, 0x00, 0x12, 0x3C}},
      {"1234", 3, 0, kSigned, {0x01, 0x23, 0x4C}},
      {"-123", 2, 0, kSigned, {0x12, 0x3D}},
      {"-123", 2, 0, kUnsigned, {0x12, 0x3F}},  // an unsigned field drops the minus and raises nothing
      {"+123", 2, 0, kSigned, {0x12, 0x3C}},
      {"-0", 1, 0, kSigned, {0x0D}},
      {"1.99", 2, 0, kSigned, {0x00, 0x1C}},
      {"1.99", 2, 1, kSigned, {0x01, 0x9C}},
      {"12", 3, 2, kSigned, {0x01, 0x20, 0x0C}},
      {".5", 1, 1, kSigned, {0x5C}},
      {"-.5", 1, 0, kSigned, {0x0D}},
      {"-5", 1, -1, kSigned, {0x0D}},
      {"-5", 1, -2, kSigned, {0x0C}},  // the minus is cut with the places before the point
      {"1234", 2, -2, kSigned, {0x01, 0x2C}},
      {"0000000000000000000123", 2, 0, kSigned, {0x12, 0x3C}},
      {"", 2, 3, kSigned, {0x00, 0x0C}},
      {".", 1, 2, kUnsigned, {0x0F}},
      {" -12 ", 2, 0, kSigned, {0xD1, 0x2C}},  // a sign behind a blank is no sign: its low four bits are packed
      {"\t12 ", 2, 0, kSigned, {0x01, 0x2C}},
      {"1.2.3", 2, 1, kSigned, {0x01, 0x2C}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(written(row.text, row.size, row.scale, row.sign), row.field);
    EXPECT_EQ(written(row.text, row.size, row.scale, row.sign, eEndianLittle),
              Bytes(row.field.rbegin(), row.field.rend()));
  }
  DataCnv converter = converterFor(500);
  Bytes field(2);
  converter.PckdDecFromDec(nullptr, field.data(), 2, 0, kSigned);
  EXPECT_EQ(field, (Bytes{0x00, 0x0C}));
}

TEST(Packed, TooManyDigitsLeaveTheTargetAlone) {
  DataCnv converter = converterFor(500);
  const std::string long_(100, '7');
  const struct {
    std::string text;
    int size, scale;
  } cases[] = {{"1234", 2, 0}, {"12", 2, 2}, {long_, 50, 0}, {"1", 40, 2147483647}, {"1", 0, 0}, {"1", -5, 0}};
  for (const auto& [text, size, scale] : cases) {
    Bytes field(64, 0xEE);
    EXPECT_EQ(
        raisedBy([&, &t = text, s = size, p = scale] {
          converter.PckdDecFromDec(k(t).characters(), field.data(), s, p, kSigned);
        }),
        conversionFailure(5507, {"CPI InputData Too Long", "decimal", "packed decimal", std::to_string(size), text}));
    EXPECT_EQ(field, Bytes(64, 0xEE));
  }
  EXPECT_EQ(written(long_, 51, 0, kSigned).front(), 0x07);
  EXPECT_EQ(raisedBy([&] { converter.PckdDecFromDec(k("1").characters(), nullptr, 2, 0, kSigned); }),
            conversionFailure(5502, {"CPI Internal Error", "Null output buffer pointer"}));
}

TEST(Packed, SignNibbles) {
  DataCnv converter = converterFor(500);
  char sign = 0;
  EXPECT_EQ(converter.GetPackedDecimalSign(0, 1, &sign), 0xF);
  EXPECT_EQ(converter.GetPackedDecimalSign(1, 1, &sign), 0xD);
  EXPECT_EQ(converter.GetPackedDecimalSign(1, 0, &sign), 0xC);
  EXPECT_EQ(sign, 0xC);
  EXPECT_EQ(converter.LeftNibble(0xA5), 0xA);
  EXPECT_EQ(converter.RightNibble(0xA5), 0x5);
}

// The quick way for canonical text gives what the general way gives, which takes texts of more than 64 digits.
TEST(Packed, QuickAndGeneralWayAgree) {
  const std::string zeros(65, '0');
  std::mt19937 random(20261121);
  for (int i = 0; i < 20'000; ++i) {
    std::string text;
    for (unsigned n = random() % 12; n > 0; --n)
      text += random() % 3 == 0 ? '0' : static_cast<char>('0' + random() % 10);
    if (random() % 2 != 0) text.insert(text.begin() + static_cast<std::ptrdiff_t>(random() % (text.size() + 1)), '.');
    const std::string sign(random() % 2, '-');
    const int scale = static_cast<int>(random() % 9);
    SCOPED_TRACE(sign + text + " scale " + std::to_string(scale));
    ASSERT_EQ(written(sign + text, 14, scale, kSigned), written(sign + zeros + text, 14, scale, kSigned));
  }
}

TEST(Packed, WriteThenReadGivesTheSameDigits) {
  std::mt19937 random(20261121);  // fixed: a failure repeats
  for (int i = 0; i < 20'000; ++i) {
    const int size = 1 + static_cast<int>(random() % 20);
    const std::size_t digits = 2 * static_cast<std::size_t>(size) - 1;
    const std::size_t scale = random() % digits;
    std::string number;
    for (std::size_t d = 0; d < digits; ++d)
      number += static_cast<char>('0' + random() % 10);
    if (scale != 0) number.insert(number.end() - static_cast<std::ptrdiff_t>(scale), '.');
    const bool negative = random() % 2 != 0;
    const EEndian order = random() % 2 != 0 ? eEndianLittle : eEndianBig;
    const std::string text = std::string(negative ? "-" : "").append(number);
    SCOPED_TRACE(text);
    const Bytes field = written(text, size, static_cast<int>(scale), kSigned, order);
    ASSERT_EQ(read(field, static_cast<int>(scale), kSigned, order), text);
  }
}

}  // namespace
}  // namespace oxr::test
