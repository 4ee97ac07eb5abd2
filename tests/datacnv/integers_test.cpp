#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/guarded.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr ESign kUnsigned = eSignNone;
constexpr ESign kSigned = eSignLeadingIncluded;

Raised tooLong(const char* text, const char* width, const char* size, const char* value) {
  return conversionFailure(5507, {text, "integer", width, size, value});
}

// The number that `read` gives, or the message and the last word of what it raises.
template <class Read>
std::string outcome(Read read) {
  std::string number;
  const Raised raised = raisedBy([&] { number = std::to_string(read()); });
  if (raised.inserts.empty()) return number;
  const std::string& last = raised.inserts.back();
  return std::to_string(raised.number & 0xFFFF) + ':' + last.substr(last.find_last_of(' ') + 1);
}

TEST(Integers, ReadBytesInBothOrders) {
  // Byte order, ESign, bytes, and what IntToInt64, IntToInt32 and UIntToUInt64 make of them.
  for (const Row& c : rows("2 1 FFFE -2 -2 65534; 2 0 FFFE 65534 65534 65534; 2 2 FFFE 65534 65534 65534; "
                           "1 1 FFFE -257 -257 65279; 1 0 FFFE 65279 65279 65279; "
                           "-1 1 FFFE -2 -2 65534; 7 0 0001 1 1 1; "  // only 1 is little
                           "1 0 FF 255 255 255; 2 1 80 -128 -128 128; "
                           "2 1 80000000 -2147483648 -2147483648 2147483648; "
                           "2 0 80000000 2147483648 5507:-2147483648 2147483648; "
                           "1 0 FFFFFF7F 2147483647 2147483647 2147483647; "
                           "2 1 FFFFFFFFFFFFFFFF -1 5502:8 18446744073709551615; "
                           "2 3 FFFFFFFFFFFFFFFF 5507:-1 5502:8 18446744073709551615; "
                           "1 0 EFCDAB8967452301 81985529216486895 5502:8 81985529216486895")) {
    SCOPED_TRACE(shown(c));
    DataCnv cnv = converterFor(37, EEndian{std::stoi(c[0])});
    const auto sign = ESign{std::stoi(c[1])};
    const std::string bytes = fromHex(c[2]);
    const Bytes field(bytes.begin(), bytes.end());
    const int size = static_cast<int>(field.size());
    EXPECT_EQ(outcome([&] { return cnv.IntToInt64(field.data(), size, sign); }), c[3]);
    EXPECT_EQ(outcome([&] { return cnv.IntToInt32(field.data(), size, sign); }), c[4]);
    EXPECT_EQ(outcome([&] { return cnv.UIntToUInt64(field.data(), size); }), c[5]);
  }
}

TEST(Integers, RefuseNullThenSizeThenOverflow) {
  DataCnv cnv = converterFor(37);
  const Bytes ones(8, 0xFF);
  const auto internal = [](const std::string& detail) {
    return conversionFailure(5502, {"CPI Internal Error", detail});
  };
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt64(nullptr, 3, kSigned); }),
            internal("Null input pointer passed into DataCnv::IntToInt64"));
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt32(nullptr, 3, kSigned); }),
            internal("DataCnv::IntToInt32 called with a Null input pointer for the source."));
  EXPECT_EQ(raisedBy([&] { cnv.UIntToUInt64(nullptr, 3); }), internal("Null input pointer"));
  for (const int size : {-8, -1, 0, 3, 5, 6, 7, 9, 16, 0x104}) {
    const auto badSize = internal("Invalid integer size: " + std::to_string(size));
    EXPECT_EQ(raisedBy([&] { cnv.IntToInt64(ones.data(), size, kSigned); }), badSize);
    EXPECT_EQ(raisedBy([&] { cnv.IntToInt32(ones.data(), size, kSigned); }), badSize);
    EXPECT_EQ(raisedBy([&] { cnv.UIntToUInt64(ones.data(), size); }), badSize);
  }
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt64(ones.data(), 8, kUnsigned); }),
            tooLong("Overflow converting a PWFUInt64 to PWFInt64", "8-byte integer", "8", "-1"));
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt32(ones.data(), 4, eSignTrailingSeparate); }),
            tooLong("Overflow converting a PWFUInt32 to PWFInt32", "4-byte integer", "4", "-1"));
}

