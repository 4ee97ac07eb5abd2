#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

#include "cputils.hpp"
#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr EEndian kOrders[] = {eEndianBig, eEndianLittle, eEndianUnset};

const unsigned char* bytesOf(const std::string& field) {
  return reinterpret_cast<const unsigned char*>(field.data());
}
std::string inOrder(std::string normal, EEndian endian) {
  if (endian == eEndianLittle) std::reverse(normal.begin(), normal.end());
  return normal;
}
PWFData decimal(std::string_view text) {
  return PWFData(k(text).characters(), DECIMAL);
}
std::string textOf(const PWFData& value) {
  return toUtf8(UnitView(static_cast<const unsigned short*>(value.getDataValue()),
                         static_cast<std::size_t>(value.getDataLength()) / 2));
}
Raised invalidData(const std::string& what, const std::string& data) {
  return conversionFailure(5505, {"CPI Converter Input Data Invalid", what, data});
}

TEST(Tlog, ReadsStringsAndDecimals) {
  DataCnv converter = converterFor(819);
  for (const auto& c :
       rows("12AF !; 1234 1234; D123 -123; FD12 -12; F123 123; 0012 0012; FD -; F0 0; D0 -0; 1D23 !; FF12 !; DD12 !;"
            "DF12 !; FDD1 !; FDF1 !; 123C !; 123D !; 123F !; E1 !; FA !; 0123456789012345 0123456789012345; '' '';"
            "FD2345678901234F !; FD23456789012345D2 !; FD2345678901234567 -2345678901234567; 1234567890123456FD !;"
            "D12345678901234567 -12345678901234567; 123456789A0123456789012345678901 !; 0F1E2D3C4B5A6978AA !")) {
    for (const EEndian endian : kOrders) {
      SCOPED_TRACE(shown(c) + " order " + std::to_string(endian));
      const std::string field = inOrder(fromHex(c[0]), endian);
      const int size = static_cast<int>(field.size());
      EXPECT_EQ(textOf(converter.TLOGPckdStrToStr(bytesOf(field), size, endian)), c[0]);
      const std::unique_ptr<unsigned char[]> halves(converter.getUnpackedBuffer(bytesOf(field), size, endian));
      for (std::size_t i = 0; i < c[0].size(); ++i)
        EXPECT_EQ("0123456789ABCDEF"[halves[i]], c[0][i]);
      std::string text;
      const Raised raised = raisedBy([&] { text = textOf(converter.TLOGPckdDecToDec(bytesOf(field), size, endian)); });
      EXPECT_EQ(raised,
                c[1] == "!" ? invalidData("TLOG packed decimal", CPUtils::binaryDump(bytesOf(field), size)) : Raised());
      EXPECT_EQ(text, c[1] == "!" ? "" : c[1]);
    }
  }
}

TEST(Tlog, NullAndEmptyFieldsGiveEmptyText) {
  DataCnv converter = converterFor(819);
  const unsigned char field[] = {0xD1};
  KelWstring text = u"old"_k;
  converter.TLOGPckdDecToDec(field, text, 1, eEndianBig);
  converter.TLOGPckdStrToStr(field, text, 1, eEndianBig);
  EXPECT_EQ(text, u"D1-1old"_k);
  converter.TLOGPckdDecToDec(nullptr, text, 1, eEndianBig);
  for (const EEndian endian : kOrders) {
    converter.TLOGPckdStrToStr(nullptr, text, 1, endian);
    converter.TLOGFLPckdDecToDec(nullptr, text, 1, endian, eTrimPadding, eJustifyLeft, 15, false);
    converter.TLOGFLPckdDecToDec(field, text, -3, endian, eTrimPadding, eJustifyLeft, 15, false);
    converter.TLOGFLPckdStrToStr(field, text, 0, endian, eTrimPadding, eJustifyRight, 15, false);
    EXPECT_EQ(text, u""_k);
    EXPECT_EQ(converter.getUnpackedBuffer(nullptr, 1, endian), nullptr);
  }
}

