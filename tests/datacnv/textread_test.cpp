#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "core/numbertextread.hpp"
#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/newprocess.hpp"
#include "harness/randomcases.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

using ::testing::HasSubstr, ::testing::StartsWith;

// A field and its settings: two places behind a comma, "-" or "+" in front, nothing trimmed, but for what is told. The
// text behind the field is not part of it.
struct Field {
  Field() = default;
  // Settings in a row, from word `first` on: "v" virtual point, "p-1" precision, "d," decimal point, "s4" sign, "mCR"
  // minus text, "+DB" plus text, "t4" trim, "j2" justification, "k2A" pad as a code unit, "b5C" as a byte, "c37" code
  // page, "L" the loose standard.
  Field(const Row& row, std::size_t first)
      : utf8(row[0]), text(k(row[0] + "7")), length(static_cast<int>(text.length()) - 1) {
    for (std::size_t i = first; i < row.size(); ++i) {
      const char key = row[i][0];
      const std::string value = row[i].substr(1);
      const auto number = [&](int base = 10) { return std::stoi(value, nullptr, base); };
      if (key == 'v') hasVirtualPoint = true;
      if (key == 'p') precision = number();
      if (key == 'd') point = k(value);
      if (key == 's') sign = static_cast<ESign>(number());
      if (key == 'm') minus = k(value);
      if (key == '+') plus = k(value);
      if (key == 't') trim = static_cast<ETrimType>(number());
      if (key == 'j') justification = static_cast<EJustification>(number());
      if (key == 'k' || key == 'b') pad = static_cast<unsigned short>(number(16));
      if (key == 'b') padIsUnicode = false;
      if (key == 'c') ccsid = number();
      if (key == 'L') standard = eMessageStandardLooseDecimal;
    }
  }
  DataCnv converter(bool isStrict) const {
    return converterFor(ccsid, eEndianBig, eEndianBig, eFloatIeeeBig, isStrict, standard);
  }
  // Calls a member for integers, or for decimals and doubles.
  auto integer(bool isStrict, auto member) const {
    DataCnv cnv = converter(isStrict);
    return member(cnv, text.characters(), length, sign, minus.characters(), plus.characters(), trim, justification, pad,
                  padIsUnicode);
  }
  auto number(bool isStrict, auto member) const {
    DataCnv cnv = converter(isStrict);
    return member(cnv, text.characters(), length, hasVirtualPoint, precision, point.characters(), sign,
                  minus.characters(), plus.characters(), trim, justification, pad, padIsUnicode);
  }

  std::string utf8;
  KelWstring text;
  int length = 0, precision = 2, ccsid = 37;
  bool hasVirtualPoint = false, padIsUnicode = true;
  KelWstring point = u","_k, minus = u"-"_k, plus = u"+"_k;
  ESign sign = eSignLeadingSeparate;
  ETrimType trim = eTrimNone;
  EJustification justification = eJustifyLeft;
  unsigned short pad = '*';
  EMessageStandard standard = eMessageStandardDefault;
};

std::string shownDouble(double value) {
  char text[40];
  return std::string(text, std::to_chars(text, std::end(text), value, std::chars_format::general, 15).ptr);
}

std::string shownDecimal(const PWFData& value) {
  EXPECT_EQ(value.getDataLogicalType(), DECIMAL);
  return toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
}

// The result as text, or "!" and the number of the failure, which must quote the whole field where it speaks of it.
// Frequent numbers are read in a way of their own, which must not show: with trace on they go the general way.
std::string outcome(const Field& field, const std::function<std::string()>& read) {
  std::string result, general;
  Raised raised = raisedBy([&] { result = read(); }), generally;
  tracedAt(4, [&] { generally = raisedBy([&] { general = read(); }); });
  EXPECT_EQ(raised, generally);
  EXPECT_EQ(result, general);
  if (raised.kind.empty()) return result;
  const int number = raised.number & 0xFFFF;
  if (number >= 5550) {
    std::vector<std::string> inserts = {raised.inserts[0], field.utf8};
    if (number == 5557) inserts.push_back(std::to_string(field.precision));
    EXPECT_EQ(raised, conversionFailure(number, inserts));
  }
  return '!' + std::to_string(number);
}