// The members that write, by the name of the type they take. A value beyond that type is not theirs to write.
bool isOf(const std::string& type, PWFInt64 value) {
  if (type == "PWFInt64") return true;
  return type == "PWFInt32" ? value == static_cast<PWFInt32>(value) : value == static_cast<PWFUInt32>(value);
}
std::string writtenAs(const std::string& type, DataCnv& cnv, PWFInt64 value, int size, ESign sign) {
  return bytesWritten(size, [&](unsigned char* target) {
    if (type == "PWFInt64") return cnv.IntFromInt64(value, target, size, sign);
    if (type == "PWFInt32") return cnv.IntFromInt32(static_cast<PWFInt32>(value), target, size, sign);
    cnv.UIntFromUInt32(static_cast<PWFUInt32>(value), target, size);
  });
}
std::string hexOf(PWFInt64 value, int size) {
  std::string bytes;
  for (int place = 8 * size - 8; place >= 0; place -= 8)
    bytes += static_cast<char>(value >> place & 0xFF);
  return toHex(bytes);
}

TEST(Integers, RefuseWhatDoesNotFit) {
  DataCnv cnv = converterFor(37);
  // From, ESign, size, the least and most that fit, to.
  for (const Row& c :
       rows("PWFInt64 1 1 -128 127 PWFInt8; PWFInt64 0 1 0 255 PWFUInt8; PWFInt64 1 2 -32768 32767 PWFInt16; "
            "PWFInt64 0 2 0 65535 PWFUInt16; PWFInt64 1 4 -2147483648 2147483647 PWFInt32; "
            "PWFInt64 2 4 0 4294967295 PWFUInt32; PWFInt64 -1 8 0 9223372036854775807 PWFUInt64; "
            "PWFInt64 1 8 -9223372036854775808 9223372036854775807 PWFInt64; PWFInt64 3 1 0 255 PWFUInt8; "
            "PWFInt32 1 1 -128 127 PWFInt8; PWFInt32 0 1 0 255 PWFUInt8; PWFInt32 1 2 -32768 32767 PWFInt16; "
            "PWFInt32 4 2 0 65535 PWFUInt16; PWFInt32 1 4 -2147483648 2147483647 PWFInt32; "
            "PWFInt32 0 4 0 2147483647 PWFUInt32; PWFUInt32 0 1 0 255 PWFUInt8; PWFUInt32 0 2 0 65535 PWFUInt16; "
            "PWFUInt32 0 4 0 4294967295 PWFUInt32")) {
    const auto sign = ESign{std::stoi(c[1])};
    const int size = std::stoi(c[2]);
    const PWFInt64 least = std::stoll(c[3]);
    const PWFInt64 most = std::stoll(c[4]);
    std::vector<PWFInt64> values = {least, most, 4294967295, std::numeric_limits<PWFInt64>::min()};
    if (least != values.back()) values.push_back(least - 1);
    if (most != std::numeric_limits<PWFInt64>::max()) values.push_back(most + 1);
    for (const PWFInt64 value : values) {
      if (!isOf(c[0], value)) continue;
      SCOPED_TRACE(shown(c) + std::to_string(value));
      const bool isUnsignedSource = c[0] == "PWFUInt32";  // whose values are told as signed ones
      const std::string told = std::to_string(isUnsignedSource ? static_cast<PWFInt32>(value) : value);
      const std::string width = (isUnsignedSource ? "-byte unsigned integer|" : "-byte integer|") + c[2] + '|';
      EXPECT_EQ(writtenAs(c[0], cnv, value, size, sign),
                value >= least && value <= most
                    ? hexOf(value, size)
                    : "5507|Overflow converting a " + c[0] + " to " + c[5] + "|integer|" + c[2] + width + told);
    }
  }
}

