#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/hex.hpp"
#include "support/rows.hpp"
#include "support/tracing.hpp"

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
