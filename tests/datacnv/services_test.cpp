#include <gtest/gtest.h>
#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/locid.h>

#include <barrier>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/text.hpp"
#include "support/tracing.hpp"

namespace oxr::test {
namespace {

using Symbols = icu::DecimalFormatSymbols;

const unsigned char* bytesOf(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

TEST(ConverterServices, TellEbcdicByItsZero) {
  for (const int ccsid : {37, 273, 420, 500, 875, 930, 939, 1047, 1140, 1388, 1399})
    EXPECT_TRUE(converterFor(ccsid).IsCcsidEBCDIC()) << ccsid;
  for (const int ccsid : {437, 819, 850, 943, 1208, 1252, 33722, 5488})
    EXPECT_FALSE(converterFor(ccsid).IsCcsidEBCDIC()) << ccsid;
  for (const EEndian order : {eEndianLittle, eEndianBig, eEndianUnset})
    for (const int ccsid : {1200, 1204, 13488})
      EXPECT_FALSE(converterFor(ccsid, order).IsCcsidEBCDIC()) << ccsid;
}

TEST(ConverterServices, OneConverterServesTheObject) {
  DataCnv cnv = converterFor(1200, eEndianLittle, eEndianBig);  // text goes by the order of the integers
  CPUnicodeConverter* const page = cnv.getConverter();
  EXPECT_NE(page, nullptr);
  EXPECT_FALSE(cnv.IsCcsidEBCDIC());
  KelWstring text;
  EXPECT_EQ(cnv.toUnicodeString(text, bytesOf("A\0B"), 4), U_ZERO_ERROR);
  EXPECT_EQ(toUtf8(text), "AB");
  EXPECT_EQ(cnv.getConverter(), page);

  DataCnv missing = converterFor(99999);  // found out on first use only, and every time
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(raisedBy([&] { missing.IsCcsidEBCDIC(); }),
              recoverableFailure(2132, {"Invalid codepage (or missing table)", "99999", "ibm-99999"}));
}

TEST(ConverterServices, ReadTextWithTheStatusForTheCaller) {
  KelWstring text = u"old"_k;
  DataCnv utf8 = converterFor(1208);
  EXPECT_EQ(utf8.toUnicodeString(text, bytesOf("A\xE2"), 2), U_TRUNCATED_CHAR_FOUND);
  EXPECT_EQ(toUtf8(text), "A");
  const struct { int ccsid, size; } tooShort[] = {{37, 0}, {37, -1}, {1208, 0}, {1200, 1}, {1232, 3}};
  for (const auto& row : tooShort) {
    DataCnv cnv = converterFor(row.ccsid);
    const Raised expected = conversionFailure(
        5502, {"CPI Internal Error", "size < MinBytesPerChar for codepage: " + std::to_string(row.ccsid)});
    EXPECT_EQ(raisedBy([&] { cnv.toUnicodeString(text, bytesOf("AAA"), row.size); }), expected);
    EXPECT_EQ(raisedBy([&] { cnv.RawCharsToPWFData("AAA", row.size); }), expected);
  }
}

TEST(ConverterServices, WriteTextIntoTheRoomThereIs) {
  unsigned char bytes[4] = {};
  DataCnv cnv = converterFor(37);
  int size = 4;
  EXPECT_EQ(cnv.fromUnicodeString(u"A0"_k, bytes, size), U_ZERO_ERROR);
  EXPECT_EQ(size, 2);
  EXPECT_TRUE(bytes[0] == 0xC1 && bytes[1] == 0xF0);
  size = 1;
  EXPECT_EQ(cnv.fromUnicodeString(u"A0"_k, bytes, size), U_BUFFER_OVERFLOW_ERROR);
  EXPECT_EQ(size, 1);
  size = 0;
  EXPECT_EQ(cnv.fromUnicodeString(u"A"_k, bytes, size), U_ILLEGAL_ARGUMENT_ERROR);
}

TEST(ConverterServices, RawCharactersBecomeAString) {
  const struct {
    int ccsid;
    const char* bytes;
    const char* text;
  } cases[] = {
      {37, "\xC1\xC2\x40", "AB "},
      {37, "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9\xF0\xF1\xF2\xF3\xF4\xF5\xF6", "01234567890123456"},  // not inline
      {1208, "\xE2\x82\xAC\xFF", "\u20AC\uFFFD"},
      {1208, "\xE2", ""},  // whatever the status: a string, not a null
  };
  for (const auto& row : cases) {
    const PWFData value =
        converterFor(row.ccsid).RawCharsToPWFData(row.bytes, static_cast<int>(std::strlen(row.bytes)));
    EXPECT_EQ(value.getDataLogicalType(), STRING);
    EXPECT_FALSE(value.isNull());
    EXPECT_EQ(toUtf8(value.getPWFStringValue()), row.text);
  }
  DataCnv cnv = converterFor(37);
  cnv.getConverter();
  const std::string trace = tracedAt(4, [&] { cnv.RawCharsToPWFData("\xC1", 1); });
  const std::string name = "DataCnv::RawCharsToPWFData( const char* source, PWFInt32 size )\n";
  EXPECT_EQ(trace.substr(0, name.size() + 2), "> " + name);
  EXPECT_EQ(trace.substr(trace.size() - name.size() - 2), "< " + name);
}

// The failed expectations of this test, which gtest keeps to itself in a process of a death test.
int reportFailures() {
  const ::testing::TestResult& result = *::testing::UnitTest::GetInstance()->current_test_info()->result();
  for (int i = 0; i < result.total_part_count(); ++i)
    if (result.GetTestPartResult(i).failed()) std::fputs(result.GetTestPartResult(i).message(), stderr);
  return result.Failed() ? 1 : 0;
}

// One formatter serves the process, so what happens to the first call is looked at in a process of its own: `body` runs
// in one, which fails where an expectation in it does.
template <class F>
void inANewProcess(F body) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        body();
        std::exit(reportFailures());
      },
      ::testing::ExitedWithCode(0), "");
}

void useLocale(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale::setDefault(icu::Locale(name), status);
}

std::string symbol(const icu::DecimalFormat& format, Symbols::ENumberFormatSymbol which) {
  std::string text;
  return format.getDecimalFormatSymbols()->getConstSymbol(which).toUTF8String(text);
}

std::string formatted(const icu::DecimalFormat& format, double value) {
  icu::UnicodeString text;
  std::string utf8;
  return format.format(value, text).toUTF8String(utf8);
}

TEST(DecimalFormatter, WritesAPointWhateverTheLocale) {
  inANewProcess([] {
    useLocale("de_DE");
    DataCnv cnv = converterFor(37);
    const icu::DecimalFormat* const format = cnv.getDecimalFormatter();
    EXPECT_EQ(cnv.getDecimalFormatter(), format);
    EXPECT_EQ(symbol(*format, Symbols::kDecimalSeparatorSymbol), ".");
    EXPECT_EQ(symbol(*format, Symbols::kGroupingSeparatorSymbol), ",");
    EXPECT_EQ(formatted(*format, 1234.5), "1234.5");
    EXPECT_EQ(formatted(*format, -7), "-7.");
    EXPECT_EQ(format->getRoundingIncrement(), 0.0);
    EXPECT_TRUE(format->isDecimalSeparatorAlwaysShown());
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