TEST(Integers, RefuseANullTargetThenTheSize) {
  DataCnv cnv = converterFor(37);
  unsigned char target[8];
  const KelWstring one = u"1"_k;
  const auto internal = [](const std::string& detail) {
    return conversionFailure(5502, {"CPI Internal Error", detail});
  };
  const Raised noTarget = internal("Null output buffer pointer");
  int three = 3;
  EXPECT_EQ(raisedBy([&] { cnv.IntFromInt64(999, nullptr, 3, kSigned); }), noTarget);
  EXPECT_EQ(raisedBy([&] { cnv.IntFromInt32(999, nullptr, 3, kSigned); }), noTarget);
  EXPECT_EQ(raisedBy([&] { cnv.UIntFromUInt32(999, nullptr, three); }), noTarget);
  EXPECT_EQ(raisedBy([&] { cnv.IntFromDbl(999, nullptr, 3, kSigned, 0); }), noTarget);
  EXPECT_EQ(raisedBy([&] { cnv.IntFromDec(one.characters(), nullptr, 0, 0); }), noTarget);
  EXPECT_EQ(raisedBy([&] { cnv.IntFromDec(nullptr, nullptr, 0, 0); }), internal("Null input pointer"));
  EXPECT_EQ(raisedBy([&] { cnv.IntToDec(nullptr, 0, 0); }), internal("Null input pointer"));
  EXPECT_EQ(raisedBy([&] { cnv.IntToDbl(nullptr, 0, 0, kSigned); }), internal("Null input pointer"));
  for (int size : {std::numeric_limits<int>::min(), -8, -1, 0, 3, 5, 6, 7, 9, 16, 0x104, 8}) {
    const std::string number = std::to_string(size);
    const Raised badSize = internal("Invalid integer size: " + number);
    EXPECT_EQ(raisedBy([&] { cnv.IntFromInt32(999, target, size, kSigned); }), badSize);
    EXPECT_EQ(raisedBy([&] { cnv.UIntFromUInt32(999, target, size); }), badSize);
    if (size == 8) continue;
    EXPECT_EQ(raisedBy([&] { cnv.IntFromInt64(999, target, size, kSigned); }), badSize);
    EXPECT_EQ(raisedBy([&] { cnv.IntFromDbl(std::nan(""), target, size, kSigned, 0); }), badSize);
    const Raised input = size > 0 ? badSize : internal("Invalid input size: " + number);
    EXPECT_EQ(raisedBy([&] { cnv.IntToDec(target, size, 0); }), input);
    EXPECT_EQ(raisedBy([&] { cnv.IntToDbl(target, size, 0, kUnsigned); }), input);
    EXPECT_EQ(raisedBy([&] { cnv.IntFromDec(one.characters(), target, size, 0); }),
              size > 0 ? badSize : internal("Invalid output buffer size: " + number));
  }
}

