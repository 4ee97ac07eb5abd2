#include <gtest/gtest.h>
#include <unicode/decimfmt.h>
#include <unicode/locid.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/randomcases.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "host/process.hpp"

namespace oxr::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A field: leading sign, "-" and "+", a point, as many places as the value has, no padding, justified to the right, but
// for what the words of a row say. "s" sign, "m" minus text, "+" plus text, "." decimal point, "v" virtual decimal
// point, "p" precision, "j" justification, "f" pad as a character, "F" as a byte in hexadecimal, "S" show plus.
struct Field {
  int length;
  ESign sign = eSignLeadingSeparate;
  KelWstring minus = u"-"_k, plus = u"+"_k, point = u"."_k;
  bool isVirtual = false, pads = false, padIsUnicode = true, showPlus = false;
  int precision = -1;
  EJustification justification = eJustifyRight;
  unsigned short pad = ' ';
};

Field fieldOf(const Row& row, std::size_t first) {
  Field f{.length = std::stoi(row[first])};
  for (std::size_t i = first + 1; i < row.size(); ++i) {
    const char key = row[i][0];
    const std::string value = row[i].substr(1);
    if (key == 's') f.sign = static_cast<ESign>(std::stoi(value));
    if (key == 'm') f.minus = k(value);
    if (key == '+') f.plus = k(value);
    if (key == '.') f.point = k(value);
    if (key == 'p') f.precision = std::stoi(value);
    if (key == 'j') f.justification = static_cast<EJustification>(std::stoi(value));
    if (key == 'f') f.pad = k(value)[0];
    if (key == 'F') f.pad = static_cast<unsigned short>(std::stoi(value, nullptr, 16));
    f.isVirtual |= key == 'v';
    f.pads |= key == 'f' || key == 'F';
    f.padIsUnicode &= key != 'F';
    f.showPlus |= key == 'S';
  }
  return f;
}

// Writes `value` ("i-12", "l-12" for 8 bytes, "d1.5", "D1.50") in EBCDIC's company, into a string or a buffer.
template <class Out>
void write(const std::string& value, Out& out, Field& f) {
  DataCnv cnv = converterFor(500);
  const std::string number = value.substr(1);
  const auto call = [&](auto... look) {
    if constexpr (!std::is_same_v<Out, KelWstring>)
      if (value[0] == 'i') return cnv.StrFromInt32(std::stoi(number), out, f.length, look...);
    if (value[0] == 'i' || value[0] == 'l') return cnv.StrFromInt64(std::stol(number), out, f.length, look...);
    if (value[0] == 'd')
      return cnv.StrFromDbl(std::strtod(number.c_str(), nullptr), out, f.length, f.isVirtual, f.precision,
                            f.point.characters(), look...);
    cnv.StrFromDec(k(number).characters(), out, f.length, f.isVirtual, f.precision, f.point.characters(), look...,
                   f.showPlus);
  };
  call(f.sign, f.minus.characters(), f.plus.characters(), f.pads, f.justification, f.pad, f.padIsUnicode);
}

// Value, text, field. The buffer forms must do the same, and touch nothing behind the text.
void expectTexts(std::string_view table) {
  for (const Row& c : rows(table)) {
    Field field = fieldOf(c, 2);
    Field again = field;
    KelWstring text = u"before"_k;
    std::vector<unsigned short> buffer(40, 0xFFFF);
    unsigned short* const units = buffer.data();
    EXPECT_EQ(raisedBy([&] { write(c[0], text, field), write(c[0], units, again); }), Raised()) << shown(c);
    EXPECT_EQ(toUtf8(text), c[1]) << shown(c);
    EXPECT_EQ(field.length, static_cast<int>(text.length())) << shown(c);
    EXPECT_EQ(KelWstring(units, text.length() + 1), text + static_cast<unsigned short>(0xFFFF)) << shown(c);
    EXPECT_EQ(again.length, field.length) << shown(c);
  }
}

