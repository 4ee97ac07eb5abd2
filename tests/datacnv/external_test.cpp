#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"
#include "host/process.hpp"

namespace oxr::test {
namespace {

using ::testing::AnyOf, ::testing::EndsWith, ::testing::HasSubstr, ::testing::SizeIs;

// Some code pages: 500 EBCDIC, 939 EBCDIC with shifts, 819 Latin-1, 1208 UTF-8, 1200 UTF-16.

struct Settings {
  int ccsid = 0;
  ESign sign = eSignNone;
  int scale = 0;
  EJustification justification = eJustifyRight;
  int pad = ' ';
  bool padIsUnicode = true, customSign = false;
};

// "500 2 -1 p48": code page, sign, scale, then what differs from a right-justified field padded with Unicode blanks:
// "j" justification, "p" and "b" the pad in hexadecimal as a code unit and as a byte, "c" custom signs.
Settings settingsOf(const Row& row, std::size_t first) {
  Settings s{.ccsid = std::stoi(row[first]),
             .sign = static_cast<ESign>(std::stoi(row[first + 1])),
             .scale = std::stoi(row[first + 2])};
  for (std::size_t i = first + 3; i < row.size(); ++i) {
    const std::string value = row[i].substr(1);
    if (row[i][0] == 'j') s.justification = static_cast<EJustification>(std::stoi(value));
    if (row[i][0] == 'p' || row[i][0] == 'b') s.pad = std::stoi(value, nullptr, 16);
    s.padIsUnicode &= row[i][0] != 'b';
    s.customSign |= row[i] == "c";
  }
  return s;
}

// A field in hexadecimal, or, behind a quote, as the text that the bytes are in Latin-1.
std::string fieldOf(const std::string& word) {
  if (word[0] == '"') return word.substr(1);
  std::string bytes;
  for (std::size_t i = 0; i < word.size(); i += 2)
    bytes += static_cast<char>(std::stoi(word.substr(i, 2), nullptr, 16));
  return bytes;
}

const unsigned char* bytesOf(const std::string& field) {
  return reinterpret_cast<const unsigned char*>(field.data());
}

// Calls a reading or writing member with the settings that all of them take at the end.
template <class Call>
auto with(const Settings& s, Call call) {
  DataCnv converter = converterFor(s.ccsid);
  return call(converter, s.sign, s.justification, static_cast<unsigned short>(s.pad), s.padIsUnicode, s.customSign,
              nullptr, nullptr);
}

std::string read(const std::string& field, const Settings& s) {
  return with(s, [&](DataCnv& converter, auto... form) {
    const PWFData value = converter.ExtDecToDec(bytesOf(field), static_cast<int>(field.size()), s.scale, form...);
    EXPECT_TRUE(value.getDataLogicalType() == DECIMAL && !value.isNull());
    return toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
  });
}

// What the other readings make of the field: text, integer and double, failures as their first particular.
std::string readOtherwise(const std::string& field, const Settings& s) {
  return with(s, [&](DataCnv& converter, auto... form) {
    const int size = static_cast<int>(field.size());
    std::string shown;
    const auto show = [&](auto reading) {
      const Raised raised = raisedBy([&] { shown += reading() + ' '; });
      if (!raised.kind.empty()) shown += std::to_string(raised.number & 0xFFFF) + ":" + raised.inserts[1] + ' ';
    };
    show([&] { return toUtf8(converter.ExtDecToStr(bytesOf(field), size, form...)); });
    show([&] { return std::to_string(converter.ExtDecToInt64(bytesOf(field), size, form...)); });
    show([&] {
      std::ostringstream out;
      out << std::setprecision(17) << converter.ExtDecToDbl(bytesOf(field), size, s.scale, form...);
      return out.str();
    });
    return shown;
  });
}

// Field, value, settings.
TEST(ExternalDecimal, Reads) {
  for (const Row& c :
       rows("F1F2D3 -123 500 2 0; F1F2C3 123 500 2 0; F1F2F3 123 500 2 0; D1F2F3 -123 500 1 0;"
            "F1F2D3 -123 500 2 0 c;"  // no custom sign in EBCDIC
            "F1F2D3 -1.23 500 2 2; F1F2D3 -0.123 500 2 3; F1F2D3 -0.00123 500 2 5; F1F2D3 -12300 500 2 -2;"
            "D7 -7 500 2 0; F1F2 12 500 0 0; 60F1F2 -1.2 500 3 1; F1F24E 12 500 4 0;"
            "\"12s -123 819 2 0; \"123 123 819 2 0; \"q23 -123 819 1 0; \"12L -123 819 2 0 c;"
            "\"12C 123 819 2 0 c; \"12{ 120 819 2 0 c; \"12} -120 819 2 0 c; \"J23 -123 819 1 0 c;"
            "\"12- -0.012 1208 4 3; \"12+- -12 819 4 0; 00310032002D -12 1200 4 0;"
            "003100 1 1200 0 0;"  // half a character at the end is left out
            "404040 0 500 0 0; 404040 0.00 500 0 2; 4040D5 -0.05 500 2 2; F14040 1 500 0 0 j1;"
            "F0F0F1 001 500 2 0; F0F0F1 0.001 500 2 3 p30; F0F0D0 -0 500 2 0 p30; 40D1 -1 500 2 0 p10020;"
            "4040D1 -1 500 2 0 b40; 4040 0 500 0 0 b40;"
            "\"1,2.3 1,.23 819 0 1"))  // points and commas are let pass
    EXPECT_EQ(read(fieldOf(c[0]), settingsOf(c, 2)), c[1]) << shown(c);
  // Beyond the bytes on the stack and the units in the value.
  EXPECT_EQ(read(std::string(70, '\xF7'), {.ccsid = 500, .sign = eSignLeadingIncluded, .scale = 69}),
            "7." + std::string(69, '7'));
}

// Field, text, integer and double, settings.
TEST(ExternalDecimal, ReadsTextsIntegersAndDoubles) {
  for (const Row& c : rows(
           "F1F2D3 -123 -123 -1.23 500 2 2; 404040 0 0 0 500 0 2; F0F0D0 -000 0 -0 500 2 1; F1F2 12 12 1200 500 0 -2;"
           "\"12- -12 -12 -0.012 819 4 3; \"1,5 1,5 5505:string 5505:string 819 0 0; \"1.5 1.5 5505:string 1.5 819 0 0;"
           "\"9223372036854775807 9223372036854775807 9223372036854775807 9.2233720368547758e+18 819 0 0;"
           "\"922337203685477580w -9223372036854775807 -9223372036854775807 -9.2233720368547763e+17 819 2 1;"
           "\"9223372036854775808 9223372036854775808 5506:string 9.2233720368547758e+18 819 0 0;"
           "\"123456789012345 123456789012345 123456789012345 1.23456789012345e-08 819 0 22;"
           "\"123456789012345 123456789012345 123456789012345 1.23456789012345e-09 819 0 23;"
           "0031003D 5505:decimal 5505:decimal 5505:decimal 1200 0 0; 0031002D -1 -1 -1 1200 4 0;"
           "4040F7 7 7 7 500 0 0 b40; A1 5505:External_decimal_-_Invalid_Positive_sign_code "
           "5505:External_decimal_-_Invalid_Positive_sign_code 5505:External_decimal_-_Invalid_Positive_sign_code 500 "
           "2 0;"
           "\"1 5502:Invalid_sign_type:_7 5502:Invalid_sign_type:_7 5502:Invalid_sign_type:_7 819 7 0"))
    EXPECT_EQ(readOtherwise(fieldOf(c[0]), settingsOf(c, 4)), c[1] + ' ' + c[2] + ' ' + c[3] + ' ') << shown(c);
  // No field at all: text is the only one not to look.
  EXPECT_EQ(readOtherwise("", {.ccsid = 500, .sign = eSignTrailingIncluded}),
            "5502:size < MinBytesPerChar for codepage: 500 5502:Invalid extended decimal size: 0 "
            "5502:Invalid external decimal size: 0 ");
  const auto none = [&](DataCnv& converter, auto... form) {
    for (const auto& raised : {raisedBy([&] { converter.ExtDecToDbl(nullptr, 0, 0, form...); }),
                               raisedBy([&] { converter.ExtDecToInt64(nullptr, 0, form...); })})
      EXPECT_EQ(raised, conversionFailure(5502, {"CPI Internal Error", "Null input pointer"}));
    EXPECT_EQ(raisedBy([&] { converter.ExtDecToStr(nullptr, 3, form...); }),
              conversionFailure(5502, {"CPI Internal Error", "size < MinBytesPerChar for codepage: 500"}));
  };
  with({.ccsid = 500}, none);
  with({.ccsid = 500, .sign = eSignLeadingIncluded}, none);
}

// Field, the two inserts behind the text of the failure, settings.
TEST(ExternalDecimal, RefusesBadFields) {
  for (const Row& c : rows("F1F2A3 External_decimal_-_Invalid_Positive_sign_code 163 500 2 0;"
                           "41F2 External_decimal_-_Invalid_Positive_sign_code 65 500 1 0;"
                           "\"123 External_decimal_-_Custom_Sign_EBCDIC 51 819 2 0 c;"
                           "\"12} decimal 12= 819 2 0;"  // zone 7, and then no digit
                           "\"1x3 decimal 1x.3 819 0 1; \"-12 decimal -12 819 4 0; \"12- decimal 12- 819 3 0;"
                           "\"12_ decimal 12_ 819 0 0; \"1.2.3 decimal 0.12.3 819 0 1"))
    EXPECT_EQ(raisedBy([&] { read(fieldOf(c[0]), settingsOf(c, 3)); }),
              conversionFailure(5505, {"CPI Converter Input Data Invalid", c[1], c[2]}));
  for (const Row& c : rows("Invalid_sign_type:_5 \"12 819 5 0; size_<_MinBytesPerChar_for_codepage:_1200 00 1200 0 0;"
                           "Invalid_external_decimal_size:_0 \" 819 5 0"))
    EXPECT_EQ(raisedBy([&] { read(fieldOf(c[1]), settingsOf(c, 2)); }),
              conversionFailure(5502, {"CPI Internal Error", c[0]}));
  DataCnv converter = converterFor(500);
  EXPECT_EQ(raisedBy([&] {
              converter.ExtDecToDec(nullptr, 0, 0, eSignNone, eJustifyRight, ' ', true, false, nullptr, nullptr);
            }),
            conversionFailure(5502, {"CPI Internal Error", "Null input pointer"}));
}

// Writes a value into a field of `size` bytes of 0xEE: "t" text, "d" decimal, "i" integer, "f" double.
std::string written(const std::string& value, int size, const Settings& s) {
  std::string field(static_cast<std::size_t>(std::max(size, 0)) + 1, '\xEE');
  auto* const bytes = reinterpret_cast<unsigned char*>(field.data());
  const std::string number = value.substr(1);
  const int before = size;
  with(s, [&](DataCnv& converter, auto... form) {
    switch (value[0]) {
      case 't':
        return converter.UStringToExtDec(k(number), bytes, size, -s.scale, form...);
      case 'd':
        return converter.ExtDecFromDec(k(number).characters(), bytes, size, s.scale, form...);
      case 'i':
        return converter.ExtDecFromInt64(std::stol(number), bytes, size, form...);
      default:
        return converter.ExtDecFromDbl(std::stod(number), bytes, size, s.scale, form...);
    }
  });
  EXPECT_EQ(size, before);
  EXPECT_EQ(field.back(), '\xEE');  // nothing behind the field
  return field.substr(0, field.size() - 1);
}

// Value, size, field, settings.
void expectFields(std::string_view table) {
  for (const Row& c : rows(table))
    EXPECT_EQ(toHex(written(c[0], std::stoi(c[1]), settingsOf(c, 3))), toHex(fieldOf(c[2]))) << shown(c);
}

TEST(ExternalDecimal, Writes) {
  expectFields(
      "t-12 4 \"001r 819 2 0 p30; t-12 4 \"012- 819 4 0 p30; t12 4 \"012+ 819 4 0 p30; t-12 4 \"-012 819 3 0 p30;"
      "t-12 3 F0F1D2 500 2 0 p30 c; t-12 3 D0F1F2 500 1 0 p30; t-12 3 \"01K 819 2 0 p30 c; t10 3 \"01{ 819 2 0 p30 c;"
      "t-10 3 \"01} 819 2 0 p30 c; t12 3 \"01B 819 2 0 p30 c; t12 3 \"{12 819 1 0 p30 c; t12 3 \"012 819 2 0 p30;"
      "d1.999 3 \"199 819 0 2; d-0 3 \"p00 819 1 0 p30; d-0.5 2 60F0 500 3 0; d007.5 5 F0F0F0F7F5 500 0 1 p30;"
      "d_-5_ 4 \"-005 819 3 0 p30; d+5 2 \"+5 819 3 0; d5 4 \"__5+ 819 4 0; d5 4 \"+5__ 819 3 0 j1; d 2 \"_0 819 0 0;"
      "d5 4 \"5__+ 819 4 0 j1; d12 4 \"__12 819 0 0 j0; t+5 3 \"_+5 819 0 0; t5- 2 \"-5 819 3 0; d12 3 3132EE 819 7 0;"
      "d123 3 \"_12 819 0 -1; d-5 3 \"-_0 819 3 -1; d-5 3 \"+_0 819 3 -2;"
      // The sign falls on a pad where a field is short of digits on that side.
      "t-12 4 F1F24040 500 2 0 j1; t-12 4 \"12_p 819 2 0 j1; t-12 4 \"p_12 819 1 0; t12 4 \"0_12 819 1 0 c;"
      "i-12 4 F0F0F1D2 500 2 0 p30; i-9223372036854775808 20 \"-9223372036854775808 819 3 0; f-0 2 \"-0 819 3 0;"
      "f-1234.56 8 \"-__12345 819 3 1; f1e-7 3 \"000 819 0 2 p30; f1e20 21 \"100000000000000000000 819 0 0;"
      "t12 4 5050F1F2 500 0 0 b50; t-12 5 F1F2505060 500 4 0 b50 j1; t-12 4 F0F0F1D2 939 2 0 p30;"
      // The field is measured in characters, what is free of it in bytes.
      "t-12 10 0030003000310032002D 1200 4 0 p30; d-1.5 4 \"-015 1208 3 1 p30;"
      // Characters that become no bytes do not lead the sign behind the field.
      "d-\u200B\u200B1 1 D1 500 2 0 p30");
  const std::string digits(70, '7');  // beyond what goes the quick way
  EXPECT_EQ(written("d" + digits, 71, {.ccsid = 819}), " " + digits);
}

// Failure, inserts behind its text, value, size, settings.
TEST(ExternalDecimal, RefusesToWrite) {
  for (const Row& c :
       rows("5507 string external_decimal 4 1234567 i1234567 4 819 0 0; 5507 string external_decimal 2 +12 t12 2 819 3 "
            "0;"
            "5507 string external_decimal 2 -12 d-12 2 500 3 0; 5507 string external_decimal 1 150 d-1.5 1 819 2 2;"
            "5507 string external_decimal 4 \u00E9\u00E912 t12 4 1208 0 0 pE9;"
            "5506 signed_number unsigned_external_decimal -12 i-12 4 819 0 0;"
            "5506 signed_number unsigned_external_decimal -0 f-0 4 819 0 0;"
            "5502 Conversion_to_unicode_string_failed._Error_code:_1 t1 0 819 0 0;"
            "5521 0x3000 2 4 1200 t12 9 1200 0 0 p30")) {
    const std::size_t inserts = c[0] == "5502" ? 1 : c[0] == "5506" ? 3 : 4;
    const Raised raised =
        raisedBy([&] { written(c[inserts + 1], std::stoi(c[inserts + 2]), settingsOf(c, inserts + 3)); });
    EXPECT_EQ(std::to_string(raised.number & 0xFFFF), c[0]) << shown(c);
    EXPECT_EQ(raised.kind, c[0] == "5521" ? "KelParserException" : "KelConversionException") << shown(c);
    EXPECT_THAT(raised.inserts, SizeIs(inserts + 1));
    for (std::size_t i = 1; i < raised.inserts.size(); ++i)
      EXPECT_EQ(raised.inserts[i], c[i]) << shown(c);
  }
  with({.ccsid = 819}, [](DataCnv& converter, auto... form) {
    unsigned char byte;
    int size = 0;
    const auto internal = [](const char* what) { return conversionFailure(5502, {"CPI Internal Error", what}); };
    EXPECT_EQ(raisedBy([&] { converter.ExtDecFromDec(nullptr, nullptr, size, 0, form...); }),
              internal("Null input pointer"));
    for (unsigned char* const target : {static_cast<unsigned char*>(nullptr), &byte})
      for (const auto& raised :
           {raisedBy([&] { converter.ExtDecFromDec(u"1"_k.characters(), target, size, 0, form...); }),
            raisedBy([&] { converter.ExtDecFromDbl(1, target, size, 0, form...); }),
            raisedBy([&] { converter.ExtDecFromInt64(1, target, size, form...); })})
        EXPECT_EQ(raised, internal(target == nullptr ? "Null output buffer pointer" : "Invalid output buffer size: 0"));
    EXPECT_EQ(raisedBy([&] { converter.UStringToExtDec(u"1"_k, nullptr, ++size, 0, form...); }),
              internal("Conversion to unicode string failed. Error code: 1"));
  });
}

// Frequent fields are read and written in one go, which must not show: with trace on all of them go the general way.
TEST(ExternalDecimal, QuickAndGeneralWayAgree) {
  std::mt19937 random(20261121);
  const auto oneOf = [&](std::string_view choices) { return choices[random() % choices.size()]; };
  for (int i = 0; i < 4'000; ++i) {
    const Settings settings{.ccsid = random() % 2 ? 500 : 819,
                            .sign = static_cast<ESign>(random() % 5),
                            .scale = static_cast<int>(random() % 20) - 2,
                            .justification = static_cast<EJustification>(random() % 3),
                            .pad = oneOf(" 0*"),
                            .customSign = random() % 2 != 0};
    std::string text;
    for (unsigned n = 1 + random() % 18; n > 0; --n)
      text += random() % 40 == 0 ? oneOf(",.+-A") : random() % 4 == 0 ? static_cast<char>(settings.pad) : oneOf("123");
    (random() % 2 ? text.front() : text.back()) = oneOf("0123456789 +-AJ{}ps");
    std::string field(text);
    int size = static_cast<int>(field.size());
    converterFor(settings.ccsid).fromUnicodeString(k(text), reinterpret_cast<unsigned char*>(field.data()), size);
    const auto result = [&] {
      std::string value;
      const Raised raised = raisedBy([&] { value = read(field, settings); });
      return raised.kind.empty() ? value : raised.kind + ::testing::PrintToString(raised.inserts);
    };
    std::string general;
    EXPECT_THAT(tracedAt(4, [&] { general = result(); }),
                AnyOf(HasSubstr("> DataCnv::toUnicodeString"), HasSubstr("External decimal - ")));
    ASSERT_EQ(result(), general) << text;
    const std::string value = "td"[random() % 2] + text;
    const auto fieldWritten = [&] {
      std::string bytes;
      const Raised raised =
          raisedBy([&] { bytes = written(value, 1 + static_cast<int>(text.size() * 2 % 20), settings); });
      return raised.kind.empty() ? toHex(bytes) : raised.kind + ::testing::PrintToString(raised.inserts);
    };
    tracedAt(4, [&] { general = fieldWritten(); });
    ASSERT_EQ(fieldWritten(), general) << value;
  }
}

class ExternalDecimalZones : public OwnProcess {};

TEST_F(ExternalDecimalZones, OfPlusAreChosenAtLoad) {
  const std::string others = "; t-12 3 F0F1D2 500 2 0 p30; t12 3 \"012 819 2 0 p30; t12 3 F0F1F2 500 0 0 p30";
  if (std::getenv("NVRA_POSITIVE_EBCDIC_OVERPUNCH") == nullptr)
    expectFields("t12 3 F0F1F2 500 2 0 p30; d12 3 F0F1F2 500 1 0 bF0" + others);
  const ScopedEnvironment on("NVRA_POSITIVE_EBCDIC_OVERPUNCH", "");
  EXPECT_EXIT(
      {
        expectFields("t12 3 F0F1C2 500 2 0 p30; d12 3 C0F1F2 500 1 0 p30; t12 3 C0F1F2 500 1 0 bF0" + others);
        std::exit(HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

// Code page, text, justification, pad, result.
TEST(ExternalDecimal, TrimsFields) {
  for (const Row& c :
       rows("500 _____ 2 U20 0; 500 00000 2 U30 0; 500 12___ 1 U20 12; 500 12___ 2 U20 12___; 500 _1 0 U20 _1;"
            "500 '' 0 U20 0; 500 _1_ 0 40 1_;"  // in bytes no justification means the front
            "500 _1_ 2 FF40 1_; 500 _1_ 1 40 _1; 500 ___ 1 40 0; 500 '' 2 40 0; 939 _1 2 40 1;"
            // Bytes are taken off, not characters.
            "1208 \u00E9\u00E9 2 C3 \uFFFD\u00E9; 1200 12 2 0 \u3100")) {
    KelWstring text = k(c[1]);
    const bool isUnicode = c[3][0] == 'U';
    const auto pad = static_cast<unsigned short>(std::stoi(c[3].substr(isUnicode), nullptr, 16));
    converterFor(std::stoi(c[0])).ExtDecTrimData(text, static_cast<EJustification>(std::stoi(c[2])), pad, isUnicode);
    EXPECT_EQ(toUtf8(text), c[4]) << shown(c);
  }
  const std::string blanks(300, ' ');
  KelWstring text = k(blanks + "1" + blanks);
  converterFor(500).ExtDecTrimData(text, eJustifyRight, 0x40, false);
  EXPECT_EQ(toUtf8(text), "1" + blanks);
}

// Code page, target length, padding bytes, justification, pad, what "12" becomes or the inserts of the failure.
TEST(ExternalDecimal, PadsFields) {
  for (const Row& c : rows("500 5 3 2 U30 00012; 500 5 3 1 U20 12___; 500 5 3 0 U30 00012; 500 1 3 2 U30 12;"
                           "500 2 3 2 U200B 12;"  // nothing to do: the pad isn't looked at
                           "1208 5 9 2 U20AC \u20AC\u20AC\u20AC12; 1208 5 8 2 U20AC 0xac20 3 5 1208;"
                           "500 5 3 2 U200B 0x0b20 0 5 500;"  // the code page leaves it out
                           "500 4 2 2 F0 0012; 500 4 2 1 F0 1200; 500 4 2 0 F0 12; 500 1 2 1 F0 12;"
                           "500 -2147483647 2 1 F0 12; 1200 4 4 1 30 12\u3030; 1200 4 3 1 30 0x3000 2 4 1200")) {
    KelWstring text = u"12"_k;
    const bool isUnicode = c[4][0] == 'U', isGood = c.size() == 6;
    const auto pad = static_cast<unsigned short>(std::stoi(c[4].substr(isUnicode), nullptr, 16));
    DataCnv converter = converterFor(std::stoi(c[0]));
    const Raised raised = raisedBy([&] {
      converter.ExtDecPadData(text, std::stoi(c[1]), std::stoi(c[2]), static_cast<EJustification>(std::stoi(c[3])), pad,
                              isUnicode);
    });
    const auto refusal = [&] {
      return parserFailure(
          5521, {"CPI Converter An attempt to add padding to fixed length field has failed", c[5], c[6], c[7], c[8]});
    };
    EXPECT_EQ(raised, isGood ? Raised() : refusal()) << shown(c);
    EXPECT_EQ(toUtf8(text), isGood ? c[5] : "12") << shown(c);
  }
  KelWstring text = u"12"_k;
  DataCnv converter = converterFor(500);
  EXPECT_THAT(tracedAt(4, [&] { converter.ExtDecPadData(text, 4, 2, eJustifyNone, 0xF0, false); }),
              EndsWith("DataCnv::ExtDecPadData: Possible internal error, eJustifyNone not handled\n"
                       "< DataCnv::ExtDecPadData\n"));
  // Text and integers have no scale.
  const unsigned char field[] = {0xF1, 0xF2};
  const auto isScaled = [&](auto read) {
    return tracedAt(4, read).find("adjustDecimalForString") != std::string::npos;
  };
  EXPECT_TRUE(isScaled(
      [&] { converter.ExtDecToDec(field, 2, 0, eSignNone, eJustifyRight, '0', true, false, nullptr, nullptr); }));
  EXPECT_FALSE(isScaled(
      [&] { converter.ExtDecToInt64(field, 2, eSignNone, eJustifyRight, '0', true, false, nullptr, nullptr); }));
}

}  // namespace
}  // namespace oxr::test