// The members, to be called by Field::integer and Field::number.
constexpr auto kInt32 = [](DataCnv& cnv, auto... a) { return cnv.StrToInt32(a...); };
constexpr auto kInt64 = [](DataCnv& cnv, auto... a) { return cnv.StrToInt64(a...); };
constexpr auto kDecimal = [](DataCnv& cnv, auto... a) { return cnv.StrToDecimal(a...); };
constexpr auto kDec = [](DataCnv& cnv, auto... a) { return cnv.StrToDec(a...); };
constexpr auto kDouble = [](DataCnv& cnv, auto... a) { return cnv.StrToDbl(a...); };

std::string integerOf(const Field& field, bool isStrict, auto member) {
  return outcome(field, [&] { return std::to_string(field.integer(isStrict, member)); });
}
std::string decimalOf(const Field& field, bool isStrict) {
  std::string text = outcome(field, [&] { return shownDecimal(field.number(isStrict, kDec)); });
  EXPECT_EQ(outcome(field, [&] { return toUtf8(field.number(isStrict, kDecimal)); }), text);
  return text;
}
std::string doubleOf(const Field& field, bool isStrict) {
  return outcome(field, [&] { return shownDouble(field.number(isStrict, kDouble)); });
}

// Field, as 4 bytes, as 8 bytes, settings.
TEST(NumbersFromText, FieldsBecomeIntegers) {
  for (const Row& c :
       rows("12 12 12; -12 -12 -12; +12 12 12; 12- -12 -12 s4; 12CR -12 -12 s4 mCR; CR12 -12 -12 mCR; 12 12 12 s0;"
            "2147483647 2147483647 2147483647; 2147483648 !5506 2147483648; -2147483648 -2147483648 -2147483648;"
            "-2147483649 !5506 -2147483649; 0000000001 1 1; 00000000001 !5506 1;"
            "9223372036854775807 !5506 9223372036854775807; -9223372036854775808 !5506 -9223372036854775808;"
            "9223372036854775808 !5506 !5506; -9223372036854775809 !5506 !5506; 0000000000000000000 !5506 0;"
            "00000000000000000000 !5506 !5506; 00000000000000000000 0 0 t4 j2 k30;"  // unless the trim takes them
            "'' 0 0; - 0 0; - 0 0 s5 t4 k2D; *** 0 0 t4; **12 12 12 t4 j2; -12** -12 -12 t4; _12_ 12 12 t3;"
            "**12 12 12 t4 j2 b5C; **12 12 12 t4 j2 b15C; **12 !5505 !5505 t4 j2 b40;"  // the low byte counts
            "12 -12 -12 m; 12 -12 -12 s4 m; 12 12 12 +;"
            "1.5 !5505 !5505; -12 !5505 !5505 s0; -+12 !5505 !5505; 12_ !5505 !5505; 1e5 !5505 !5505;"
            "p23 -23 !5502 s1; 23s -233 !5502 s2; 123 123 !5502 s1; -23 !5505 !5502 s1;"
            "\u0663 1587 1587; 1\u0663 1597 1597; \u0661000000000 !5506 1585000000000;"  // no digit's value
            "12 !5502 !5502 s5; '' 0 0 s5; 12 !5502 !5502 b20 c1200")) {
    for (const bool isStrict : {false, true}) {  // integers know no strict checking
      EXPECT_EQ(integerOf(Field(c, 3), isStrict, kInt32), c[1]) << shown(c);
      EXPECT_EQ(integerOf(Field(c, 3), isStrict, kInt64), c[2]) << shown(c);
    }
  }
  // What is no digit is told without the sign, what is out of bounds with all of the field.
  const Field bad(Row{"-1x"}, 1), tooLong(Row{"-9999999999999999999*", "t4"}, 1);
  EXPECT_EQ(raisedBy([&] { bad.integer(false, kInt64); }),
            conversionFailure(5505, {"CPI Converter Input Data Invalid", "string", "1x"}));
  std::vector<std::string> inserts = {"CPI Converter Input Data Out Of Bounds", "string", "4-byte integer",
                                      tooLong.utf8};
  EXPECT_EQ(raisedBy([&] { tooLong.integer(false, kInt32); }), conversionFailure(5506, inserts));
  inserts[2] = "8-byte integer";
  EXPECT_EQ(raisedBy([&] { tooLong.integer(false, kInt64); }), conversionFailure(5506, inserts));
}