TEST(Integers, WriteDoubles) {
  DataCnv cnv = converterFor(37);
  // ESign, size, scale, value; the field, or of a refusal the width and the scaled value. All but ESign 0 is signed.
  for (const Row& c :
       rows("1 2 2 1.5 0096; 2 1 0 -1 FF; 4 1 0 -128 80; -1 2 0 -32768.5 signed -32768.5; 0 1 0 -0.5 unsigned -0.5; "
            "0 1 0 255 FF; 0 1 0 -0.0 00; 0 1 0 255.9 unsigned 255.9; 1 1 0 127.9 signed 127.9; 1 1 0 126.9 7E; "
            "1 1 0 -127.9 81; 0 2 0 65535 FFFF; 0 2 0 65535.5 unsigned 65535.5; 1 2 0 32767 7FFF; 1 2 0 32768 signed "
            "32768; "
            "1 4 0 -2147483648 80000000; 1 4 0 2147483647.5 signed 2147483647.5; 0 4 0 4294967295 FFFFFFFF; "
            "0 4 0 4294967296 unsigned 4294967296; 1 8 0 0x1p63 7FFFFFFFFFFFFFFF; 1 8 0 -0x1p63 8000000000000000; "
            "1 8 0 0x1.fffffffffffffp62 7FFFFFFFFFFFFC00; 1 8 0 1e19 signed 1e+19; 1 8 0 -1e19 signed -1e+19; "
            "0 8 0 0x1p63 8000000000000000; 0 8 0 1e19 8AC7230489E80000; 0 8 0 0x1p64 FFFFFFFFFFFFFFFF; "
            "0 8 0 0x1.fffffffffffffp63 FFFFFFFFFFFFF800; 0 8 0 2e19 unsigned 2e+19; 0 8 0 -1 unsigned -1; "
            "0 1 0 nan unsigned nan; 3 8 0 nan signed nan; 1 8 9 inf signed inf; 0 4 -9 -inf unsigned -inf; "
            // Each step rounds: 0.011 becomes 10.999999999999998. Scales below 0 divide.
            "1 2 3 0.011 000A; 1 2 -2 1234.5 000C; 1 4 -1 -19 FFFFFFFF; "
            // Scales that would take minutes.
            "1 1 2147483647 0 00; 1 8 2147483647 1e-300 signed inf; 0 8 -2147483648 1e300 0000000000000000; "
            "1 1 2147483647 nan signed nan")) {
    SCOPED_TRACE(shown(c));
    const int size = std::stoi(c[1]);
    EXPECT_EQ(bytesWritten(size,
                           [&](unsigned char* target) {
                             cnv.IntFromDbl(std::strtod(c[3].c_str(), nullptr), target, size, ESign{std::stoi(c[0])},
                                            std::stoi(c[2]));
                           }),
              c.size() == 5 ? c[4]
                            : "5506|CPI Converter Input Data Out Of Bounds|double float|" + c[4] + ' ' + c[1] +
                                  "-byte integer|" + c[5]);
  }
}

TEST(Integers, WriteDecimals) {
  DataCnv cnv = converterFor(37);
  const std::string overflow = "5507|Overflow converting a PWFInt64 to PWFInt8|integer|1-byte integer|1|";
  const std::string bad = "5505|CPI Converter Input Data Invalid|string|";
  const std::string bounds = "5506|CPI Converter Input Data Out Of Bounds|string|8-byte integer|";
  const std::pair<const char*, std::string> cases[] = {
      // text, scale and size; outcome
      {"1.99 0 1", "01"},
      {"1.99 2 2", "00C7"},
      {"-12 0 1", "F4"},
      {"-12.99 0 2", "FFF4"},
      {"+7 0 1", "07"},
      {"'' 0 4", "00000000"},
      {"-.5 0 1", "00"},
      {"000000000000000000000005 0 1", "05"},
      {"_5_ 0 1", "05"},
      {"1999 -3 1", "01"},
      {"-5 -1 1", "00"},
      {"200 0 1", overflow + "200"},
      {"-1.29 2 1", overflow + "-129"},
      {"5 0 3", "5502|CPI Internal Error|Invalid integer size: 3"},
      {"1,5 0 1", bad + "1,5"},
      {"--5 0 1", bad + "--5"},
      {"-9223372036854775808 0 8", "8000000000000000"},
      {"9223372036854775808 0 8", bounds + "9223372036854775808"},
      {"1 19 8", bounds + "10000000000000000000"},
      {"0 2147483647 1", "00"},  // scales that no text could be written out for
      {"123456789 -2147483648 1", "00"},
      {"-1.5 2147483647 1", bounds + "-15" + std::string(65539, '0')},
  };
  for (const auto& [text, outcome] : cases) {
    const Row c = rows(text).front();
    const int size = std::stoi(c[2]);
    EXPECT_EQ(
        bytesWritten(
            size, [&](unsigned char* target) { cnv.IntFromDec(k(c[0]).characters(), target, size, std::stoi(c[1])); }),
        outcome)
        << text;
  }
}