// Each row: field, order, CCSID, trim type, justification, pad, whether the pad is Unicode, the text or "!".
void expectTrimmed(decltype(&DataCnv::TLOGFLPckdDecToDec) member, std::string_view table) {
  for (const auto& c : rows(table)) {
    SCOPED_TRACE(shown(c));
    const auto number = [&c](std::size_t column) { return std::stoi(c[column]); };
    const std::string field = fromHex(c[0]);
    DataCnv converter = converterFor(number(2));
    KelWstring text;
    const Raised raised = raisedBy([&] {
      (converter.*member)(bytesOf(field), text, static_cast<int>(field.size()), static_cast<EEndian>(number(1)),
                          static_cast<ETrimType>(number(3)), static_cast<EJustification>(number(4)),
                          static_cast<unsigned short>(number(5)), c[6] == "1");
    });
    EXPECT_EQ(raised.kind.empty() ? toUtf8(text) : "!", c[7]);
  }
}

TEST(Tlog, DecimalPadsComeOffInMemoryOrder) {
  expectTrimmed(&DataCnv::TLOGFLPckdDecToDec,
                "1234FFFF 2 37 4 1 15 0 1234; 1234FFFF 2 37 4 2 15 0 !; FFFF1234 2 37 4 2 15 0 1234;"
                "1200 2 37 4 1 0 0 12; 1200 2 37 4 0 0 0 1200; 1200 2 37 3 1 0 0 1200; 1200 2 37 4 1 0 1 1200;"
                "3412FFFF 1 37 4 1 15 0 1234; FFFF3412 1 37 4 2 15 0 1234; FFFF 2 37 4 1 15 0 ''; 12FF 2 37 4 1 15 1 !;"
                "1292 2 37 4 1 2 0 1292; 1299 2 37 4 1 25 0 12; FD12FF 2 37 4 1 15 0 -12");
}

// In EBCDIC 0x46 is a letter with an accent, and 0x30 a control character.
TEST(Tlog, StringPadIsAnAsciiCodeInTheCodePage) {
  expectTrimmed(&DataCnv::TLOGFLPckdStrToStr,
                "12FF 2 819 4 1 15 0 12; 12FF 2 1208 4 1 15 0 12; 12FF 2 37 4 1 15 0 12FF; FF12 2 819 4 2 15 0 12;"
                "12FF 2 819 4 2 15 0 12FF; 12FF 2 819 4 0 15 0 12FF; 12FF 2 819 4 1 15 1 12FF; FF 2 819 4 1 15 0 '';"
                "12FF 2 819 3 1 15 0 12FF; 12FF 2 819 4 1 16 0 12FF; 1200 2 37 4 1 0 0 1200; FF12 1 819 4 1 15 0 12;"
                "5BBB 2 819 4 1 11 0 5; 9910 2 819 4 2 9 0 10; AA10 2 819 4 2 10 0 10");
}

// Lets `write(target)` fill a field of `size` bytes between guards: the bytes, or "small" or "digit" for the failures.
template <class Write>
std::string writtenBy(int size, const std::string& text, Write write) {
  const std::string guard(24, '\xEE');
  std::string field = guard + std::string(static_cast<std::size_t>(std::max(size, 0)), '\x77') + guard;
  unsigned char* const target = reinterpret_cast<unsigned char*>(field.data()) + guard.size();
  const Raised raised = raisedBy([&] { EXPECT_EQ(write(target), target); });
  EXPECT_TRUE(field.starts_with(guard) && field.ends_with(guard)) << toHex(field);
  if (raised.kind.empty()) return toHex(field.substr(guard.size(), field.size() - 2 * guard.size()));
  if (raised == invalidData("decimal", text)) return "digit";
  EXPECT_EQ(raised, conversionFailure(
                        5506, {"CPI Converter Input Data Out Of Bounds", "Decimal", "TLOG Packed Decimal", text}));
  return "small";
}
std::string packed(const std::string& text, int size, EEndian endian, bool fixed) {
  DataCnv converter = converterFor(819);
  PWFData value = decimal(text);
  return writtenBy(size, text, [&](unsigned char* target) {
    int written = -1;
    unsigned char* const result = converter.TLOGPWFDataToPckdDecimal(value, target, size, endian, fixed, written);
    EXPECT_EQ(written, size);
    return result;
  });
}
std::string packedString(const std::string& text, int size, EEndian endian, int ccsid = 819) {
  DataCnv converter = converterFor(ccsid);
  return writtenBy(size, text, [&](unsigned char* target) {
    return converter.TLOGPWFDataToPckdStr(PWFData(k(text)), target, size, endian);
  });
}