// Of arguments that are all wrong, the first in the order is told; row by row one more of them is mended.
TEST(NumbersFromText, ArgumentsAreCheckedInOrder) {
  const std::string ofInt32 = " passed into DataCnv::StrToInt32", ofInt64 = " passed into DataCnv::StrToInt64";
  const std::string null = "CPI Internal Error|Null input pointer",
                    noSign = "CPI Internal Error|Null sign string pointer";
  const std::string badSign = "CPI Internal Error|Sign type invalid for context: 2";
  const std::string noPoint = "CPI Internal Error|Null decimal point string pointer";
  const std::string zero = "Tried to convert a zero length string to a";
  const std::string expected[][4] = {
      {null + ofInt32, null + ofInt64, null, null},
      {zero + " integer|integer", zero + "n integer|integer", zero + " decimal|decimal|", zero + " double|float|"},
      {noSign + ofInt32, noSign, noSign, noSign},
      {noSign + ofInt32, noSign, noSign, noSign},
      {"", badSign, noPoint, noPoint},
      {"", badSign, badSign, badSign},
      {"", "", "", "Strict Numeric Checking: Numeric cannot be zero in length.|"}};
  const unsigned short empty[1] = {};
  DataCnv cnv = converterFor(37, eEndianBig, eEndianBig, eFloatIeeeBig, true);
  for (int mended = 0; mended < 7; ++mended) {
    const auto orNull = [&](int step) { return mended > step ? empty : nullptr; };
    const ESign sign = mended > 5 ? eSignLeadingSeparate : eSignTrailingIncluded;
    const auto inserts = [&](auto member, auto... number) {
      const Raised raised = raisedBy([&] {
        member(cnv, orNull(0), mended > 1 ? 0 : -1, number..., sign, orNull(2), orNull(3), eTrimNone, eJustifyLeft, ' ',
               true);
      });
      std::string joined;
      for (std::size_t i = 0; i < raised.inserts.size(); ++i)
        joined += (i == 0 ? "" : "|") + raised.inserts[i];
      EXPECT_EQ(raised.number & 0xFFFF, joined.empty() ? 0 : joined[0] == 'C' ? 5502 : joined[0] == 'T' ? 5505 : 5550);
      return joined;
    };
    EXPECT_EQ(inserts(kInt32), expected[mended][0]);
    EXPECT_EQ(inserts(kInt64), expected[mended][1]);
    EXPECT_EQ(inserts(kDecimal, false, 0, orNull(4)), expected[mended][2]);
    EXPECT_EQ(inserts(kDouble, false, 0, orNull(4)), expected[mended][3]);
  }
}