TEST(Format, WritesIntegers) {
  expectTexts(
      "i-12 -00012 6 f0; i-12 -12000 6 f0 j1; i-12 ___-12 6 f_; i-12 -12___ 6 f_ j1; i-12 -00012 6 f0 j0;"
      "i-12 00012- 6 f0 s4; i-12 0012CR 6 f0 s4 mCR; i-12 CR12 6 mCR; i-12 __12CR 6 f_ s4 mCR; i12 __12 4 f_ s4 mCR;"
      "i-12 -00012 6 FF0; i-12 ***-12 6 F5C; i-12 -\u0663\u066312 5 f\u0663;"  // any digit goes behind the sign
      "i-12 -12 3 f0; i0 0 1 s0; i12 0012 4 f0 s0; i12 12 9; i-12 -12 9 m; i-12 -12 9 s5;"
      "i12 2 5 +1;"  // a plus text comes off the digits
      "i-2147483648 -2147483648 11; l-9223372036854775808 -9223372036854775808 20; l9223372036854775807 "
      "9223372036854775807 19; l1000000000000000000 1000000000000000000 19; l-90 -90 3");
}

TEST(Format, WritesDoubles) {
  expectTexts(
      "d1.25 1.2 9 p1; d12.345 1234 9 v p2; d12.5 12.5 9 v p0; d0.5 .5 9 v p0; d1500 1.5E+3 9 p-3; d1500 1500 9;"
      "d1500 1500. 9 p-2; d0 0 9; d0.9999999 0.99 9 p2; d-0.025 -2.5E-2 9 p-3; d-1.5 1,5CR 9 s4 mCR .,;"
      "d-12.5 -00012,5 8 f0 .,; d-1000 -1.E+3 9 p-3; d1e22 10000000000000000000000 30; d-1.5 -1.50 9 p2; d0.25 0 9 p0;"
      "d-1.25 -12500 9 v p4; d125 12 9 v p-1; d-5e-5 CR5.E-5 9 p-3 mCR; d1.5 1::5 9 .::; d1.5 15 9 .;"
      // Negative zero isn't below zero: the canonical sign stays, also where there should be none.
      "d-0.0 -0 9 mCR; d-0.0 -0 9 s0; d-0.0 -0000 6 f0 mCR; d-0.0 -0.E+0 9 p-3;"
      "dnan NaN 9; dinf INF 9; d-inf CRINF 9 mCR; dnan NaN 9 p-3; dinf INF.00 9 p2 s0");
}

TEST(Format, WritesDecimals) {
  expectTexts(
      "D5 +5 9 S; D5 5+ 9 S s4; D-5 -5 9 S; D5 +005 4 S f0; D5 __+5 4 S f_; D5 005 4 S f0 s0; D5 PL005 5 S f0 +PL;"
      "D007.500 7.5 9; D007.500 7.50 9 p2; D-0.999 -0.9 9 p1; D0.00 0 9; D '' 9; D-12.345 -1234 9 v p2; D12.50 12.5 9 "
      "v "
      "p0;"
      "D1,234.5 1,234.5 9; D+5 5 9; D+5 +5 9 +PL; D.5 .5 9 p-3; D12 12 9 p-3; D12 12. 9 p-2; D-.5 0,5- 9 s4 .,;"
      "D12345678901234567890.5 12345678901234567890.5 30; D-0 CR0 9 mCR");
}

