#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/tracing.hpp"

namespace oxr::test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr ESign kUnsigned = eSignNone;
constexpr ESign kSigned = eSignLeadingIncluded;

Raised tooLong(const char* text, const char* width, const char* size, const char* value) {
  return conversionFailure(5507, {text, "integer", width, size, value});
}
Raised badSize(int size) {
  return conversionFailure(5502, {"CPI Internal Error", "Invalid integer size: " + std::to_string(size)});
}

// What a member reads: the number, or the message and its last insert.
template <class Read>
std::string outcome(Read read) {
  std::string number;
  const Raised raised = raisedBy([&] { number = std::to_string(read()); });
  return raised.inserts.empty() ? number : std::to_string(raised.number & 0xFFFF) + ": " + raised.inserts.back();
}

TEST(Integers, ReadBytesInBothOrders) {
  const Bytes ones(8, 0xFF);
  const struct {
    const char* what;
    EEndian order;
    ESign sign;
    Bytes field;
    const char* as64;
    const char* as32;
    const char* asUnsigned;
  } cases[] = {
      {"signed", eEndianBig, kSigned, {0xFF, 0xFE}, "-2", "-2", "65534"},
      {"unsigned", eEndianBig, kUnsigned, {0xFF, 0xFE}, "65534", "65534", "65534"},
      {"only one sign form is signed", eEndianBig, eSignTrailingIncluded, {0xFF, 0xFE}, "65534", "65534", "65534"},
      {"little, signed", eEndianLittle, kSigned, {0xFF, 0xFE}, "-257", "-257", "65279"},
      {"little, unsigned", eEndianLittle, kUnsigned, {0xFF, 0xFE}, "65279", "65279", "65279"},
      {"no order is big", eEndianUnset, kSigned, {0xFF, 0xFE}, "-2", "-2", "65534"},
      {"any other order is big", EEndian{7}, kUnsigned, {0x00, 0x01}, "1", "1", "1"},
      {"one byte", eEndianLittle, kUnsigned, {0xFF}, "255", "255", "255"},
      {"one byte, signed", eEndianBig, kSigned, {0x80}, "-128", "-128", "128"},
      {"four bytes", eEndianBig, kSigned, {0x80, 0, 0, 0}, "-2147483648", "-2147483648", "2147483648"},
      {"32 bits overflow", eEndianBig, kUnsigned, {0x80, 0, 0, 0}, "2147483648", "5507: -2147483648", "2147483648"},
      {"just no overflow", eEndianLittle, kUnsigned, {255, 255, 255, 127}, "2147483647", "2147483647", "2147483647"},
      {"eight bytes", eEndianBig, kSigned, ones, "-1", "5502: Invalid integer size: 8", "18446744073709551615"},
      {"64 bits overflow", eEndianBig, kUnsigned, ones, "5507: -1", "5502: Invalid integer size: 8",
       "18446744073709551615"},
      {"all eight in order",
       eEndianLittle,
       kUnsigned,
       {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01},
       "81985529216486895",
       "5502: Invalid integer size: 8",
       "81985529216486895"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    DataCnv cnv = converterFor(37, row.order);
    const int size = static_cast<int>(row.field.size());
    EXPECT_EQ(outcome([&] { return cnv.IntToInt64(row.field.data(), size, row.sign); }), row.as64);
    EXPECT_EQ(outcome([&] { return cnv.IntToInt32(row.field.data(), size, row.sign); }), row.as32);
    EXPECT_EQ(outcome([&] { return cnv.UIntToUInt64(row.field.data(), size); }), row.asUnsigned);
  }
}

TEST(Integers, RefuseNullThenSizeThenOverflow) {
  DataCnv cnv = converterFor(37);
  const Bytes ones(8, 0xFF);
  const auto internal = [](const char* detail) { return conversionFailure(5502, {"CPI Internal Error", detail}); };
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt64(nullptr, 3, kSigned); }),
            internal("Null input pointer passed into DataCnv::IntToInt64"));
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt32(nullptr, 3, kSigned); }),
            internal("DataCnv::IntToInt32 called with a Null input pointer for the source."));
  EXPECT_EQ(raisedBy([&] { cnv.UIntToUInt64(nullptr, 3); }), internal("Null input pointer"));
  for (const int size : {-8, -1, 0, 3, 5, 6, 7, 9, 16, 0x104}) {
    EXPECT_EQ(raisedBy([&] { cnv.IntToInt64(ones.data(), size, kSigned); }), badSize(size));
    EXPECT_EQ(raisedBy([&] { cnv.IntToInt32(ones.data(), size, kSigned); }), badSize(size));
    EXPECT_EQ(raisedBy([&] { cnv.UIntToUInt64(ones.data(), size); }), badSize(size));
  }
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt64(ones.data(), 8, kUnsigned); }),
            tooLong("Overflow converting a PWFUInt64 to PWFInt64", "8-byte integer", "8", "-1"));
  EXPECT_EQ(raisedBy([&] { cnv.IntToInt32(ones.data(), 4, eSignTrailingSeparate); }),
            tooLong("Overflow converting a PWFUInt32 to PWFInt32", "4-byte integer", "4", "-1"));
}