// Field, in ordinary mode, under strict checking, settings.
TEST(NumbersFromText, FieldsBecomeDecimals) {
  for (const Row& c :
       rows("1,50 1.50 1.50; -1,50 -1.50 -1.50; 001,50 1.50 1.50; 0,50 0.50 0.50; 1,50CR -1.50 -1.50 s4 mCR;"
            "DB1,50 1.50 1.50 mCR +DB; 1,50 -1.50 -1.50 m; -0,00 -0.00 -0.00; 1::50 1.50 1.50 d::; 1:|50 1.50 1.50 d|:;"
            // The places
            "1,5 1.5 !5557; 1,555 1.555 !5557; 15 15 !5557; 1, 1 !5557; 1,x5 !5505 !5505; 1,5 1.5 !5557 p-4;"
            "1,5 1.5 !5557 p0; 1, 1 !5554 p0; 15 15 15 p0; 1,5 1.5 1.5 p-1; 5, 5 !5554 p-1; 5 5 5 p-1; 1,5 1.5 1.5 p-3;"
            "5, 5 !5554 p-3; 5 5 5 p-3; 1,5 1.5 1.5 p-2; 5, 5 5 p-2; 5 !5505 !5553 p-2; ,5 0.5 !5552 p-2;"
            // The point
            "1.50 1.50 !5551; 1.50 1.50 1.50 L; 1.50 1.50 !5557 p0; 1.50 1.50 !5551 p-3; 1.50 1.50 1.50 d.;"
            "1.5,0 !5505 !5551; 1,50 !5505 !5557 d.; 1.50 1.50 !5551 d; 1.50 1.50 1.50 d.,;"
            ",50 0.50 !5552; -,50 -0.50 !5552; x,50 !5505 !5552; , 0 !5552; 1,5,0 !5505 !5557;"
            // A virtual one
            "150 1.50 1.50 v; 5 0.05 0.05 v; -5 -0.05 -0.05 v; 007 0.07 0.07 v; 150 150 150 v p0; 15 1500 1500 v p-2;"
            "1,50 0.0150 !5558 v; 1.50 0.0150 !5558 v; 1E2 0.1E2 !5555 v p3; .5 .5 !5558 v p0;"
            // Exponents
            "1E2 1E2 !5555; 1e2 1e2 !5555 p0; 1E2 !5505 !5553 p-2; 1,50E2 1.50E2 !5557; 1,5E 1.5E !5555; 1E+2 1E+2 "
            "!5555 p-1; 1E2E3 !5505 !5555 p-1;"
            // Nothing there
            "'' '' '' p0; '' '' '' p-1; '' '' '' p-3; '' '' !5557; '' !5505 !5553 p-2; '' '' '' v;"
            "*** 0 !5550 t4 j2 p0; - -0 !5552 p0; + 0 !5552; -** -0 !5552 t4; *** !5505 !5505 p0;"
            // White space, pads, digits of other scripts
            "_7_ 7 !5505 p0; _7 7 7 p0 t1; 0_7 7 !5505 p0; 7**_ !5505 !5505 p0 t4; 7** 7 7 p0 t4; **7 7 7 p0 t4 j2 b5C;"
            "\u0663\u0664 \u0663\u0664 \u0663\u0664 p0; \u0663,\u0664 \u0663.\u0664 !5557; 12 !5502 !5502 b20 c1200;"
            "12 !5502 !5502 s5; 12 !5502 !5502 s-1; 12,34,5 !5505 !5557; 1-2 !5505 !5505 p0")) {
    EXPECT_EQ(decimalOf(Field(c, 3), false), c[1]) << shown(c);
    EXPECT_EQ(decimalOf(Field(c, 3), true), c[2]) << shown(c) << " strict";
  }
}

// Field, in ordinary mode, under strict checking, settings.
TEST(NumbersFromText, FieldsBecomeDoubles) {
  for (
      const Row& c : rows(
          "1,50 1.5 1.5; -1,50 -1.5 -1.5; 0,00 0 0; -0,00 -0 -0; 1,50- -1.5 -1.5 s4; 00123456789,75 123456789.75 "
          "123456789.75; 150 1.5 1.5 v; -5 -0.05 -0.05 v; 1.50 1.5 !5551; 1.50 1.5 1.5 L; 1,5 1.5 !5557; ,50 0.5 !5552;"
          "1,5 1.5 !5556 p-3; 53e51 53.51 !5556 p-3 de; 1,5E3 1500 1500 p-3; 1,5E3 1500 !5555 p-1; 1E2 100 !5555; 1e2 "
          "100 100 p-3; 9e0 9 !5555 v "
          "p0;"
          "1,5E-3 0.0015 0.0015 p-3; 1,5ECR3 0.0015 0.0015 p-3 mCR; 1,5eDB3 1500 1500 p-3 +DB; 1,5E=3 !5505 !5505 p-3;"
          "-1,5E-3 -0.0015 -0.0015 p-3; 1,5E 1.5 1.5 p-3; E5 !5505 !5505 p-3; , 0 !5552; 1,E5 100000 !5554 p-3;"
          "1,0E400 inf inf p-3; 1,0E-400 0 0 p-3; 0E999999999999 inf inf p-3;"  // as ICU has it
          "'' 0 !5550 p0; '' 0 !5550 v; *** 0 !5550 t4 p0; - -0 !5552 p0; -*** -0 !5552 t4 p0; + 0 !5552 p0;"
          "_7 !5505 !5505 p0; 7_ !5505 !5505 p0; _7 7 7 p0 t1; 5 !5505 !5553 p-2; 1,2,3 !5505 !5557; 1x !5505 !5505 p0;"
          "NaN !5505 !5505 p0; 1,234 1.234 !5557; 12 !5502 !5502 b20 c1200; 12 !5502 !5502 s5; '' 0 !5550 s5;"
          "\u0663\u0664 34 34 p0; 123456789012345678901234567890 1.23456789012346e+29 1.23456789012346e+29 p0")) {
    EXPECT_EQ(doubleOf(Field(c, 3), false), c[1]) << shown(c);
    EXPECT_EQ(doubleOf(Field(c, 3), true), c[2]) << shown(c) << " strict";
  }
}

