#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/text.hpp"
#include "support/tracing.hpp"

namespace oxr::test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kEbcdic = 500, kLatin1 = 819, kUtf8 = 1208, kUtf16 = 1200, kShifted = 939;
constexpr ESign kNone = eSignNone, kLeading = eSignLeadingIncluded, kTrailing = eSignTrailingIncluded,
                kFront = eSignLeadingSeparate, kBehind = eSignTrailingSeparate;

Bytes ascii(std::string_view text) {
  return Bytes(text.begin(), text.end());
}

struct Settings {
  int ccsid = kEbcdic;
  ESign sign = kTrailing;
  int scale = 0;
  bool customSign = false;
  EJustification justification = eJustifyRight;
  int pad = ' ';
  bool padIsUnicode = true;
};

PWFData read(const Bytes& field, const Settings& s) {
  DataCnv converter = converterFor(s.ccsid);
  return converter.ExtDecToDec(field.data(), static_cast<int>(field.size()), s.scale, s.sign, s.justification, s.pad,
                               s.padIsUnicode, s.customSign, nullptr, nullptr);
}
std::string textOf(const PWFData& value) {
  EXPECT_EQ(value.getDataLogicalType(), DECIMAL);
  EXPECT_FALSE(value.isNull());
  return toUtf8(UnitView(value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())));
}

TEST(ExternalDecimal, Reads) {
  const Bytes long_(70, 0xF7);
  const struct {
    const char* what;
    Bytes field;
    Settings settings;
    std::string text;
  } cases[] = {
      {"EBCDIC, D is minus", {0xF1, 0xF2, 0xD3}, {}, "-123"},
      {"EBCDIC, C is plus", {0xF1, 0xF2, 0xC3}, {}, "123"},
      {"EBCDIC, F is plus", {0xF1, 0xF2, 0xF3}, {}, "123"},
      {"EBCDIC, first byte", {0xD1, 0xF2, 0xF3}, {.sign = kLeading}, "-123"},
      {"EBCDIC knows no custom sign", {0xF1, 0xF2, 0xD3}, {.customSign = true}, "-123"},
      {"scale", {0xF1, 0xF2, 0xD3}, {.scale = 2}, "-1.23"},
      {"the minus comes behind the scale", {0xF1, 0xF2, 0xD3}, {.scale = 5}, "-0.00123"},
      {"scale below 0", {0xF1, 0xF2, 0xD3}, {.scale = -2}, "-12300"},
      {"one byte", {0xD7}, {}, "-7"},
      {"unsigned", {0xF1, 0xF2}, {.sign = kNone}, "12"},
      {"separate, EBCDIC", {0x60, 0xF1, 0xF2}, {.sign = kFront, .scale = 1}, "-1.2"},
      {"separate, behind", {0xF1, 0xF2, 0x4E}, {.sign = kBehind}, "12"},
      {"ASCII, p to y are minus", ascii("12s"), {.ccsid = kLatin1}, "-123"},
      {"ASCII, plus", ascii("123"), {.ccsid = kLatin1}, "123"},
      {"ASCII, first byte", ascii("q23"), {.ccsid = kLatin1, .sign = kLeading}, "-123"},
      {"letters", ascii("12L"), {.ccsid = kLatin1, .customSign = true}, "-123"},
      {"letters", ascii("12C"), {.ccsid = kLatin1, .customSign = true}, "123"},
      {"letters", ascii("12{"), {.ccsid = kLatin1, .customSign = true}, "120"},
      {"letters", ascii("12}"), {.ccsid = kLatin1, .customSign = true}, "-120"},
      {"letters, first byte", ascii("J23"), {.ccsid = kLatin1, .sign = kLeading, .customSign = true}, "-123"},
      {"separate, behind", ascii("12-"), {.ccsid = kUtf8, .sign = kBehind, .scale = 3}, "-0.012"},
      {"two bytes a character", {0, '1', 0, '2', 0, '-'}, {.ccsid = kUtf16, .sign = kBehind}, "-12"},
      {"half a character at the end", {0, '1', 0}, {.ccsid = kUtf16, .sign = kNone}, "1"},
      {"all pads", {0x40, 0x40, 0x40}, {.sign = kNone}, "0"},
      {"all pads, scaled", {0x40, 0x40, 0x40}, {.sign = kNone, .scale = 2}, "0.00"},
      {"pads in front", {0x40, 0x40, 0xD1}, {}, "-1"},
      {"pads behind", {0xF1, 0x40, 0x40}, {.sign = kNone, .justification = eJustifyLeft}, "1"},
      {"zeros stay without a zero pad", {0xF0, 0xF0, 0xF1}, {}, "001"},
      {"zeros go as pads", {0xF0, 0xF0, 0xF1}, {.scale = 3, .pad = '0'}, "0.001"},
      {"negative zero", {0xF0, 0xF0, 0xD0}, {.pad = '0'}, "-0"},
      {"pad in the code page", {0x40, 0x40, 0xD1}, {.pad = 0x40, .padIsUnicode = false}, "-1"},
      {"pad in the code page, all", {0x40, 0x40}, {.sign = kNone, .pad = 0x40, .padIsUnicode = false}, "0"},
      {"few digits and a scale", {0x40, 0x40, 0xD5}, {.scale = 2}, "-0.05"},
      {"the pad has 16 bits", {0x40, 0xD1}, {.pad = 0x10020}, "-1"},
      {"points and commas are let pass", ascii("1,2.3"), {.ccsid = kLatin1, .sign = kNone, .scale = 1}, "1,.23"},
      {"beyond stack and inline text", long_, {.sign = kLeading, .scale = 69}, "7." + std::string(69, '7')},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(textOf(read(row.field, row.settings)), row.text);
  }
}