TEST(Integers, TracedReadingsGiveTheSame) {
  DataCnv cnv = converterFor(37);
  const Bytes field = {0xFF, 0xFE};
  EXPECT_EQ(tracedAt(4,
                     [&] {
                       EXPECT_EQ(cnv.IntToInt64(field.data(), 2, kSigned), -2);
                       EXPECT_EQ(cnv.IntToInt32(field.data(), 2, kUnsigned), 65534);
                       EXPECT_EQ(cnv.UIntToUInt64(field.data(), 1), 255u);
                     }),
            "> DataCnv::IntToInt64\n< DataCnv::IntToInt64\n> DataCnv::IntToInt32\n< DataCnv::IntToInt32\n"
            "> DataCnv::UIntToUInt64\n< DataCnv::UIntToUInt64\n");
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

TEST(SwapEnds, ReversesAnyLength) {
  for (const int length : {1, 2, 3, 8, 17}) {
    Bytes source(static_cast<std::size_t>(length));
    std::iota(source.begin(), source.end(), static_cast<unsigned char>(1));
    Bytes target(source.size());
    DataCnv::SwapEnds(target.data(), source.data(), length);
    EXPECT_EQ(target, Bytes(source.rbegin(), source.rend()));
  }
}

TEST(SwapEnds, MirrorsABufferThatIsSourceAndTarget) {
  const auto mirrored = [](Bytes bytes) {
    DataCnv::SwapEnds(bytes.data(), bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
  };
  EXPECT_EQ(mirrored({1, 2, 3, 4}), (Bytes{1, 2, 2, 1}));
  EXPECT_EQ(mirrored({1, 2, 3, 4, 5}), (Bytes{1, 2, 3, 2, 1}));
  Bytes shifted = {1, 2, 3, 4, 5, 6, 7, 8};  // one byte apart: the walk meets its own output
  DataCnv::SwapEnds(shifted.data() + 1, shifted.data(), 7);
  EXPECT_EQ(shifted, (Bytes{1, 2, 3, 4, 4, 3, 2, 1}));
}

TEST(SwapEnds, RefusesInTheStatedOrderWithoutAFirstInsert) {
  unsigned char byte = 7;
  const struct {
    unsigned char* target;
    const unsigned char* source;
    int length;
    const char* insert;
  } cases[] = {
      {nullptr, nullptr, 0, "Null input pointer"},
      {nullptr, &byte, 0, "Null output buffer pointer"},
      {&byte, &byte, 0, "Invalid input length: 0"},
      {&byte, &byte, -3, "Invalid input length: -3"},
  };
  for (const auto& row : cases) {
    try {
      DataCnv::SwapEnds(row.target, row.source, row.length);
      FAIL() << row.insert;
    } catch (const KelConversionException& e) {
      EXPECT_EQ(e.oxrMessageNumber(), 5502);
      EXPECT_EQ(e.inserts(), std::vector<std::string>{row.insert});
      EXPECT_STREQ(e.fileName(), "usr/include/dataconv");
      EXPECT_STREQ(e.functionName(), "DataCnv::SwapEnds");
    }
  }
}

}  // namespace
}  // namespace oxr::test