// A field filled with zeros is checked as it was written; only then do they go. Field, decimal, double, settings.
TEST(NumbersFromText, StrictCheckingTrimsDigitsLate) {
  for (const Row& c : rows("000 0 0 p0 j2; 0,00 0.00 0 j2; 1,50 1.5 1.5 j1; 0001,50 1.50 1.5 j2; 1,00 1 1; 100 1 1 p0;"
                           "000 !5557 !5557 j2; 0001 !5557 !5557 j2; 000 0 0 p0 j1; -000 -0 -0 p0 j2; '' '' !5550 p0;"
                           "100 0.01 0.01 v; 000 0.00 0 v j2")) {
    Field field(c, 3);
    field.trim = eTrimPadding;
    field.pad = '0';
    EXPECT_EQ(decimalOf(field, true), c[1]) << shown(c);
    EXPECT_EQ(doubleOf(field, true), c[2]) << shown(c);
  }
}

TEST(NumbersFromText, StrictCheckingTellsWhatIsAmiss) {
  const struct {
    Row field;
    int number;
    const char* text;
  } kCases[] = {{{"***", "t4"}, 5550, "Numeric cannot be zero in length."},
                {{"1.50"}, 5551, "Numeric can only have the specified decimal point."},
                {{",50"}, 5552, "Numeric must have an integer part."},
                {{"5", "p-2"}, 5553, "Explicit Decimal Point numeric must have a decimal point."},
                {{"-5,", "p-1"}, 5554, "Only Explicit Decimal Point numerics may end with a decimal point."},
                {{"1E2"}, 5555, "A non-exponential numeric cannot be given in exponential format."},
                {{"-1,5", "p-3"}, 5556, "An exponential numeric must be given in exponential format."},
                {{"*1,5", "t4", "j2"}, 5557, "Incorrect number of decimal places given."},
                {{"1,5", "v"}, 5558, "Numeric with VDP should not have a decimal point."}};
  for (const auto& c : kCases) {
    const Field field(c.field, 1);
    std::vector<std::string> inserts = {std::string("Strict Numeric Checking: ") + c.text, c.field[0]};
    if (c.number == 5557) inserts.push_back("2");
    EXPECT_EQ(raisedBy([&] { field.number(true, kDouble); }), conversionFailure(c.number, inserts));
  }
}

TEST(NumbersFromText, PlainIntegersAreCheckedByArithmetic) {
  DataCnv cnv = converterFor(37);
  const auto read = [&](const std::string& text) {
    return outcome(Field(), [&] { return std::to_string(cnv.UStringToInt64(k(text))); });
  };
  for (const Row& c : rows("'' 0; + 0; - 0; 7 7; -7 -7; +7 7; 12345 12345; 0000000000000000000000000000000000012 12;"
                           "9223372036854775807 9223372036854775807; -9223372036854775808 -9223372036854775808;"
                           "9223372036854775808 !5506; -9223372036854775809 !5506; 9223372036854775810 !5506;"
                           "00009223372036854775807 9223372036854775807; 12345678901234567890 !5506;"
                           "99999999999999999999x !5506; 999999999999999999x9 !5505; 1234x !5505; 12x4 !5505;"
                           "1234567890123456x !5505; +-1 !5505; 1. !5505; _1 !5505; \u0661 !5505"))
    EXPECT_EQ(read(c[0]), c.back()) << shown(c);
  EXPECT_EQ(raisedBy([&] { cnv.UStringToInt64(u"-1x"_k); }),
            conversionFailure(5505, {"CPI Converter Input Data Invalid", "string", "-1x"}));
  EXPECT_EQ(raisedBy([&] { cnv.UStringToInt64(u"-9999999999999999999"_k); }),
            conversionFailure(
                5506, {"CPI Converter Input Data Out Of Bounds", "string", "8-byte integer", "-9999999999999999999"}));
}