// Failure, inserts behind its text, value, field.
TEST(Format, RefusesWhatAFieldCannotShow) {
  for (const Row& c :
       rows("5506 integer string_(2_characters) -12 i-12 2; 5506 integer string_(4_characters) -12 l-12 4 mCRR f0;"
            "5506 4-byte_integer string_(no_sign) -12 i-12 9 s0; 5506 8-byte_integer string_(no_sign) -1 l-1 1 s0;"
            "5506 double string_(3_characters) 1.25 d1.25 3; 5506 double string_(no_sign) -1.5 d-1.5 1 s0;"
            "5506 double string_(no_sign) -1.5E+0 d-1.5 9 s0 p-3; 5506 decimal string_(no_sign) -0 D-0 9 s0;"
            "5507 decimal string 3 -1.25 D-1.25 3; 5507 decimal string 1 +5 D+5 1 S; 5505 decimal 1e5 D1e5 9;"
            "5505 decimal 5- D5- 9 s4")) {
    const std::size_t inserts = c[0] == "5505" ? 2 : c[0] == "5506" ? 3 : 4;
    Row expected(c.begin(), c.begin() + 1 + static_cast<std::ptrdiff_t>(inserts));
    expected[0] = inserts == 2   ? "CPI Converter Input Data Invalid"
                  : inserts == 3 ? "CPI Converter Input Data Out Of Bounds"
                                 : "CPI InputData Too Long";
    Field field = fieldOf(c, inserts + 2);
    const int length = field.length;
    std::vector<unsigned short> buffer(40);
    unsigned short* const units = buffer.data();
    EXPECT_EQ(raisedBy([&] { write(c[inserts + 1], units, field); }), conversionFailure(std::stoi(c[0]), expected))
        << shown(c);
    EXPECT_EQ(field.length, length) << shown(c);
  }
}

TEST(Format, ChecksArgumentsInOrder) {
  DataCnv cnv = converterFor(500);
  KelWstring text;
  const KelWstring bad = u"x"_k;
  const unsigned short *const x = bad.characters(), *const none = nullptr;
  unsigned short buffer[9], *const nowhere = nullptr;
  unsigned char byte, *const noBytes = nullptr;
  int length;
  using Look = std::tuple<ESign, const unsigned short*, const unsigned short*>;
  const auto expect = [&](const char* what, auto call, const Look& look = {eSignNone, nullptr, nullptr}) {
    const auto withLook = [&](auto... signs) {
      call(signs..., false, eJustifyLeft, static_cast<unsigned short>(' '), true);
    };
    EXPECT_EQ(raisedBy([&] { std::apply(withLook, look); }), conversionFailure(5502, {"CPI Internal Error", what}));
  };
  const auto expectOrder = [&](auto call) {
    length = 0;
    expect("Invalid output buffer length: 0", call);
    length = 1;
    expect("Null sign string pointer", call, {eSignLeadingIncluded, none, x});
    expect("Null sign string pointer", call, {eSignLeadingIncluded, x, none});
    expect("Sign type invalid for context: 1", call, {eSignLeadingIncluded, x, x});
    expect("Sign type invalid for context: 2", call, {eSignTrailingIncluded, x, x});
  };
  expectOrder([&](auto... look) { cnv.StrFromInt64(-1, text, length, look...); });
  expectOrder([&](auto... look) { cnv.StrFromInt32(-1, buffer, length, look...); });
  expectOrder([&](auto... look) { cnv.StrFromDbl(-1, text, length, false, 0, none, look...); });
  expectOrder([&](auto... look) { cnv.StrFromDec(x, text, length, false, 0, none, look..., false); });
  length = 0;
  constexpr const char* kNullBuffer = "Null output buffer pointer";
  expect(kNullBuffer, [&](auto... look) { cnv.StrFromInt64(1, nowhere, length, look...); });
  expect(kNullBuffer, [&](auto... look) { cnv.StrFromInt32(1, nowhere, length, look...); });
  expect(kNullBuffer, [&](auto... look) { cnv.StrFromDbl(1, nowhere, length, false, 0, none, look...); });
  expect(kNullBuffer, [&](auto... look) { cnv.StrFromDec(none, nowhere, length, false, 0, none, look..., false); });
  expect(kNullBuffer, [&](auto...) { cnv.StrFromDbl(1, nowhere, length); });
  expect(kNullBuffer, [&](auto...) { cnv.StrFromDec(x, noBytes, length, 0); });
  expect("Null input pointer", [&](auto...) { cnv.StrFromDec(none, noBytes, length, 0); });
  expect("Null input pointer",
         [&](auto... look) { cnv.StrFromDec(none, text, length, false, 0, none, look..., false); });
  expect("Null input pointer", [&](auto...) { cnv.StrFromDec(none); });
  expect("Invalid output buffer size: 0", [&](auto...) { cnv.StrFromDec(x, &byte, length, 0); });
}