TEST(Tlog, WritesDecimalsThatFillTheirField) {
  for (const auto& c :
       rows("123 2 F123; -123 2 D123; -12 2 FD12; 12 1 12; 0 1 F0; -0 1 D0; +5 1 F5; 007 1 F7; -07 1 D7; 1 0 small;"
            "-12 0 small; 12 0 ''; 1234 3 digit; 1 2 digit; -12 3 digit; 1.5 2 digit; 1.55 2 digit; - 1 digit;"
            "+ 1 digit; '' 1 digit; 12a4 2 digit; /1 1 digit; 1: 1 digit; 1234 1 12; 123 1 F1; -1234 1 FD; -1234 2 "
            "FD12"))
    EXPECT_EQ(packed(c[0], std::stoi(c[1]), eEndianBig, false), c[2]) << shown(c);
}

// A "+" or leading zeros turn the count that the bytes are worked out from: digits are lost, or missed.
TEST(Tlog, FixedFormCountsByTheText) {
  for (const auto& c :
       rows("123 3 000123; -123 3 00D123; -12 3 000D12; 12 1 12; -12 1 small; -12 2 0D12; 123 1 small; 12 0 small;"
            "0 1 00; 0 3 000000; -1 2 00D1; -0 1 D0; 12345 2 small; 1.5 2 digit; 1.55 3 digit; 01 1 small; +5 1 small;"
            "00 1 small; 01 3 small; 0123 2 0001; 0123 3 000001; +123 2 0001; +12 2 0012; 012 2 0012; 00123 3 000123;"
            "-012 2 small; -00123 4 0000D123; -012 3 digit; - 1 digit; + 1 digit; '' 1 small; 123 -1 small; 0 0 small"))
    EXPECT_EQ(packed(c[0], std::stoi(c[1]), eEndianBig, true), c[2]) << shown(c);
}

TEST(Tlog, WritesStringsByTheirCodePage) {
  for (const auto& c :
       rows("12ab 2 819 12AB; 12AFaf 3 819 12AFAF; 12 3 819 120000; '' 2 819 0000; 1234 1 819 12; 123 2 819 1230;"
            "GgZ@ 2 819 77A0; 12AF 2 37 1216; 1 2 1208 1000; 12 4 1200 01020000; 12 0 819 ''; 12 -1 819 '';"
            "\u20AC1 2 1208 22C1; 0123456789012345678901234567890123456789012345678901234567890123456789 36 819 "
            "012345678901234567890123456789012345678901234567890123456789012345678900"))
    EXPECT_EQ(packedString(c[0], std::stoi(c[1]), eEndianBig, std::stoi(c[2])), c[3]) << shown(c);
}

TEST(Tlog, LittleEndianWritesAMirrorImage) {
  EXPECT_EQ(packedString("12ab", 2, eEndianLittle), "1212");
  EXPECT_EQ(packedString("123456", 3, eEndianLittle), "123412");
  EXPECT_EQ(packed("-1234567", 4, eEndianLittle, false), "D12323D1");
  EXPECT_EQ(packed("12", 1, eEndianUnset, true), "12");
  DataCnv converter = converterFor(819);
  unsigned char target[] = {0x77};
  EXPECT_EQ(raisedBy([&] { converter.TLOGPWFDataToPckdStr(PWFData(u"1"_k), target, 0, eEndianLittle); }),
            conversionFailure(5502, {"Invalid input length: 0"}));
}