// Text, by PWFStringTodouble, by StrToDbl.
TEST(NumbersFromText, CanonicalTextIsReadAsFarAsItGoes) {
  DataCnv cnv = converterFor(37);
  for (const Row& c :
       rows("1.5 1.5 1.5; -1.5 -1.5 -1.5; +1.5 !5505 1.5; -0 -0 -0; 1.5e3 1500 1500; 1.5E-3 0.0015 0.0015; . 0 !5505;"
            ".5 0.5 0.5; 5. 5 5; .x 0 !5505; '' !5505 0; _1 !5505 1; __ !5505 !5505; 1_ 1 !5505; 1.5x 1.5 !5505;"
            "1E 1 !5505; 1,5 1 !5505; 1.5.2 1.5 !5505; 0x1p4 0 16; 1e400 inf inf; -1e400 -inf -inf; 1e-400 0 0;"
            "4.9E-324 4.94065645841247e-324 4.94065645841247e-324; infinity !5505 inf; -inf !5505 -inf; NaN nan nan;"
            "\u0663 3 !5505; 0.1000000000000000055511151231257827021181583404541015625000000000000000001 0.1 0.1")) {
    const KelWstring text = k(c[0]);
    const int length = static_cast<int>(text.length());
    EXPECT_EQ(outcome(Field(), [&] { return shownDouble(cnv.PWFStringTodouble(text)); }), c[1]) << shown(c);
    EXPECT_EQ(outcome(Field(), [&] { return shownDouble(cnv.StrToDbl(text.characters(), length)); }), c[2]) << shown(c);
  }
  const auto invalid = [](const char* text) {
    return conversionFailure(5505, {"CPI Converter Input Data Invalid", "string", text});
  };
  const std::string longText(200, 'x');  // beyond the characters on the stack
  EXPECT_EQ(raisedBy([&] { cnv.PWFStringTodouble(u"x"_k); }), invalid("x"));
  EXPECT_EQ(raisedBy([&] { cnv.StrToDbl(k(longText).characters(), 200); }), invalid(longText.c_str()));
  EXPECT_EQ(raisedBy([&] { cnv.StrToDbl(u"1\0002"_k.characters(), 3); }).number & 0xFFFF, 5505);
  EXPECT_EQ(cnv.StrToDbl(k(std::string(200, ' ') + "1.5").characters(), 203), 1.5);
  EXPECT_EQ(raisedBy([&] { cnv.StrToDbl(nullptr, -1); }),
            conversionFailure(5505, {"Tried to convert a zero length string to a double", "float"}));
  EXPECT_EQ(raisedBy([&] { cnv.StrToDbl(nullptr, 1); }),
            conversionFailure(5502, {"CPI Internal Error", "Error converting from unicode", "1"}));
  EXPECT_EQ(cnv.StrToDbl(nullptr, 0), 0.0);
}

TEST(NumbersFromText, BytesBecomeDecimals) {
  DataCnv cnv = converterFor(37);
  // Bytes, scale, value: "1234", "-1234", "1,5", "1x".
  for (const Row& c : rows("F1F2F3F4 2 12.34; 60F1F2F3F4 2 -12.34; F1 -2 100; F16BF5 0 1,5; F1A7 0 !5505; 60F5 1 -.5;"
                           "F5F0F0F1F2F3F4F5F6F7F8F9F0F1F2F3F4F5 1 50012345678901234.5; '' 0 !5502")) {
    const std::string bytes = fromHex(c[0]);
    int length = static_cast<int>(bytes.size());
    const auto read = [&] {
      return shownDecimal(cnv.StrToDec(reinterpret_cast<const unsigned char*>(bytes.data()), length, std::stoi(c[1])));
    };
    EXPECT_EQ(outcome(Field(), read), c[2]) << shown(c);
  }
  int length = -1;
  const unsigned char byte = 0xF1;
  EXPECT_EQ(raisedBy([&] { cnv.StrToDec(static_cast<const unsigned char*>(nullptr), length, 0); }),
            conversionFailure(5502, {"CPI Internal Error", "Null input pointer"}));
  EXPECT_EQ(raisedBy([&] { cnv.StrToDec(&byte, length, 0); }),
            conversionFailure(5505, {"Tried to convert a zero length string to a decimal", "decimal", ""}));
  // Canonical text, zeros behind it its padding.
  for (const Row& c : rows("-1.50 4 -1.5; 7.500 0 7.500; +07 0 7; 100 4 1; 000 4 0; _7 1 7; 1,5 0 !5505; 7- 0 !5505")) {
    const KelWstring text = k(c[0]);
    int units = static_cast<int>(text.length());
    const auto read = [&] {
      return shownDecimal(cnv.StrToDec(text.characters(), units, static_cast<ETrimType>(std::stoi(c[1]))));
    };
    EXPECT_EQ(outcome(Field(), read), c[2]) << shown(c);
  }
}

