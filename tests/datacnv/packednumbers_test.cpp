#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/guarded.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

// A member by the bytes of its integer; 0 is the one of doubles, which are numbers here by their bits.
struct Call {
  DataCnv& converter;
  int member, size, scale;
  ESign sign;

  PWFInt64 read(const unsigned char* field) const {
    if (member == 0) return std::bit_cast<PWFInt64>(converter.PckdDecToDbl(field, size, scale, sign));
    return member == 4 ? converter.PckdDecToInt32(field, size, scale, sign)
                       : converter.PckdDecToPWFInt64(field, size, scale, sign);
  }
  PWFInt64 readByChain(const unsigned char* field) const {
    const PWFData decimal = converter.PckdDecToDec(field, size, scale, sign);
    if (member == 0)
      return std::bit_cast<PWFInt64>(converter.PWFStringTodouble(KelWstring(UnitView(decimal.getDecimalValue()))));
    unsigned char integer[8];
    converter.IntFromDec(decimal.getDecimalValue(), integer, member, 0);
    return converter.IntToInt64(integer, member, eSignLeadingIncluded);
  }
  void write(PWFInt64 value, unsigned char* field) const {
    if (member == 0) return converter.PckdDecFromDbl(std::bit_cast<double>(value), field, size, scale, sign);
    if (member == 4) return converter.PckdDecFromInt32(static_cast<PWFInt32>(value), field, size, scale, sign);
    converter.PckdDecFromPWFInt64(value, field, size, scale, sign);
  }
  void writeByChain(PWFInt64 value, unsigned char* field) const {
    KelWstring text;
    unsigned char integer[8];
    if (member == 0) {
      converter.doubleToUString(std::bit_cast<double>(value), text, false);
    } else {
      converter.IntFromInt64(member == 4 ? static_cast<PWFInt32>(value) : value, integer, member, eSignLeadingIncluded);
      text = KelWstring(UnitView(converter.IntToDec(integer, member, 0).getDecimalValue()));
    }
    converter.PckdDecFromDec(text.characters(), field, size, scale, sign);
  }
};

// The number that is read, as its bytes, or what is raised.
template <class Read>
std::string outcomeOf(Read read) {
  return bytesWritten(8, [&](unsigned char* bytes) {
    const PWFInt64 number = read();
    std::memcpy(bytes, &number, sizeof number);
  });
}

// Field, scale; as a double, in 64 bits, in 32 bits.
TEST(PackedConversions, ReadsNumbers) {
  DataCnv converter = converterFor(37);
  for (const auto& c :
       rows("123C 0 123 123 123; 123D 1 -12.3 -12 -12; 999C 3 0.999 0 0; 123D 3 -0.123 0 0; 123D 4 0 0 0; 0D 0 -0 0 0;"
            "123D -2 -12300 -12300 -12300; 02147483648C 0 2147483648 2147483648 !; 214748364799C 2 2147483647.99 "
            "2147483647 2147483647; 02147483648D 0 -2147483648 -2147483648 -2147483648; 9223372036854775807C 0 "
            "9223372036854775807 9223372036854775807 !; 1234567890123456789C 19 0.1234567890123456789 0 0; 1C "
            "2147483647 0 0 0")) {
    const std::string field = fromHex(c[0].size() % 2 == 0 ? c[0] : "0" + c[0]);
    const auto outcome = [&](int member) {
      const Call call{converter, member, static_cast<int>(field.size()), std::stoi(c[1]), eSignLeadingIncluded};
      return outcomeOf([&] { return call.read(reinterpret_cast<const unsigned char*>(field.data())); });
    };
    EXPECT_EQ(outcome(0), outcomeOf([&] { return std::bit_cast<PWFInt64>(std::stod(c[2])); })) << shown(c);
    EXPECT_EQ(outcome(8), outcomeOf([&] { return std::stoll(c[3]); })) << shown(c);
    EXPECT_EQ(outcome(4), c[4] == "!"
                              ? "5507|Overflow converting a PWFInt64 to PWFInt32|integer|4-byte integer|4|" + c[3]
                              : outcomeOf([&] { return std::stoll(c[4]); }))
        << shown(c);
  }
}