TEST(ExternalDecimal, RefusesBadFields) {
  const auto invalid = [](std::vector<std::string> inserts) {
    inserts.insert(inserts.begin(), "CPI Converter Input Data Invalid");
    return conversionFailure(5505, std::move(inserts));
  };
  const auto internal = [](const char* text) { return conversionFailure(5502, {"CPI Internal Error", text}); };
  const struct {
    Bytes field;
    Settings settings;
    Raised raised;
  } cases[] = {
      {{}, {}, internal("Invalid external decimal size: 0")},
      {{0xF1, 0xF2, 0xA3}, {}, invalid({"External decimal - Invalid Positive sign code", "163"})},
      {{0x41, 0xF2}, {.sign = kLeading}, invalid({"External decimal - Invalid Positive sign code", "65"})},
      {ascii("123"), {.ccsid = kLatin1, .customSign = true}, invalid({"External decimal - Custom Sign EBCDIC", "51"})},
      {ascii("12}"), {.ccsid = kLatin1}, invalid({"decimal", "12="})},  // zone 7, and then no digit
      {ascii("1x3"), {.ccsid = kLatin1, .scale = 1}, invalid({"decimal", "1x.3"})},
      {ascii("-12"), {.ccsid = kLatin1, .sign = kBehind}, invalid({"decimal", "-12"})},
      {ascii("12-"), {.ccsid = kLatin1, .sign = kFront}, invalid({"decimal", "12-"})},
      {ascii("12 "), {.ccsid = kLatin1, .sign = kNone}, invalid({"decimal", "12 "})},
      {ascii("1.2.3"), {.ccsid = kLatin1, .sign = kNone, .scale = 1}, invalid({"decimal", "0.12.3"})},
      {ascii("12"), {.ccsid = kLatin1, .sign = static_cast<ESign>(5)}, internal("Invalid sign type: 5")},
      {{0}, {.ccsid = kUtf16, .sign = kNone}, internal("size < MinBytesPerChar for codepage: 1200")},
  };
  for (const auto& row : cases)
    EXPECT_EQ(raisedBy([&] { read(row.field, row.settings); }),
              row.field.empty() ? internal("Null input pointer") : row.raised);
  DataCnv converter = converterFor(kEbcdic);
  const unsigned char field[] = {0xF1};
  EXPECT_EQ(
      raisedBy([&] { converter.ExtDecToDec(field, 0, 0, kNone, eJustifyRight, ' ', true, false, nullptr, nullptr); }),
      internal("Invalid external decimal size: 0"));
}

TEST(ExternalDecimal, TrimsFields) {
  const struct {
    int ccsid;
    const char* text;
    EJustification justification;
    unsigned short pad;
    bool isUnicode;
    const char* result;
  } cases[] = {
      {kEbcdic, "     ", eJustifyRight, ' ', true, "0"},
      {kEbcdic, "00000", eJustifyRight, '0', true, "0"},
      {kEbcdic, "12   ", eJustifyLeft, ' ', true, "12"},
      {kEbcdic, "12   ", eJustifyRight, ' ', true, "12   "},
      {kEbcdic, "  12", eJustifyNone, ' ', true, "  12"},
      {kEbcdic, "", eJustifyNone, ' ', true, "0"},
      {kEbcdic, "  12  ", eJustifyNone, 0x40, false, "12  "},  // in bytes no justification means the front
      {kEbcdic, "  12  ", eJustifyRight, 0xFF40, false, "12  "},
      {kEbcdic, "  12  ", eJustifyLeft, 0x40, false, "  12"},
      {kEbcdic, "    ", eJustifyLeft, 0x40, false, "0"},
      {kEbcdic, "", eJustifyRight, 0x40, false, "0"},
      {kUtf8,
       "\u00E9\u00E9"
       "1",
       eJustifyRight, 0xC3, false,
       "\uFFFD\u00E9"
       "1"},  // bytes, not characters
      {kUtf16, "12", eJustifyRight, 0x00, false, "\u3100"},
      {kShifted, "  12", eJustifyRight, 0x40, false, "12"},
  };
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    converterFor(row.ccsid).ExtDecTrimData(text, row.justification, row.pad, row.isUnicode);
    EXPECT_EQ(toUtf8(text), row.result) << row.text;
  }
  const std::string blanks(300, ' ');
  KelWstring text = k(blanks + "1" + blanks);
  converterFor(kEbcdic).ExtDecTrimData(text, eJustifyRight, 0x40, false);
  EXPECT_EQ(toUtf8(text), "1" + blanks);
}

