#include <gtest/gtest.h>

#include <random>
#include <string>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"

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
  for (const Row& c :
       rows("12345 2 123.45; 12345 5 0.12345; 12345 7 0.0012345; 12345 -2 1234500; 123.45 -1 1234.5;"
            "123.45 -2 12345; 123.45 -5 12345000; 123.45 2 1.2345; 123.45 3 0.12345; 123.45 4 0.012345;"
            ".5 0 .5; .5 1 0.05; .5 -1 5; 5. 0 5.; 5. 1 0.5; 5. -1 50; '' 3 ''; '' -3 ''; . 1 0.0; . -2 00;"
            // A sign counts as a digit. Bad texts keep their other points, which may come first or last.
            "-12 2 -.12; 1.2.3 1 0.12.3; 1.2.3 -1 12..3; 1.2.3 -6 12.3000; ..5 -1 0..5; 1.. -1 1..;"
            "1.2. -1 12..; .1. -2 1.."))
    EXPECT_EQ(shifted(c[0], std::stoi(c[1])), c[2]) << shown(c);
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
  for (const Row& c :
       rows("12.345 2 12.34; 12.345 3 12.345; 12.345 5 12.34500; 12.345 0 12; 12 2 12.00; 12 0 12;"
            "'' 2 .00; '' 0 ''; .5 0 0; .5 3 0.500; . 2 0.00; 12.9 0 12;"
            "12. 0 12.;"  // no digit too many, so the point stays
            "12.300 -1 12.3; 12.000 -1 12; .000 -1 0; . -1 0; .50 -1 0.5; 1200 -1 1200; '' -1 '';"
            "12.3x0 -1 12.3x; 1.2.00 -1 1.2; 12 -2 12.; '' -2 .; 12.300 -2 12.3; 12.000 -2 12.; .0 -2 0.;"
            "12.30 -3 12.30; .5 -3 .5; 1234.5 -4 1; 1234.5 -5 0; 1234.5 -2147483648 0"))
    EXPECT_EQ(edited(c[0], [&](KelWstring& t) { converter.adjustPrecisionForString(t, std::stoi(c[1])); }), c[2])
        << shown(c);
}

TEST_F(Decimals, ReplacesAPoint) {
  // Found by its second unit, ",:" is replaced together with the unit behind that.
  for (const Row& c : rows("1,5 , . 1.5 1; 1.5 . '' 15 1; 1.5.6 . :: 1::5.6 1; 15 . , 15 -1; '' . , '' -1;"
                           "1.5 '' , 1.5 -1; 12:345 ,: . 12.45 2; 12: ,: . 12. 2")) {
    KelWstring text = k(c[0]);
    EXPECT_EQ(converter.UpdateDecimal(text, k(c[1]).characters(), k(c[2]).characters()), std::stoi(c[4])) << shown(c);
    EXPECT_EQ(toUtf8(text), c[3]);
    EXPECT_EQ(converter.UpdateDecimal(text, nullptr, u"."_k.characters()), -1);
    EXPECT_EQ(converter.UpdateDecimal(text, u"."_k.characters(), nullptr), -1);
  }
}

// A text, and what removeTrailingDecimal, TrimFromDecimal and TrimNonSignificantZeros make of it.
TEST_F(Decimals, CleansText) {
  for (const Row& c : rows("'' '' '' ''; .5 0.5 '' .5; 5. 5 5 5; . 0 '' ''; 007.500 007.500 007 7.5; 100 100 100 100;"
                           "0.0 0.0 0 ''; 000 000 000 ''; 0100. 0100 0100 100; -01.10 -01.10 -01 -01.1")) {
    EXPECT_EQ(edited(c[0], [&](KelWstring& t) { converter.removeTrailingDecimal(t); }), c[1]);
    EXPECT_EQ(edited(c[0], [&](KelWstring& t) { converter.TrimFromDecimal(t); }), c[2]);
    EXPECT_EQ(edited(c[0], [&](KelWstring& t) { converter.TrimNonSignificantZeros(t); }), c[3]);
  }
}

// A letter for each test that a text passes: v validateDecimal, t the same with eSignTrailingSeparate, i
// isDecimalValid, p the same with a point required.
TEST_F(Decimals, TellsDecimalTextFromOther) {
  for (const Row& c :
       rows("'' vti; 5 vti; 1,234.5 vt; -5 v; +5 v; - v; 5- ''; 1.2.3 ''; 1e5 i; 1.5E+3 ip; 5. vtip; . vtip;"
            "--5 ''; 1+2 ''; 1e2e3 ''; 1e2E3 ''; 5e i; e5 i; 1.5e3.2 ''; 15e3.2 ip; 1e+-3 ''; _5 '';"
            "5_ ''; \u0665 i; 5\u0665.1 ip; \U0001D7D8 ''")) {
    const KelWstring text = k(c[0]);
    std::string passed;
    for (const ESign sign : {eSignNone, eSignTrailingSeparate}) {
      const Raised raised = raisedBy([&] { converter.validateDecimal(text, sign); });
      if (raised == Raised())
        passed += sign == eSignNone ? 'v' : 't';
      else
        EXPECT_EQ(raised, conversionFailure(5505, {"CPI Converter Input Data Invalid", "decimal", c[0]}));
    }
    if (converter.isDecimalValid(text, false)) passed += 'i';
    if (converter.isDecimalValid(text, true)) passed += 'p';
    EXPECT_EQ(passed, c[1]) << shown(c);
  }
}

TEST_F(Decimals, ScalesDoublesByTheSystemsPower) {
  // Not interchangeable: a tenth is no double.
  EXPECT_EQ(converter.MultiplyDouble(3.0, -1), 0.30000000000000004);
  EXPECT_EQ(converter.DivideDouble(3.0, 1), 0.3);
  for (const int power : {0, -400})
    EXPECT_EQ(converter.MultiplyDouble(7.25, power) + converter.DivideDouble(7.25, power), 14.5);
}

}  // namespace
}  // namespace oxr::test
