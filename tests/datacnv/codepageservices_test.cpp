#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>

#include <barrier>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/newprocess.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

const unsigned char* bytesOf(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

TEST(ConverterServices, TellEbcdicByItsZero) {
  for (const int ccsid : {37, 273, 420, 500, 875, 930, 939, 1047, 1140, 1388, 1399})
    EXPECT_TRUE(converterFor(ccsid).IsCcsidEBCDIC()) << ccsid;
  for (const EEndian order : {eEndianLittle, eEndianBig, eEndianUnset})
    for (const int ccsid : {437, 819, 850, 943, 1200, 1204, 1208, 1252, 5488, 13488, 33722})
      EXPECT_FALSE(converterFor(ccsid, order).IsCcsidEBCDIC()) << ccsid;
}

TEST(ConverterServices, OneConverterServesTheObject) {
  DataCnv cnv = converterFor(1200, eEndianLittle, eEndianBig);  // text goes by the order of the integers
  CPUnicodeConverter* const page = cnv.getConverter();
  KelWstring text;
  EXPECT_EQ(cnv.toUnicodeString(text, bytesOf("A\0B"), 4), U_ZERO_ERROR);
  EXPECT_EQ(toUtf8(text), "AB");
  EXPECT_EQ(cnv.getConverter(), page);

  DataCnv missing = converterFor(99999);  // found out on first use only, and every time
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(raisedBy([&] { missing.IsCcsidEBCDIC(); }),
              recoverableFailure(2132, {"Invalid codepage (or missing table)", "99999", "ibm-99999"}));
}

TEST(ConverterServices, ReadBytesAsText) {
  // CCSID, bytes, text, status, which RawCharsToPWFData does not look at.
  for (const Row& c : rows("37 C1C240 AB_ 0; 37 F0F1F2F3F4F5F6F7F8F9F0F1F2F3F4F5F6 01234567890123456 0; "  // not inline
                           "1208 E282ACFF \u20AC\uFFFD 0; 1208 41E2 A 11; 1208 E2 '' 11")) {
    const std::string bytes = fromHex(c[1]);
    const int size = static_cast<int>(bytes.size());
    DataCnv cnv = converterFor(std::stoi(c[0]));
    KelWstring text = u"old"_k;
    EXPECT_EQ(cnv.toUnicodeString(text, bytesOf(bytes.data()), size), std::stoi(c[3]));
    EXPECT_EQ(toUtf8(text), c[2]);
    const PWFData value = cnv.RawCharsToPWFData(bytes.data(), size);
    EXPECT_EQ(value.getDataLogicalType(), STRING);
    EXPECT_FALSE(value.isNull());
    EXPECT_EQ(toUtf8(value.getPWFStringValue()), c[2]);
  }
  for (const Row& c : rows("37 0; 37 -1; 1208 0; 1200 1; 1232 3")) {  // less than the shortest character
    DataCnv cnv = converterFor(std::stoi(c[0]));
    KelWstring text;
    const Raised tooShort =
        conversionFailure(5502, {"CPI Internal Error", "size < MinBytesPerChar for codepage: " + c[0]});
    EXPECT_EQ(raisedBy([&] { cnv.toUnicodeString(text, bytesOf("AAA"), std::stoi(c[1])); }), tooShort);
    EXPECT_EQ(raisedBy([&] { cnv.RawCharsToPWFData("AAA", std::stoi(c[1])); }), tooShort);
  }
  DataCnv cnv = converterFor(37);
  EXPECT_THAT(tracedAt(4, [&] { cnv.RawCharsToPWFData("\xC1", 1); }),
              ::testing::StartsWith("> DataCnv::RawCharsToPWFData( const char* source, PWFInt32 size )\n"));
}

TEST(ConverterServices, WriteTextIntoTheRoomThereIs) {
  unsigned char bytes[4] = {};
  DataCnv cnv = converterFor(37);
  for (const auto& [room, used, status] : {std::tuple(4, 2, 0), {1, 1, 15}, {0, 0, 1}}) {
    int size = room;
    EXPECT_EQ(cnv.fromUnicodeString(u"A0"_k, bytes, size), status);
    EXPECT_EQ(size, used);
  }
  EXPECT_TRUE(bytes[0] == 0xC1 && bytes[1] == 0xF0);
}

std::string formatted(const icu::DecimalFormat& format, double value) {
  icu::UnicodeString text;
  std::string utf8;
  return format.format(value, text).toUTF8String(utf8);
}

// One formatter serves the process, so that the first call is what counts.
TEST(DecimalFormatter, WritesAPointWhateverTheLocale) {
  inANewProcess([] {
    useLocale("de_DE");
    DataCnv cnv = converterFor(37);
    const icu::DecimalFormat* const format = cnv.getDecimalFormatter();
    EXPECT_EQ(cnv.getDecimalFormatter(), format);
    EXPECT_EQ(formatted(*format, 1234.5), "1234.5");
    EXPECT_EQ(formatted(*format, -7), "-7.");
    const auto grouping = icu::DecimalFormatSymbols::kGroupingSeparatorSymbol;
    EXPECT_EQ(format->getDecimalFormatSymbols()->getConstSymbol(grouping), icu::UnicodeString(u','));
  });
}

TEST(DecimalFormatter, ALocaleWithoutDigitsIsRefusedAndTheNextCallTriesAnew) {
  inANewProcess([] {
    useLocale("zh@numbers=hans");  // numbers in words
    DataCnv cnv = converterFor(37);
    for (int i = 0; i < 2; ++i) {
      const Raised raised = raisedBy([&] { cnv.getDecimalFormatter(); });
      const char* const text = "Error creating Decimal NumberFormat single instance.";
      EXPECT_EQ(raised, recoverableFailure(2112, {text, text, "16"}));
    }
    useLocale("en_US");
    EXPECT_EQ(formatted(*cnv.getDecimalFormatter(), 0.5), "0.5");
  });
}

TEST(DecimalFormatterThreads, ObjectsThatAskTogetherGetAFormatterEach) {
  inANewProcess([] {
    useLocale("de_DE");
    constexpr int kThreads = 8;
    std::barrier start(kThreads);
    std::vector<std::unique_ptr<DataCnv>> objects(kThreads);
    std::vector<const icu::DecimalFormat*> formats(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] {
        objects[t].reset(new DataCnv(converterFor(37)));
        start.arrive_and_wait();
        formats[t] = objects[t]->getDecimalFormatter();
        for (int i = 0; i < 20; ++i)
          EXPECT_EQ(formatted(*formats[t], 0.25 + i), std::to_string(i) + ".25");
      });
    for (std::thread& thread : threads)
      thread.join();
    EXPECT_EQ(std::set(formats.begin(), formats.end()).size(), std::size_t{kThreads});
  });
}

}  // namespace
}  // namespace oxr::test