// Code page, room, scale, decimal, bytes or the inserts of the failure.
TEST(Format, WritesDecimalsInTheCodePage) {
  for (const Row& c : rows("500 9 0 -1.5 60F14BF5; 500 9 1 -1.5 60F1F5; 500 9 3 1.5 F1F5F0F0; 1200 4 0 12 00310032;"
                           "500 3 0 1234 5507 decimal string 3_bytes 1234; 1200 3 1 1.2 5507 decimal string 3_bytes 12;"
                           "500 9 0 1e5 5505 decimal 1e5")) {
    unsigned char bytes[9];
    int size = std::stoi(c[1]);
    const Raised raised =
        raisedBy([&] { converterFor(std::stoi(c[0])).StrFromDec(k(c[3]).characters(), bytes, size, std::stoi(c[2])); });
    if (c.size() == 5) {
      EXPECT_EQ(raised, Raised()) << shown(c);
      EXPECT_EQ(std::string(bytes, bytes + size), fromHex(c[4])) << shown(c);
    } else {
      EXPECT_EQ(raised.number & 0xFFFF, std::stoi(c[4])) << shown(c);
      EXPECT_EQ(Row(raised.inserts.begin() + 1, raised.inserts.end()), Row(c.begin() + 5, c.end()));
    }
  }
}

TEST(Format, WritesPlainForms) {
  DataCnv cnv = converterFor(500);
  const auto shownAs = [](const PWFData& value) {
    EXPECT_EQ(value.getDataLogicalType(), STRING);
    return toUtf8(value.getPWFStringValue());
  };
  EXPECT_EQ(shownAs(cnv.StrFromInt64(std::numeric_limits<long>::min())), "-9223372036854775808");
  EXPECT_EQ(shownAs(cnv.StrFromDbl(-1500.0)), "-1.5E+3");
  for (const Row& c : rows("-007.50 -7.5; +.5 0.5; '' ''; 000 0; 12345678901234567890.10 12345678901234567890.1"))
    EXPECT_EQ(shownAs(cnv.StrFromDec(k(c[0]).characters())), c[1]);
  unsigned short buffer[8];
  int length = 8;  // seven units and the terminator
  cnv.StrFromDbl(-1500.0, buffer, length);
  EXPECT_EQ(toUtf8(UnitView(buffer)), "-1.5E+3");
  EXPECT_EQ(length, 7);
  EXPECT_EQ(
      raisedBy([&] { cnv.StrFromDbl(-1500.0, buffer, length); }),
      conversionFailure(5506, {"CPI Converter Input Data Out Of Bounds", "double", "string (7 characters)", "-1500"}));
}

// The formatter set up for both notations, as the way round the short one.
class Formatter {
 public:
  Formatter(DataCnv& cnv, bool exponential) : format_(cnv.getDecimalFormatter()->clone()) {
    format_->setMinimumIntegerDigits(1);
    format_->setScientificNotation(exponential);
    format_->setMaximumIntegerDigits(exponential ? 1 : 9999);
    if (exponential) format_->setExponentSignAlwaysShown(true);
    format_->setMaximumFractionDigits(999);
  }
  std::string text(double value) const {
    icu::UnicodeString text;
    icu::FieldPosition position;
    format_->format(value, text, position);
    std::string utf8;
    return text.toUTF8String(utf8);
  }

 private:
  std::unique_ptr<icu::DecimalFormat> format_;
};