TEST(NumbersFromText, TraceUnderTheirNames) {
  DataCnv cnv = converterFor(37);
  const KelWstring one = u"1"_k;
  const unsigned char byte = 0xF1;
  int length = 1;
  EXPECT_THAT(tracedAt(4, [&] { cnv.PWFStringTodouble(one); }), StartsWith("> DataCnv::UStringTodouble\n"));
  EXPECT_THAT(tracedAt(4, [&] { cnv.UStringToInt64(one); }), StartsWith("> DataCnv::UStringToInt64\n"));
  EXPECT_THAT(tracedAt(4, [&] { cnv.StrToDbl(one.characters(), 1); }), StartsWith("> DataCnv::StrToDbl\n"));
  EXPECT_THAT(tracedAt(4, [&] { cnv.StrToDec(&byte, length, 0); }), StartsWith("> DataCnv::StrToDec\n"));
  EXPECT_THAT(tracedAt(4, [&] { cnv.StrToDec(one.characters(), length, eTrimNone); }),
              StartsWith("> DataCnv::StrToDec\n> DataCnv::StrToDec\n> DataCnv::StrToDecimal\n> DataCnv::TrimData\n"));
  EXPECT_THAT(tracedAt(4, [&] { Field(Row{"1"}, 1).integer(false, kInt32); }), HasSubstr("\n> DataCnv::StrToInt32\n"));
  EXPECT_THAT(tracedAt(4, [&] { Field(Row{"1"}, 1).integer(false, kInt64); }), HasSubstr("\n> DataCnv::StrToInt64\n"));
  EXPECT_THAT(tracedAt(4, [&] { Field(Row{"1,50"}, 1).number(false, kDouble); }),
              HasSubstr("> DataCnv::UpdateDecimal\n< DataCnv::UpdateDecimal\n> DataCnv::CheckExponentialSign\n"));
  EXPECT_THAT(tracedAt(3, [&] { raisedBy([&] { cnv.UStringToInt64(u"x"_k); }); }),
              HasSubstr("|CP_CONV_INPUT_DATA_INVALID|CPI Converter Input Data Invalid|string|x"));
}

// A text that is hard to read as a double: of any bits, between two doubles, at the ends of the range, an integer near
// a power of two, digits and a point anywhere; now and then with a unit that doesn't belong there.
std::string hardText(std::mt19937_64& random) {
  const auto below = [&](std::uint64_t limit) { return static_cast<int>(random() % limit); };
  const auto digits = [&](int count) {
    std::string text;
    while (count-- > 0)
      text += "0123456789009900"[below(16)];
    return text;
  };
  const auto printed = [](long double value, std::chars_format format, int places) {
    char text[1200];
    return std::string(text, std::to_chars(text, std::end(text), value, format, places).ptr);
  };
  double value = std::bit_cast<double>(random() >> (below(4) == 0 ? 12 : 0));  // subnormal or any
  if (!std::isfinite(value)) value = std::ldexp(1, below(1024));
  const double some = std::ldexp(static_cast<double>(1 + (random() >> 12)), below(80) - 52);
  std::string text;
  switch (below(8)) {
    case 0:
      text = printed(value, std::chars_format::scientific, 14 + below(5));
      break;
    case 1:
      text =
          printed((static_cast<long double>(some) + std::nextafter(some, 0)) / 2, std::chars_format::fixed, below(40));
      break;
    case 2:
      text = std::to_string((std::uint64_t{1} << below(64)) + random() % 5 - 2);
      break;
    case 3:
      text = digits(1 + below(17)) + "e" + std::to_string(below(700) - 350);
      break;
    case 4:
      text = "-" + digits(below(20)) + "." + digits(below(20));
      break;
    default:
      text = digits(1 + below(12)) + "." + digits(below(8));
  }
  constexpr std::string_view kUnits = "0123456789+-.,eE x";
  if (below(8) == 0) text[random() % text.size()] = kUnits[random() % kUnits.size()];
  if (below(8) == 0) text.insert(random() % (text.size() + 1), 1, kUnits[random() % kUnits.size()]);
  return text;
}

