#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "core/hexfloat.hpp"
#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/guarded.hpp"
#include "harness/hex.hpp"
#include "harness/randomcases.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"
#include "harness/wordfloats.hpp"

namespace oxr::test {
namespace {

constexpr int kLeast = std::numeric_limits<int>::min();

DataCnv floatConverter(int format) {
  return converterFor(37, eEndianBig, eEndianLittle, EFloatFmt{format});
}
const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
std::uint64_t bitsOf(double value) {
  return std::bit_cast<std::uint64_t>(value);
}
std::uint64_t fromHexWord(const std::string& digits) {
  return std::stoull(digits, nullptr, 16);
}

double read(int format, const std::string& field) {
  return floatConverter(format).FltToDbl(bytesOf(field), static_cast<int>(field.size()));
}
std::string written(int format, double value, int size) {
  return bytesWritten(size, [&](unsigned char* target) { floatConverter(format).FltFromDbl(value, target, size); });
}
std::string readDecimal(int format, const std::string& hex, int places) {
  const std::string field = fromHex(hex);
  const PWFData value = floatConverter(format).FltToDec(bytesOf(field), static_cast<int>(field.size()), places);
  EXPECT_EQ(value.getDataLogicalType(), DECIMAL);
  return toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
}

TEST(Floats, ReadAndWriteEachFormat) {
  // Format, field, value. Formats without a name are IEEE, most significant byte first.
  for (const Row& c : rows("1 3F800000 1; 2 0000803F 1; 3 41100000 1; 3 C1100000 -1; 3 42640000 100; 0 BFC00000 -1.5; "
                           "4 3F800000 1; 1 00000001 0x1p-149; 2 000080FF -inf; 1 80000000 -0; 3 80000000 -0; "
                           "3 60FFFFFF 0xFFFFFFp104; "
                           "1 3FF0000000000000 1; 2 000000000000F0BF -1; 3 4110000000000000 1; "
                           "3 C276A00000000000 -118.625; 3 0010000000000000 0x1p-260; 3 7FFFFFFFFFFFFFF8 "
                           "0x1FFFFFFFFFFFFFp199; 1 0000000000000001 0x1p-1074; 2 0000000000000080 -0")) {
    SCOPED_TRACE(shown(c));
    const double value = std::strtod(c[2].c_str(), nullptr);
    const int format = std::stoi(c[0]);
    EXPECT_EQ(bitsOf(read(format, fromHex(c[1]))), bitsOf(value));
    EXPECT_EQ(written(format, value, static_cast<int>(c[1].size() / 2)), c[1]);
  }
}

TEST(Floats, WriteWhatIsTooLargeForTheField) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(written(1, 1e300, 4), "7F800000");
  EXPECT_EQ(written(2, -1e300, 4), "000080FF");
  EXPECT_EQ(written(3, 1e300, 4), "61100000");  // by way of the float's infinity
  EXPECT_EQ(written(3, -infinity, 4), "E1100000");
  EXPECT_EQ(written(3, -1e300, 8), "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(written(3, std::nan(""), 8), "7FFFFFFFFFFFFFFF");
  EXPECT_EQ(written(3, 1e-300, 8), "0000000000000000");
  EXPECT_EQ(written(3, -1e-300, 8), "8000000000000000");
  EXPECT_EQ(written(1, 1 + 0x1p-24, 4), "3F800000");  // to nearest, even
  EXPECT_EQ(written(1, 1 + 0x1.8p-24, 4), "3F800001");
}

TEST(Floats, RefuseNullThenSize) {
  DataCnv cnv = floatConverter(3);
  unsigned char field[8] = {};
  const KelWstring text = u"1"_k;
  const auto internal = [](const std::string& detail) {
    return conversionFailure(5502, {"CPI Internal Error", detail});
  };
  EXPECT_EQ(raisedBy([&] { cnv.FltToDbl(nullptr, 0); }), internal("Null input pointer passed into DataCnv::FltToDbl"));
  EXPECT_EQ(raisedBy([&] { cnv.FltToDec(nullptr, 0, 0); }), internal("Null input pointer"));
  EXPECT_EQ(raisedBy([&] { cnv.FltFromDbl(1, nullptr, 0); }), internal("Null output buffer pointer"));
  EXPECT_EQ(raisedBy([&] { cnv.FltFromDec(nullptr, nullptr, 0, 0); }), internal("Null input pointer"));
  EXPECT_EQ(raisedBy([&] { cnv.FltFromDec(text.characters(), nullptr, 0, 0); }),
            internal("Null output buffer pointer"));
  for (const int size : {kLeast, -4, 0, 1, 2, 3, 5, 7, 9, 16, 0x104}) {
    const std::string number = std::to_string(size);
    const auto input = internal((size <= 0 ? "Invalid input size: " : "Invalid float size: ") + number);
    EXPECT_EQ(raisedBy([&] { cnv.FltToDbl(field, size); }), input);
    EXPECT_EQ(raisedBy([&] { cnv.FltToDec(field, size, 1); }), input);
    const auto output = internal((size <= 0 ? "Invalid output buffer size: " : "Invalid float size: ") + number);
    EXPECT_EQ(raisedBy([&] { cnv.FltFromDbl(1, field, size); }), output);
    EXPECT_EQ(raisedBy([&] { cnv.FltFromDec(text.characters(), field, size, 1); }), output);
  }
}

TEST(Floats, ReadAsDecimals) {
  for (const Row& c :
       rows("3 41F00000 0 15.; 3 41F00000 1 1.5; 3 41F00000 -2 1500; 3 C1180000 0 -1.5; 1 00000000 0 0.; "
            "3 C1180000 1 -.15; 3 C1180000 2 0.-15; 1 3DCCCCCD 0 0.10000000149011612; "
            "1 3FB999999999999A 0 0.1; 1 3FB999999999999A -1 01; 2 000000000000F83F 3 0.0015; "
            "3 42640000 2 1.00")) {
    EXPECT_EQ(readDecimal(std::stoi(c[0]), c[1], std::stoi(c[2])), c[3]) << shown(c);
  }
}

TEST(Floats, WriteDecimals) {
  DataCnv cnv = floatConverter(3);
  // Text, scale, field. The last ones: scales that no text could be written out for.
  for (const Row& c :
       rows("1.5 1 41F00000; 100 0 42640000; -1.5 0 C1180000; -118.625 0 C276A00000000000; 15 -1 41180000; "
            "1e2 0 42640000; -0.0 0 80000000; 1e400 0 7FFFFFFFFFFFFFFF; 0.1 0 401999999999999A; "
            "1 2147483647 7FFFFFFFFFFFFFFF; -1 2147483647 FFFFFFFFFFFFFFFF; 0 2147483647 00000000; "
            "1 -2147483648 00000000; 1.5 -2147483647 0000000000000000")) {
    SCOPED_TRACE(shown(c));
    const int size = static_cast<int>(c[2].size() / 2);
    EXPECT_EQ(
        bytesWritten(
            size, [&](unsigned char* target) { cnv.FltFromDec(k(c[0]).characters(), target, size, std::stoi(c[1])); }),
        c[2]);
  }
  unsigned char target[4];
  EXPECT_EQ(raisedBy([&] { cnv.FltFromDec(u"x"_k.characters(), target, 4, 0); }),
            conversionFailure(5505, {"CPI Converter Input Data Invalid", "string", "x"}));
}

TEST(Floats, TracedMembersGiveTheSame) {
  DataCnv cnv = floatConverter(3);
  const std::string one = fromHex("41100000");
  unsigned char target[4];
  double value = 0;
  EXPECT_EQ(tracedAt(4,
                     [&] {
                       value = cnv.FltToDbl(bytesOf(one), 4);
                       cnv.FltFromDbl(value, target, 4);
                       DataCnv::ConvertDoubleHFPtoIEEE(&value, &value, eEndianLittle);
                     }),
            "> DataCnv::FltToDbl\n< DataCnv::FltToDbl\n> DataCnv::FltFromDbl\n< DataCnv::FltFromDbl\n");
  EXPECT_EQ(toHex({reinterpret_cast<char*>(target), 4}), "41100000");
}

// The exported routines on bit patterns.
std::uint32_t converted(void (*routine)(float*, float*), std::uint32_t bits) {
  float in, out;
  std::memcpy(&in, &bits, sizeof in);
  routine(&in, &out);
  std::memcpy(&bits, &out, sizeof out);
  return bits;
}
std::uint64_t converted(void (*routine)(double*, double*, EEndian), std::uint64_t bits, EEndian order = eEndianLittle) {
  double in, out;
  std::memcpy(&in, &bits, sizeof in);
  routine(&in, &out, order);
  std::memcpy(&bits, &out, sizeof out);
  return bits;
}

// Pairs of bit patterns, 8 digits of a float or 16 of a double, through the routine of their width.
void expectConverted(std::string_view pairs, void (*ofFloat)(float*, float*),
                     void (*ofDouble)(double*, double*, EEndian)) {
  for (const Row& c : rows(pairs)) {
    const std::uint64_t bits = fromHexWord(c[0]);
    EXPECT_EQ(c[0].size() == 8 ? converted(ofFloat, static_cast<std::uint32_t>(bits)) : converted(ofDouble, bits),
              fromHexWord(c[1]))
        << shown(c);
  }
}

TEST(HexFloat, ConvertsKnownPatterns) {
  expectConverted(
      "41100000 3F800000; 42640000 42C80000; 00000000 00000000; 80000000 80000000; 41000000 41800000; "
      "7FFFFFFF 7F7FFFFF; FFFFFFFF FF7FFFFF; 00100000 00000000; 80100000 80000000; 41000001 35800000; "
      "60FFFFFF 7F7FFFFF; 61100000 7F7FFFFF; 21200000 00000000; 21400000 00800000; A1400001 80800002; "
      "4110000000000000 3FF0000000000000; 0000000012345678 0000000012345678; 8000000000000001 8000000000000001; "
      "4100000000000000 3FF0000000000000; 4100000000000001 3FF0000000000001; 4100000100000000 3EB0000000000000; "
      "7F000000FFFFFFFF 4F700000FFFFFFFF; 7FFFFFFFFFFFFFFF 4FB0000040000000; 0000001000000000 2EB0000000000000",
      DataCnv::ConvertFloatHFPtoIEEE, DataCnv::ConvertDoubleHFPtoIEEE);
  expectConverted(
      "3F800000 41100000; 42C80000 42640000; 3F000000 40800000; BDCCCCCD C0199999; 7F800000 61100000; "
      "FFC00000 E1180000; 00000001 21200000; 80000000 80000000; 7F7FFFFF 60FFFFFF; 3F7FFFFF 40FFFFFF; "
      "3F400001 40C00001; 3E800001 40400000; 3FF0000000000000 4110000000000000; "
      "000000000000BEEF 000000000000BEEF; 7FF0000000000000 7FFFFFFFFFFFFFFF; FFEFFFFFFFFFFFFF FFFFFFFFFFFFFFFF; "
      "0010000000000000 0000000000000000; 8010000000000000 8000000000000000; 4FAFFFFFFFFFFFFF 7FFFFFFFFFFFFFF8; "
      "4FB0000000000000 7FFFFFFFFFFFFFFF; 2FB0000000000000 0010000000000000; 2FAFFFFFFFFFFFFF 0000000000000000; "
      "2EB0000000000000 0000000000000000",
      DataCnv::ConvertFloatIEEEtoHFP, DataCnv::ConvertDoubleIEEEtoHFP);
}

// The halving that rounds, its carry into the high word, and the one that carries all the way up.
TEST(HexFloat, RoundsTheLastBitOnly) {
  expectConverted(
      "4120000000000001 4000000000000001; 412000000000000F 4000000000000008; 41200000FFFFFFFF 4000000000000000; "
      "41200001FFFFFFFF 4000000180000000; 413FFFFFFFFFFFFF 4010000040000000; 41FFFFFFFFFFFFFB 402FFFFFFFFFFFFF; "
      "41FFFFFFFFFFFFFF 4030000040000000; 4140000000000003 4010000000000001",
      nullptr, DataCnv::ConvertDoubleHFPtoIEEE);
}

TEST(HexFloat, TakesTheWordsOfADoubleInTheOrderGiven) {
  for (const int order : {-1, 0, 1, 2, 3}) {
    const bool highFirst = order == 2;  // words, not bytes: in memory, this machine's low word comes first
    EXPECT_EQ(converted(DataCnv::ConvertDoubleHFPtoIEEE, highFirst ? 0x8000000041100000u : 0x4110000080000000u,
                        EEndian{order}),
              highFirst ? 0x800000003FF00000u : 0x3FF0000080000000u)
        << order;
  }
}

// Words that are random in all bits, or have long runs of equal ones, where the rounding goes another way.
class Patterns {
 public:
  std::uint64_t next() {
    const std::uint64_t bits = random_();
    const std::uint64_t run = ~std::uint64_t{0} >> random_() % 64;
    switch (random_() % 8) {
      case 0:
        return bits | 0xFFFFFFFFu;
      case 1:
        return bits ^ (bits & run);
      case 2:
        return bits | (run & 0x00FFFFFF'FFFFFFFFu);
      case 3:
        return bits & ~(run & 0x00FFFFFF'FFFFFFFFu);
      default:
        return bits;
    }
  }

 private:
  std::mt19937_64 random_{20240229};
};

TEST(HexFloat, AgreesWithTheWordByWordWay) {
  Patterns patterns;
  for (long i = randomCases(200'000); i > 0; --i) {
    const std::uint64_t bits = patterns.next();
    const auto word = static_cast<std::uint32_t>(bits >> 32);
    ASSERT_EQ(converted(DataCnv::ConvertFloatHFPtoIEEE, word), words::ieeeFromHex(word)) << std::hex << word;
    ASSERT_EQ(converted(DataCnv::ConvertFloatIEEEtoHFP, word), words::hexFromIeee(word)) << std::hex << word;
    ASSERT_EQ(converted(DataCnv::ConvertDoubleHFPtoIEEE, bits), words::joined(words::ieeeFromHex(words::split(bits))))
        << std::hex << bits;
    ASSERT_EQ(converted(DataCnv::ConvertDoubleIEEEtoHFP, bits), words::joined(words::hexFromIeee(words::split(bits))))
        << std::hex << bits;
  }
}

TEST(HexFloat, DoublesWithinTheRangeComeBack) {
  Patterns patterns;
  for (int i = 0; i < 20'000; ++i) {
    // Exponents from 16^-64 to 16^63, where the first digit may be 1 and cost three bits: still 53 of them.
    const std::uint64_t exponent = 1023 - 256 + patterns.next() % 504;
    const std::uint64_t bits = (patterns.next() & 0x800FFFFF'FFFFFFFFu) | exponent << 52;
    ASSERT_EQ(core::ieeeFromHex(core::hexFromIeee(bits)), bits) << std::hex << bits;
  }
}

}  // namespace
}  // namespace oxr::test