TEST(Integers, ReadWithAScale) {
  DataCnv cnv = converterFor(37);
  // Field, scale, IntToDec, IntToDbl unsigned and signed. The minus of a decimal counts as a position.
  for (const Row& c : rows("FF 0 -1 255 -1; 04D2 2 12.34 12.34 12.34; 04D2 5 0.01234 0.01234 "
                           "0.01234; 07 3 0.007 0.006999999999999999 0.006999999999999999; "
                           "FB 1 -.5 25.1 -0.5; FB 2 0.-5 2.5100000000000002 -0.05; FB -2 -500 25100 -500; "
                           "FFFFFFFFFFFFFFFF 0 -1 18446744073709551616 -1; 0000 9 0.000000000 0 0; "
                           "8000000000000000 0 -9223372036854775808 0x1p63 -0x1p63")) {
    SCOPED_TRACE(shown(c));
    const std::string bytes = fromHex(c[0]);
    const auto* const field = reinterpret_cast<const unsigned char*>(bytes.data());
    const int size = static_cast<int>(bytes.size());
    const int scale = std::stoi(c[1]);
    const PWFData value = cnv.IntToDec(field, size, scale);
    EXPECT_EQ(value.getDataLogicalType(), DECIMAL);
    EXPECT_EQ(toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength()))), c[2]);
    EXPECT_EQ(cnv.IntToDbl(field, size, scale, eSignTrailingIncluded), std::strtod(c[3].c_str(), nullptr));
    EXPECT_EQ(cnv.IntToDbl(field, size, scale, kSigned), std::strtod(c[4].c_str(), nullptr));
  }
  const unsigned char field[] = {0x80, 0x00};
  EXPECT_EQ(cnv.IntToDbl(field, 2, std::numeric_limits<int>::max(), kSigned), 0.0);
  EXPECT_EQ(cnv.IntToDbl(field, 2, std::numeric_limits<int>::min(), kSigned), -INFINITY);
}

TEST(Integers, WhatWasWrittenReadsBack) {
  std::mt19937_64 random(20240229);
  for (int i = 0; i < 4000; ++i) {
    const int size = 1 << random() % 4;
    const EEndian order{static_cast<int>(random() % 3)};
    const ESign sign{static_cast<int>(random() % 2)};
    DataCnv cnv = converterFor(37, order);
    const PWFInt64 number = static_cast<PWFInt64>(random()) >> (64 - 8 * size);
    const std::uint64_t most = ~std::uint64_t{0} >> (size == 8 ? 1 : 64 - 8 * size);
    const PWFInt64 value = sign == kSigned ? number : static_cast<PWFInt64>(static_cast<std::uint64_t>(number) & most);
    SCOPED_TRACE(std::to_string(value) + " in " + std::to_string(size));
    const std::string bytes = fromHex(writtenAs("PWFInt64", cnv, value, size, sign));
    const auto* const field = reinterpret_cast<const unsigned char*>(bytes.data());
    ASSERT_EQ(static_cast<int>(bytes.size()), size);
    ASSERT_EQ(cnv.IntToInt64(field, size, sign), value);
    ASSERT_EQ(toHex(order == eEndianLittle ? std::string(bytes.rbegin(), bytes.rend()) : bytes), hexOf(value, size));
    const auto same = [&](const char* type) { return writtenAs(type, cnv, value, size, sign) == toHex(bytes); };
    ASSERT_TRUE(size == 8 || !isOf("PWFInt32", value) || same("PWFInt32"));
    ASSERT_TRUE(size == 8 || sign == kSigned || same("PWFUInt32"));
    const PWFInt64 exact = value >> 11;  // 53 bits
    ASSERT_EQ(
        bytesWritten(size,
                     [&](unsigned char* target) { cnv.IntFromDbl(static_cast<double>(exact), target, size, sign, 0); }),
        writtenAs("PWFInt64", cnv, exact, size, sign));
    if (sign != kSigned) continue;
    ASSERT_EQ(bytesWritten(size,
                           [&](unsigned char* target) {
                             cnv.IntFromDec(cnv.IntToDec(field, size, 0).getDecimalValue(), target, size, 0);
                           }),
              toHex(bytes));
  }
}