// Texts go to std::from_chars first, which must not show: with trace on all of them go to ICU and strtod.
TEST(NumbersFromText, QuickAndGeneralWayAgree) {
  const long count = randomCases(20'000);
  constexpr int kBatch = 5'000;
  std::mt19937_64 random(20261121);
  DataCnv cnv = converterFor(37);
  cnv.getDecimalFormatter();
  const auto read = [](auto call) {
    std::uint64_t bits = 0;
    const Raised raised = raisedBy([&] { bits = std::bit_cast<std::uint64_t>(call()); });
    return raised.kind.empty() ? bits : std::uint64_t{0xFFF8FFFF00000000} + static_cast<unsigned>(raised.number);
  };
  int quick = 0;
  for (long done = 0; done < count; done += kBatch) {
    std::vector<KelWstring> batch;
    batch.reserve(kBatch);
    std::vector<std::uint64_t> general;
    for (int i = 0; i < kBatch; ++i)
      batch.push_back(k(hardText(random)));
    const auto readAll = [&](auto use) {
      for (const KelWstring& text : batch) {
        use(text, read([&] { return cnv.PWFStringTodouble(text); }));
        use(text, read([&] { return cnv.StrToDbl(text.characters(), static_cast<int>(text.length())); }));
      }
    };
    tracedAt(4, [&] { readAll([&](const KelWstring&, std::uint64_t bits) { general.push_back(bits); }); });
    std::size_t next = 0;
    readAll([&](const KelWstring& text, std::uint64_t bits) {
      ASSERT_EQ(bits, general[next++]) << toUtf8(text) << (next % 2 ? " by ICU" : " by strtod");
      quick += core::readPlainDouble(text.view()).has_value();
    });
  }
  EXPECT_GT(quick, count);  // of twice as many readings
}

// Neither ICU's default locale nor the process's own may change a reading.
void expectTheSameNumbers(bool hasAsciiExponent) {
  for (const bool isStrict : {false, true}) {
    EXPECT_EQ(decimalOf(Field(Row{"-1,50"}, 1), isStrict), "-1.50");
    EXPECT_EQ(doubleOf(Field(Row{"-1234567,75"}, 1), isStrict), "-1234567.75");
    EXPECT_EQ(doubleOf(Field(Row{"-1,5e-3", "p-3"}, 1), isStrict), hasAsciiExponent ? "-0.0015" : "-1.5");
  }
  DataCnv cnv = converterFor(37);
  EXPECT_EQ(shownDouble(cnv.PWFStringTodouble(u"-1.5"_k)), "-1.5");
  for (const Row& c : rows("-1.5 -1.5; _1.5 1.5; 0x1.8p0 1.5; 1,5 !5505")) {
    const auto read = [&] { return shownDouble(cnv.StrToDbl(k(c[0]).characters(), static_cast<int>(c[0].size()))); };
    EXPECT_EQ(outcome(Field(), read), c[1]);
  }
}

TEST(NumbersFromText, LocalesChangeNothing) {
  for (const char* const name : {"de_DE", "fr_FR", "sv_SE", "ar_EG", "de_CH"})
    inANewProcess([&] {
      useLocale(name);
      // The exponent of Swedish and Arabic is a text of its own.
      expectTheSameNumbers(std::string_view(name) != "sv_SE" && std::string_view(name) != "ar_EG");
    });
}

TEST(NumbersFromText, TheProcessLocaleChangesNothing) {
  const auto useComma = [] {
    for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8"})
      if (std::setlocale(LC_ALL, name) != nullptr) return true;
    return false;
  };
  const bool hasComma = useComma();
  std::setlocale(LC_ALL, "C");
  if (!hasComma) GTEST_SKIP() << "no locale with a decimal comma is installed";
  for (const char* const icuName : {"de_DE", "en_US"})  // as the process's, and another
    inANewProcess([&] {
      useLocale(icuName);
      ASSERT_TRUE(useComma() && std::string_view(std::localeconv()->decimal_point) == ",");
      expectTheSameNumbers(true);
    });
}

}  // namespace
}  // namespace oxr::test
