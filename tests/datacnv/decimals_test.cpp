#include <gtest/gtest.h>

#include <random>
#include <string>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/text.hpp"

namespace oxr::test {
namespace {

struct Decimals : ::testing::Test {
  DataCnv converter = converterFor(500);

  // What an edit makes of a text.
  template <class Edit>
  static std::string edited(std::string_view text, Edit edit) {
    KelWstring result = k(text);
    edit(result);
    return toUtf8(result);
  }
  std::string shifted(std::string_view text, int places) {
    return edited(text, [&](KelWstring& t) { converter.adjustDecimalForString(t, places); });
  }
};

TEST_F(Decimals, ShiftsThePoint) {
  const struct {
    const char* text;
    int places;
    const char* result;
  } cases[] = {
      {"12345", 2, "123.45"},
      {"12345", 5, "0.12345"},
      {"12345", 7, "0.0012345"},
      {"12345", -2, "1234500"},
      {"123.45", -1, "1234.5"},
      {"123.45", -2, "12345"},
      {"123.45", -5, "12345000"},
      {"123.45", 2, "1.2345"},
      {"123.45", 3, "0.12345"},
      {"123.45", 4, "0.012345"},
      {".5", 0, ".5"},
      {".5", 1, "0.05"},
      {".5", -1, "5"},
      {"5.", 0, "5."},
      {"5.", 1, "0.5"},
      {"5.", -1, "50"},
      {"", 3, ""},
      {"", -3, ""},
      {".", 1, "0.0"},
      {".", -2, "00"},
      {"-12", 2, "-.12"},  // a sign counts as a digit
      // Bad texts keep their other points, which may come first or last.
      {"1.2.3", 1, "0.12.3"},
      {"1.2.3", -1, "12..3"},
      {"1.2.3", -6, "12.3000"},
      {"..5", -1, "0..5"},
      {"1..", -1, "1.."},
      {"12.", -1, "120"},
      {"1.2.", -1, "12.."},
      {".1.", -2, "1.."},
  };
  for (const auto& row : cases)
    EXPECT_EQ(shifted(row.text, row.places), row.result) << row.text << " by " << row.places;
  EXPECT_EQ(shifted("7", 100), "0." + std::string(99, '0') + "7");
  EXPECT_EQ(shifted("7.5", -100), "75" + std::string(99, '0'));
}

// There and back, with texts on both sides of the inline length.
TEST_F(Decimals, ShiftsKeepEveryDigit) {
  std::mt19937 random(20240229);
  for (int i = 0; i < 5'000; ++i) {
    std::string digits;
    for (unsigned n = 1 + random() % 20; n > 0; --n)
      digits += static_cast<char>('0' + random() % 10);
    const unsigned places = 1 + random() % 100;
    const std::string zeros(places, '0');
    const std::string all = digits.size() > places ? digits : zeros.substr(digits.size() - 1) + digits;
    std::string small = all;
    small.insert(all.size() - places, 1, '.');
    ASSERT_EQ(shifted(digits, static_cast<int>(places)), small);
    ASSERT_EQ(shifted(small, -static_cast<int>(places)), all);
    ASSERT_EQ(shifted(digits, -static_cast<int>(places)), digits + zeros);
  }
}

TEST_F(Decimals, AdjustsPrecision) {
  const struct {
    const char* text;
    int selector;
    const char* result;
  } cases[] = {
      {"12.345", 2, "12.34"},
      {"12.345", 3, "12.345"},
      {"12.345", 5, "12.34500"},
      {"12.345", 0, "12"},
      {"12", 2, "12.00"},
      {"12", 0, "12"},
      {"", 2, ".00"},
      {"", 0, ""},
      {".5", 0, "0"},
      {".5", 1, "0.5"},
      {".5", 3, "0.500"},
      {".", 2, "0.00"},
      {"12.", 0, "12."},  // no digit too many, so the point stays
      {"12.9", 0, "12"},
      {"12.300", -1, "12.3"},
      {"12.000", -1, "12"},
      {".000", -1, "0"},
      {".", -1, "0"},
      {".50", -1, "0.5"},
      {"1200", -1, "1200"},
      {"", -1, ""},
      {"12.3x0", -1, "12.3x"},
      {"1.2.00", -1, "1.2"},
      {"12", -2, "12."},
      {"", -2, "."},
      {"12.300", -2, "12.3"},
      {"12.000", -2, "12."},
      {".0", -2, "0."},
      {"12.345", -3, "12.345"},
      {".5", -3, ".5"},
      {"", -3, ""},
      {"1234.5", -4, "1"},
      {"123.45", -5, "0"},
      {"123.45", -2147483647 - 1, "0"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(edited(row.text, [&](KelWstring& t) { converter.adjustPrecisionForString(t, row.selector); }), row.result)
        << row.text << " to " << row.selector;
}

TEST_F(Decimals, ReplacesAPoint) {
  const struct {
    const char *text, *oldPoint, *newPoint, *result;
    int position;
  } cases[] = {
      {"1,5", ",", ".", "1.5", 1},       {"1.5", ".", "", "15", 1}, {"1.5.6", ".", "::", "1::5.6", 1},
      {"15", ".", ",", "15", -1},        {"", ".", ",", "", -1},    {"1.5", "", ",", "1.5", -1},
      {"12;345", ",;", ".", "12.45", 2},  // found by its second unit, replaced with the unit behind that
      {"12;", ",;", ".", "12.", 2},
  };
  for (const auto& row : cases) {
    int position = 0;
    EXPECT_EQ(edited(row.text,
                     [&](KelWstring& t) {
                       position =
                           converter.UpdateDecimal(t, k(row.oldPoint).characters(), k(row.newPoint).characters());
                     }),
              row.result);
    EXPECT_EQ(position, row.position) << row.text;
  }
  KelWstring text = u"1.5"_k;
  EXPECT_EQ(converter.UpdateDecimal(text, nullptr, u","_k.characters()), -1);
  EXPECT_EQ(converter.UpdateDecimal(text, u"."_k.characters(), nullptr), -1);
  EXPECT_EQ(text, u"1.5"_k);
}

TEST_F(Decimals, CleansText) {
  const auto point = [&](KelWstring& t) { converter.removeTrailingDecimal(t); };
  const auto fraction = [&](KelWstring& t) { converter.TrimFromDecimal(t); };
  const auto zeros = [&](KelWstring& t) { converter.TrimNonSignificantZeros(t); };
  const struct {
    const char *text, *withoutPoint, *whole, *significant;
  } cases[] = {
      {"", "", "", ""},
      {".5", "0.5", "", ".5"},
      {"5.", "5", "5", "5"},
      {".", "0", "", ""},
      {"12", "12", "12", "12"},
      {"007.500", "007.500", "007", "7.5"},
      {"100", "100", "100", "100"},
      {"0.0", "0.0", "0", ""},
      {"000", "000", "000", ""},
      {"0100.", "0100", "0100", "100"},
      {"1.999", "1.999", "1", "1.999"},
      {"-01.10", "-01.10", "-01", "-01.1"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(edited(row.text, point), row.withoutPoint);
    EXPECT_EQ(edited(row.text, fraction), row.whole);
    EXPECT_EQ(edited(row.text, zeros), row.significant);
  }
}

TEST_F(Decimals, TellsDecimalTextFromOther) {
  const struct {
    const char* text;
    bool validated, validatedTrailing;  // validateDecimal; with eSignTrailingSeparate
    bool valid, validWithPoint;         // isDecimalValid
  } cases[] = {
      {"", true, true, true, false},           {"5", true, true, true, false},
      {"1,234.5", true, true, false, false},   {"-5", true, false, false, false},
      {"+5", true, false, false, false},       {"5-", false, false, false, false},
      {"1.2.3", false, false, false, false},   {"1e5", false, false, true, false},
      {"1.5E+3", false, false, true, true},    {"5.", true, true, true, true},
      {".", true, true, true, true},           {"-", true, false, false, false},
      {"--5", false, false, false, false},     {"1+2", false, false, false, false},
      {"1e2e3", false, false, false, false},   {"1e2E3", false, false, false, false},
      {"5e", false, false, true, false},       {"e5", false, false, true, false},
      {"1.5e3.2", false, false, false, false}, {"15e3.2", false, false, true, true},
      {"1e+-3", false, false, false, false},   {" 5", false, false, false, false},
      {"5 ", false, false, false, false},      {"\u0665", false, false, true, false},
      {"5\u0665.1", false, false, true, true}, {"\U0001D7D8", false, false, false, false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    const Raised refusal = conversionFailure(5505, {"CPI Converter Input Data Invalid", "decimal", row.text});
    for (const ESign sign : {eSignNone, eSignLeadingIncluded, eSignTrailingIncluded, eSignLeadingSeparate})
      EXPECT_EQ(raisedBy([&] { converter.validateDecimal(k(row.text), sign); }), row.validated ? Raised() : refusal);
    EXPECT_EQ(raisedBy([&] { converter.validateDecimal(k(row.text), eSignTrailingSeparate); }),
              row.validatedTrailing ? Raised() : refusal);
    EXPECT_EQ(converter.isDecimalValid(k(row.text), false), row.valid);
    EXPECT_EQ(converter.isDecimalValid(k(row.text), true), row.validWithPoint);
  }
}

TEST_F(Decimals, ScalesDoublesByTheSystemsPower) {
  EXPECT_EQ(converter.MultiplyDouble(1.5, 3), 1500.0);
  EXPECT_EQ(converter.DivideDouble(1.5, 3), 0.0015);
  // Not interchangeable: a tenth is no double.
  EXPECT_EQ(converter.MultiplyDouble(3.0, -1), 0.30000000000000004);
  EXPECT_EQ(converter.DivideDouble(3.0, 1), 0.3);
  for (const int power : {0, -400})
    EXPECT_EQ(converter.MultiplyDouble(7.25, power) + converter.DivideDouble(7.25, power), 14.5);
  EXPECT_EQ(converter.DivideDouble(1.0, 400), 0.0);
}

}  // namespace
}  // namespace oxr::test