TEST(ExternalDecimal, PadsFields) {
  const auto badSize = [](std::vector<std::string> inserts) {
    inserts.insert(inserts.begin(), "CPI Converter An attempt to add padding to fixed length field has failed");
    return parserFailure(5521, std::move(inserts));
  };
  const struct {
    int ccsid;
    int target, bytes;
    EJustification justification;
    unsigned short pad;
    bool isUnicode;
    const char* result;  // of "12"
    Raised raised;
  } cases[] = {
      {kEbcdic, 5, 3, eJustifyRight, '0', true, "00012", {}},
      {kEbcdic, 5, 3, eJustifyLeft, ' ', true, "12   ", {}},
      {kEbcdic, 5, 3, eJustifyNone, '0', true, "00012", {}},
      {kEbcdic, 2, 3, eJustifyRight, 0x3042, true, "12", {}},  // nothing to do: the pad isn't looked at
      {kEbcdic, 1, 3, eJustifyRight, '0', true, "12", {}},
      {kUtf8, 5, 9, eJustifyRight, 0x20AC, true, "\u20AC\u20AC\u20AC12", {}},
      {kUtf8, 5, 8, eJustifyRight, 0x20AC, true, "12", badSize({"0xac20", "3", "5", "1208"})},
      {kEbcdic, 5, 3, eJustifyRight, 0x200B, true, "12", badSize({"0x0b20", "0", "5", "500"})},
      {kEbcdic, 4, 2, eJustifyRight, 0xF0, false, "0012", {}},
      {kEbcdic, 4, 2, eJustifyLeft, 0xF0, false, "1200", {}},
      {kEbcdic, 4, 2, eJustifyNone, 0xF0, false, "12", {}},
      {kEbcdic, 1, 2, eJustifyLeft, 0xF0, false, "12", {}},
      {kEbcdic, -2147483647, 2, eJustifyLeft, 0xF0, false, "12", {}},
      {kUtf16, 4, 4, eJustifyLeft, 0x30, false, "12\u3030", {}},  // two bytes are one character
      {kUtf16, 4, 3, eJustifyLeft, 0x30, false, "12", badSize({"0x3000", "2", "4", "1200"})},
  };
  for (const auto& row : cases) {
    KelWstring text = u"12"_k;
    DataCnv converter = converterFor(row.ccsid);
    EXPECT_EQ(raisedBy([&] {
                converter.ExtDecPadData(text, row.target, row.bytes, row.justification, row.pad, row.isUnicode);
              }),
              row.raised);
    EXPECT_EQ(toUtf8(text), row.result);
  }
}

// Frequent fields are read in one go, which must not show: with trace on all of them go the general way.
TEST(ExternalDecimal, QuickAndGeneralWayAgree) {
  std::mt19937 random(20261121);
  const auto oneOf = [&](std::string_view choices) { return choices[random() % choices.size()]; };
  std::string quick, general;
  for (int i = 0; i < 4'000; ++i) {
    const Settings settings{.ccsid = random() % 2 ? kEbcdic : kLatin1,
                            .sign = static_cast<ESign>(random() % 5),
                            .scale = static_cast<int>(random() % 20) - 2,
                            .customSign = random() % 2 != 0,
                            .justification = static_cast<EJustification>(random() % 3),
                            .pad = oneOf(" 0*")};
    std::string text;
    for (unsigned n = 1 + random() % 18; n > 0; --n)
      text += random() % 40 == 0  ? oneOf(",.+-A")
              : random() % 4 == 0 ? static_cast<char>(settings.pad)
                                  : oneOf("0123456789");
    (random() % 2 ? text.front() : text.back()) = oneOf("0123456789 +-AJ{}ps");
    Bytes field(text.size());
    int size = static_cast<int>(field.size());
    converterFor(settings.ccsid).fromUnicodeString(k(text), field.data(), size);
    SCOPED_TRACE(text);
    const auto result = [&](std::string& out) {
      const Raised raised = raisedBy([&] { out = textOf(read(field, settings)); });
      if (!raised.kind.empty()) out = raised.kind + ::testing::PrintToString(raised.inserts);
    };
    result(quick);
    EXPECT_FALSE(tracedAt(4, [&] { result(general); }).empty());
    ASSERT_EQ(quick, general);
  }
}

TEST(ExternalDecimal, TracesAPaddingThatNoFieldHas) {
  DataCnv converter = converterFor(kEbcdic);
  KelWstring text = u"12"_k;
  EXPECT_THAT(tracedAt(4, [&] { converter.ExtDecPadData(text, 4, 2, eJustifyNone, 0xF0, false); }),
              ::testing::EndsWith("DataCnv::ExtDecPadData: Possible internal error, eJustifyNone not handled\n"
                                  "< DataCnv::ExtDecPadData\n"));
}

}  // namespace
}  // namespace oxr::test