TEST(PackedConversions, QuickWayAndChainAgree) {
  std::mt19937_64 random(20261121);  // fixed: a failure repeats
  const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  DataCnv converters[] = {converterFor(37), converterFor(37, eEndianBig, eEndianLittle)};
  converters[0].getDecimalFormatter();  // doubles take the quick way once there is one
  for (int i = 0; i < 40'000; ++i) {
    const Call call{converters[i % 2], 4 * below(3), below(13), below(4) == 0 ? below(50) - 25 : below(3),
                    static_cast<ESign>(below(3))};
    unsigned char field[13] = {};
    for (int digit = below(2 * call.size + 1); digit < 2 * call.size; ++digit)
      field[digit / 2] = static_cast<unsigned char>(field[digit / 2] << 4 | below(10));
    unsigned char& last = field[std::max(call.size, 1) - 1];
    last = static_cast<unsigned char>((last & 0xF0) | (below(9) == 0 ? below(16) : 12 + below(2)));
    if (below(30) == 0) field[below(13)] ^= 0xA0;
    if (i % 2 != 0) std::reverse(field, field + call.size);
    ASSERT_EQ(outcomeOf([&] { return call.read(field); }), outcomeOf([&] { return call.readByChain(field); }))
        << toHex({reinterpret_cast<const char*>(field), sizeof field}) << " size " << call.size << " scale "
        << call.scale;
    PWFInt64 value = static_cast<PWFInt64>(random()) >> below(64);
    if (call.member == 0 && below(2) != 0)
      value = std::bit_cast<PWFInt64>(static_cast<double>(value) / (1 << below(17)));
    ASSERT_EQ(bytesWritten(call.size, [&](unsigned char* target) { call.write(value, target); }),
              bytesWritten(call.size, [&](unsigned char* target) { call.writeByChain(value, target); }))
        << value << " size " << call.size << " scale " << call.scale;
  }
}

// For every width whose digits the number has.
TEST(PackedConversions, WriteThenReadGivesTheSameNumber) {
  unsigned char field[12];
  for (PWFInt64 value = 7; std::abs(value) < 1'000'000'000'000'000'000; value = value * -3 + 1) {
    DataCnv converter = converterFor(37, eEndianBig, value % 2 == 0 ? eEndianBig : eEndianLittle);
    const int size = static_cast<int>(std::to_string(std::abs(value)).size()) / 2 + 1;
    converter.PckdDecFromPWFInt64(value, field, size, 0, eSignLeadingIncluded);
    ASSERT_EQ(converter.PckdDecToPWFInt64(field, size, 0, eSignLeadingIncluded), value);
    const double real = static_cast<double>(value) / 16;
    converter.PckdDecFromDbl(real, field, 12, 4, eSignTrailingSeparate);
    ASSERT_EQ(converter.PckdDecToDbl(field, 12, 4, eSignTrailingSeparate), real);
  }
}

TEST(PackedConversions, TraceTheChain) {
  DataCnv converter = converterFor(37);
  unsigned char field[] = {0x1C};
  const std::string lines = tracedAt(4, [&] {
    for (const int member : {0, 8, 4}) {
      const Call call{converter, member, 1, 0, eSignNone};
      call.write(call.read(field), field);
    }
  });
  const Row names = rows(
      "PckdDecToDbl PckdDecToDec UStringTodouble PckdDecFromDbl doubleToUString PckdDecFromDec PckdDecToPWFInt64 "
      "IntFromDec IntToInt64 PckdDecFromPWFInt64 IntFromInt64 IntToDec PckdDecFromDec PckdDecToInt32 IntFromDec "
      "IntToInt32 PckdDecFromInt32 IntFromInt32 IntToDec PckdDecFromDec")[0];
  for (std::size_t from = 0; const std::string& name : names) {
    from = lines.find("> DataCnv::" + name + '\n', from);
    ASSERT_NE(from, std::string::npos) << name << '\n' << lines;
  }
}

}  // namespace
}  // namespace oxr::test