// Powers of two and ten with their neighbours, then random ones of several sizes.
TEST(Format, WritesDoublesAsTheFormatterDoes) {
  DataCnv cnv = converterFor(500);
  const Formatter formatters[] = {Formatter(cnv, false), Formatter(cnv, true)};
  KelBufferedWstring<16u> text;
  const auto expectSame = [&](double value) {
    for (const bool exponential : {false, true}) {
      cnv.doubleToUString(value, text, exponential);
      ASSERT_EQ(toUtf8(text), formatters[exponential].text(value));
    }
  };
  const auto expectNeighbours = [&](double value) {
    for (const double each : {value, std::nextafter(value, 0), std::nextafter(value, kInfinity), -value})
      expectSame(each);
  };
  for (const double value : {0.0, kInfinity, -kInfinity, kNaN, -kNaN, std::numeric_limits<double>::max()})
    expectSame(value), expectSame(-value);
  for (int power = -1074; power < 1024; ++power)
    expectNeighbours(std::ldexp(1.0, power));
  for (int power = -323; power < 309; ++power)
    expectNeighbours(std::strtod(("1e" + std::to_string(power)).c_str(), nullptr));
  std::mt19937_64 random(20261121);
  for (long i = randomCases(5'000); i > 0; --i) {
    const std::uint64_t bits = random();
    const auto whole = static_cast<double>(static_cast<std::int64_t>(bits) >> (bits & 63));
    expectSame(std::bit_cast<double>(bits));
    expectSame(whole * std::pow(10.0, static_cast<int>(random() % 40) - 20));
    expectSame(whole / std::pow(10.0, static_cast<int>(random() % 10)));
  }
}

TEST(Format, WritesIntegersAsTheStandardLibraryDoes) {
  DataCnv cnv = converterFor(500);
  KelWstring text;
  std::mt19937_64 random(20261121);
  const auto expectSame = [&](std::int64_t value) {
    cnv.Int64ToUString(value, text);
    ASSERT_EQ(toUtf8(text), std::to_string(value));
  };
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t limit : {Limits::min(), Limits::max(), Limits::max() / 10})
    expectSame(limit);
  for (std::int64_t power = 1; power < Limits::max() / 10; power *= 10)
    for (const std::int64_t value : {power, power - 1, -power, 1 - power})
      expectSame(value);
  for (int i = 0; i < 5'000; ++i)
    expectSame(static_cast<std::int64_t>(random()) >> (random() & 63));
}

class FormatLocales : public OwnProcess {};

// A decimal comma changes no number. Where the formatter writes signs and digits of the locale's own, so does the
// member.
TEST_F(FormatLocales, ChangeNothing) {
  for (const char* const locale : {"C", "de_DE.UTF-8", "sv_SE.UTF-8", "ar_EG.UTF-8"}) {
    const ScopedEnvironment all("LC_ALL", locale);
    EXPECT_EXIT(
        {
          DataCnv cnv = converterFor(500);
          const std::string language = icu::Locale::getDefault().getLanguage();
          std::string texts;
          KelWstring text;
          for (const double value : {-1234567.25, 1e-7, -1e23, kInfinity, kNaN})
            for (const bool exponential : {false, true}) {
              cnv.doubleToUString(value, text, exponential);
              texts += toUtf8(text) + ' ';
              EXPECT_EQ(toUtf8(text), Formatter(cnv, exponential).text(value));
            }
          if (language != "sv" && language != "ar") {
            EXPECT_EQ(texts,
                      "-1234567.25 -1.23456725E+6 0.0000001 1.E-7 -100000000000000000000000. -1.E+23 INF INF NaN NaN ");
            expectTexts("d-1234.5 -1234.5 9; D-1234.5 -1234.5 9; i-1234 -1234 9; d-1234.5 -1234,5 9 .,");
            unsigned char zoned[6];
            int size = 6;
            const auto with = [](auto call) {
              const unsigned short* const none = nullptr;
              return call(eSignTrailingIncluded, eJustifyRight, static_cast<unsigned short>('0'), true, false, none,
                          none);
            };
            with([&](auto... form) { cnv.ExtDecFromDbl(-1234.5, zoned, size, 1, form...); });
            EXPECT_EQ(std::string(zoned, zoned + 6), fromHex("F0F1F2F3F4D5"));
            EXPECT_EQ(with([&](auto... form) { return cnv.ExtDecToDbl(zoned, 6, 1, form...); }), -1234.5);
          }
          std::exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "")
        << locale;
  }
}

}  // namespace
}  // namespace oxr::test