TEST(Tlog, WritersTestTheTargetThenTheType) {
  DataCnv converter = converterFor(819);
  unsigned char target[2];
  int written = 7;
  PWFData text(u"1"_k), number = decimal("1");
  EXPECT_EQ(converter.TLOGPWFDataToPckdDecimal(text, nullptr, 2, eEndianLittle, true, written), nullptr);
  EXPECT_EQ(converter.TLOGPWFDataToPckdStr(number, nullptr, 2, eEndianLittle), nullptr);
  EXPECT_EQ(
      raisedBy([&] { converter.TLOGPWFDataToPckdDecimal(text, target, 2, eEndianBig, true, written); }).inserts.back(),
      "Logical type not equal to decimal");
  EXPECT_EQ(raisedBy([&] { converter.TLOGPWFDataToPckdStr(number, target, 2, eEndianBig); }).inserts.back(),
            "Logical type not equal to string");
  EXPECT_EQ(written, 7);
}

// Every width and sign in both forms; a negative one only where it fills its field, since no reader looks for a minus
// behind zeros.
TEST(Tlog, WriteThenReadGivesTheSameText) {
  std::mt19937 random(20261121);  // fixed: a failure repeats
  DataCnv converter = converterFor(819);
  for (int i = 0; i < 20'000; ++i) {
    std::string text(1 + random() % 40, '1');
    for (char& digit : text)
      digit = static_cast<char>(digit + random() % 9);
    const bool negative = random() % 2 != 0;
    const bool fixed = !negative && random() % 2 != 0;
    const std::size_t size = (text.size() + 1 + negative) / 2 + (fixed ? random() % 3 : 0);
    if (negative) text.insert(text.begin(), '-');
    const std::string field = packed(text, static_cast<int>(size), eEndianBig, fixed);
    const std::string zeros(fixed ? 2 * size - text.size() : 0, '0');
    for (const EEndian endian : kOrders) {
      const std::string stored = inOrder(fromHex(field), endian);
      const int count = static_cast<int>(size);
      ASSERT_EQ(textOf(converter.TLOGPckdDecToDec(bytesOf(stored), count, endian)), zeros + text);
      ASSERT_EQ(packedString(textOf(converter.TLOGPckdStrToStr(bytesOf(stored), count, endian)), count, eEndianBig),
                field);
    }
  }
}

TEST(Tlog, TracesUnderTheirNames) {
  unsigned char field[] = {0x12};
  DataCnv converter = converterFor(819);
  converter.getConverter();
  KelWstring text;
  int written = 0;
  PWFData one = decimal("1");
  const PWFData oneText(u"1"_k);
  const auto named = [](const std::string& name, const std::string& inserts, const std::string& inner) {
    return "> DataCnv::" + name + inserts + '\n' + inner + "< DataCnv::" + name + '\n';
  };
  const auto reads = [&](const std::string& name, const std::string& inner) { return named(name, ": 1|2", inner); };
  const std::string arguments = "const unsigned char* source, PWFInt32 size, EEndian endian)";
  const std::string unpack = reads("getUnpackedBuffer ( " + arguments, "");
  const std::string string = reads("TLOGPckdStrToStr( " + arguments, unpack);
  const std::string decimalLines =
      reads("TLOGPckdDecToDec(const unsigned char* source, PWFString& dest, PWFInt32 size, EEndian endian)", unpack);
  EXPECT_EQ(tracedAt(4,
                     [&] {
                       converter.TLOGPckdStrToStr(field, 1, eEndianBig);
                       converter.TLOGPckdDecToDec(field, 1, eEndianBig);
                       converter.TLOGFLPckdStrToStr(field, text, 1, eEndianBig, eTrimNone, eJustifyLeft, 0, false);
                       converter.TLOGFLPckdDecToDec(field, text, 1, eEndianBig, eTrimNone, eJustifyLeft, 0, false);
                       converter.TLOGPWFDataToPckdDecimal(one, field, 1, eEndianBig, true, written);
                       converter.TLOGPWFDataToPckdStr(oneText, field, 1, eEndianBig);
                     }),
            reads("TLOGPckdStrToStr( " + arguments, string) + reads("TLOGPckdDecToDec(" + arguments, decimalLines) +
                reads("TLOGFLPckdStrToStr", string) + reads("TLOGFLPckdDecToDec", decimalLines) +
                named("TLOGPWFDataToPckdDecimal", "", "") +
                named("TLOGPWFDataToPckdStr ( const PWFData& inputData, unsigned char* target, PWFInt32 size, EEndian "
                      "endian )",
                      "", ""));
}

}  // namespace
}  // namespace oxr::test