TEST(Integers, TracedMembersGiveTheSame) {
  DataCnv cnv = converterFor(37);
  const Bytes field = {0xFF, 0xFE};
  EXPECT_EQ(tracedAt(4,
                     [&] {
                       EXPECT_EQ(cnv.IntToInt64(field.data(), 2, kSigned), -2);
                       EXPECT_EQ(cnv.IntToInt32(field.data(), 2, kUnsigned), 65534);
                       EXPECT_EQ(cnv.UIntToUInt64(field.data(), 1), 255u);
                       EXPECT_EQ(writtenAs("PWFInt64", cnv, 258, 2, kSigned), "0102");
                       EXPECT_EQ(writtenAs("PWFUInt32", cnv, 258, 4, kSigned), "00000102");
                     }),
            "> DataCnv::IntToInt64\n< DataCnv::IntToInt64\n> DataCnv::IntToInt32\n< DataCnv::IntToInt32\n"
            "> DataCnv::UIntToUInt64\n< DataCnv::UIntToUInt64\n> DataCnv::IntFromInt64\n< DataCnv::IntFromInt64\n"
            "> DataCnv::UIntFromUInt32\n< DataCnv::UIntFromUInt32\n");
}

TEST(Integers, AnyBytesReadAsTheSumOfTheirPlaces) {
  std::mt19937 random(20240229);
  for (int i = 0; i < 4000; ++i) {
    const int size = 1 << random() % 4;
    const bool little = random() % 2 != 0;
    Bytes field(static_cast<std::size_t>(size) + 1);  // unaligned by one
    std::generate(field.begin(), field.end(), [&] { return static_cast<unsigned char>(random()); });
    std::uint64_t value = 0;
    for (int place = 0; place < size; ++place)
      value |= std::uint64_t{field[1 + static_cast<std::size_t>(little ? place : size - 1 - place)]} << 8 * place;
    DataCnv cnv = converterFor(37, little ? eEndianLittle : eEndianBig);
    ASSERT_EQ(cnv.UIntToUInt64(field.data() + 1, size), value);
    const std::uint64_t signBits = size < 8 && (value >> (8 * size - 1)) != 0 ? ~std::uint64_t{0} << 8 * size : 0;
    ASSERT_EQ(static_cast<std::uint64_t>(cnv.IntToInt64(field.data() + 1, size, kSigned)), value | signBits);
  }
}

TEST(SwapEnds, MirrorsABufferThatIsSourceAndTarget) {
  const auto swapped = [](Bytes bytes, int from, int to, int length) {
    DataCnv::SwapEnds(bytes.data() + to, bytes.data() + from, length);
    return bytes;
  };
  EXPECT_EQ(swapped({1, 2, 3, 0, 0, 0}, 0, 3, 3), (Bytes{1, 2, 3, 3, 2, 1}));
  EXPECT_EQ(swapped({1, 0}, 0, 1, 1), (Bytes{1, 1}));
  EXPECT_EQ(swapped({1, 2, 3, 4}, 0, 0, 4), (Bytes{1, 2, 2, 1}));
  EXPECT_EQ(swapped({1, 2, 3, 4, 5}, 0, 0, 5), (Bytes{1, 2, 3, 2, 1}));
  EXPECT_EQ(swapped({1, 2, 3, 4, 5, 6, 7, 8}, 0, 1, 7), (Bytes{1, 2, 3, 4, 4, 3, 2, 1}));  // meets its own output
}

TEST(SwapEnds, RefusesInOrderWithoutTheUsualFirstInsert) {
  unsigned char byte = 7;
  const auto refusal = [&](unsigned char* target, const unsigned char* source, int length) {
    try {
      DataCnv::SwapEnds(target, source, length);
    } catch (const KelConversionException& e) {
      EXPECT_EQ(e.oxrMessageNumber(), 5502);
      EXPECT_STREQ(e.fileName(), "usr/include/dataconv");
      return e.inserts();
    }
    return std::vector<std::string>();
  };
  EXPECT_THAT(refusal(nullptr, nullptr, 0), ::testing::ElementsAre("Null input pointer"));
  EXPECT_THAT(refusal(nullptr, &byte, 0), ::testing::ElementsAre("Null output buffer pointer"));
  EXPECT_THAT(refusal(&byte, &byte, 0), ::testing::ElementsAre("Invalid input length: 0"));
  EXPECT_THAT(refusal(&byte, &byte, -3), ::testing::ElementsAre("Invalid input length: -3"));
}

}  // namespace
}  // namespace oxr::test
