#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <utility>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/text.hpp"
#include "support/tracing.hpp"

namespace oxr::test {
namespace {

Raised invalidSign(int sign) {
  return conversionFailure(5502, {"CPI Internal Error", "Invalid sign type: " + std::to_string(sign)});
}

// "-12" and false are written "12 +", and with a minus "12 -": the text that stays, and what came off.
std::string signedText(const KelWstring& text, bool negative) {
  return toUtf8(text) + (negative ? " -" : " +");
}

TEST(Signs, CheckSignTakesTheSignOff) {
  const struct {
    const char* text;
    ESign sign;
    const char *minus, *plus;
    const char* result;
  } cases[] = {
      {"-12", eSignNone, "-", "+", "-12 +"},
      {"-12", eSignLeadingSeparate, "-", "+", "12 -"},
      {"+12", eSignLeadingSeparate, "-", "+", "12 +"},
      {"12", eSignLeadingSeparate, "-", "+", "12 +"},
      {"12-", eSignLeadingSeparate, "-", "+", "12- +"},
      {"-+12", eSignLeadingSeparate, "-", "+", "+12 -"},  // the first match ends it
      {"", eSignLeadingSeparate, "-", "+", " +"},
      {"-", eSignLeadingSeparate, "-", "+", " -"},
      {"12", eSignLeadingSeparate, "", "+", "12 -"},
      {"+12", eSignLeadingSeparate, "", "+", "+12 -"},
      {"+12", eSignLeadingSeparate, "-", "", "+12 +"},
      {"DB12", eSignLeadingSeparate, "DB", "CR", "12 -"},
      {"db12", eSignLeadingSeparate, "DB", "CR", "db12 +"},
      {"D", eSignLeadingSeparate, "DB", "CR", "D +"},
      {"12-", eSignTrailingSeparate, "-", "+", "12 -"},
      {"12+", eSignTrailingSeparate, "-", "+", "12 +"},
      {"12+-", eSignTrailingSeparate, "-", "+", "12 -"},  // behind, both come off
      {"12-+", eSignTrailingSeparate, "-", "+", "12- +"},
      {"-12", eSignTrailingSeparate, "-", "+", "-12 +"},
      {"12CR", eSignTrailingSeparate, "CR", "+", "12 -"},
      {"R", eSignTrailingSeparate, "CR", "DB", "R +"},
      {"", eSignTrailingSeparate, "-", "+", " +"},
      {"12+", eSignTrailingSeparate, "", "+", "12 -"},
      {"p23", eSignLeadingIncluded, "-", "+", "023 -"},
      {"123", eSignLeadingIncluded, "-", "+", "123 +"},
      {"-12", eSignLeadingIncluded, "-", "+", "\uFFED12 -"},  // any unit but a digit counts as folded
      {"12y", eSignTrailingIncluded, "-", "+", "129 -"},
      {"p23", eSignTrailingIncluded, "-", "+", "p23 +"},
      {"y", eSignTrailingIncluded, "-", "+", "9 -"},
      {"", eSignLeadingIncluded, "-", "+", " +"},
      {"", eSignTrailingIncluded, "-", "+", " +"},
  };
  DataCnv converter = converterFor(500);
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    const bool negative = converter.CheckSign(text, row.sign, k(row.minus).characters(), k(row.plus).characters());
    EXPECT_EQ(signedText(text, negative), row.result) << row.text << " form " << row.sign;
  }
  KelWstring text = u"-12"_k;
  EXPECT_FALSE(converter.CheckSign(text, eSignLeadingSeparate, nullptr, nullptr));
  for (const int sign : {5, -1})
    EXPECT_EQ(raisedBy([&] { converter.CheckSign(text, static_cast<ESign>(sign), nullptr, nullptr); }),
              invalidSign(sign));
  EXPECT_EQ(text, u"-12"_k);
}

TEST(Signs, ExponentSignsBecomeCanonical) {
  const struct {
    const char *text, *minus, *plus, *result;
  } cases[] = {
      {"1.5eCR3", "CR", "DB", "1.5e-3"},
      {"1.5EDB3", "CR", "DB", "1.5E+3"},
      {"1e+5", "-", "+", "1e+5"},
      {"1e", "CR", "DB", "1e"},
      {"1e5eDB7", "CR", "DB", "1e5eDB7"},
      {"1eC", "CR", "DB", "1eC"},
      {"1eDB5", "", "DB", "1eDB5"},  // an empty minus ends the work
      {"1eCR5", "CR", "", "1e-5"},
      {"1eDB5", "CR", "", "1eDB5"},
      {"15", "1", "5", "15"},
      {"", "CR", "DB", ""},
      {"eCR", "CR", "DB", "e-"},
      {"DB5eCRDB1", "CR", "DB", "DB5e-DB1"},
  };
  DataCnv converter = converterFor(500);
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    converter.ReplaceExponentialSign(text, k(row.minus).characters(), k(row.plus).characters());
    EXPECT_EQ(toUtf8(text), row.result) << row.text;
  }
  KelWstring text = u"1eDB5"_k;
  converter.ReplaceExponentialSign(text, u"CR"_k.characters(), nullptr);
  EXPECT_EQ(text, u"1eDB5"_k);
  converter.ReplaceExponentialSign(text, nullptr, u"DB"_k.characters());
  EXPECT_EQ(text, u"1e+5"_k);
}

TEST(Signs, TablesFoldTheSignIn) {
  const struct {
    const char* plain;
    ESign sign;
    const char *positive, *negative;  // tables
    bool isNegative;
    const char* folded;
    bool unfolds;  // the folded text gives the plain one back
  } cases[] = {
      {"123", eSignNone, "", "", false, "123", true},
      {"123", eSignLeadingSeparate, "", "", true, "-123", true},
      {"123", eSignLeadingSeparate, "", "", false, "+123", true},
      {"123", eSignTrailingSeparate, "", "", true, "123-", true},
      {"", eSignTrailingSeparate, "", "", false, "+", true},
      {"123", eSignTrailingIncluded, "0123456789", "pqrstuvwxy", true, "12s", true},
      {"123", eSignLeadingIncluded, "0123456789", "pqrstuvwxy", true, "q23", true},
      {"123", eSignLeadingIncluded, "0123456789", "pqrstuvwxy", false, "123", true},
      {"A23", eSignLeadingIncluded, "0123456789{ABCDEFGHI", "pqrstuvwxy", true, "q23", false},
      {"A23", eSignLeadingIncluded, "0123456789{ABCDEFGHI", "pqrstuvwxy", false, "123", false},
      {"12!", eSignTrailingIncluded, "0123456789", "pqrstuvwxy", true, "12!", false},
      {"", eSignTrailingIncluded, "0123456789", "pqrstuvwxy", true, "", false},
      {"123", static_cast<ESign>(5), "0123456789", "pqrstuvwxy", true, "123", false},
  };
  DataCnv converter = converterFor(500);
  for (const auto& row : cases) {
    SCOPED_TRACE(row.folded);
    const KelWstring positive = k(row.positive), negative = k(row.negative);
    KelWstring text = k(row.plain);
    bool isNegative = row.isNegative;
    converter.ExtDecAddSign(text, row.sign, positive.characters(), negative.characters(), isNegative);
    EXPECT_EQ(toUtf8(text), row.folded);
    if (!row.unfolds) continue;
    isNegative = !row.isNegative;
    converter.ExtDecRemoveSign(text, row.sign, positive.characters(), negative.characters(), isNegative);
    EXPECT_EQ(signedText(text, isNegative), signedText(k(row.plain), row.isNegative));
  }

  KelWstring text = u"123"_k;
  bool negative = true;
  converter.ExtDecAddSign(text, eSignTrailingIncluded, u"0123"_k.characters(), u"p"_k.characters(), negative);
  EXPECT_EQ(text, KelWstring(u"12\0"_k));  // the table of the sign is too short

  text = u"12H"_k;  // index 18 of the positive table
  converter.ExtDecRemoveSign(text, eSignTrailingIncluded, u"0123456789{ABCDEFGHI"_k.characters(), nullptr, negative);
  EXPECT_EQ(signedText(text, negative), "128 +");

  for (const auto& [bad, sign] : {std::pair("12!", 2), {"", 1}, {"12", 5}, {"12", -1}}) {
    text = k(bad);
    EXPECT_EQ(raisedBy([&, s = sign] {
                converter.ExtDecRemoveSign(text, static_cast<ESign>(s), u"0123"_k.characters(), nullptr, negative);
              }),
              invalidSign(sign));
    EXPECT_EQ(text, k(bad));
  }
}

TEST(Signs, InquiriesLookAtOneUnitOnly) {
  const struct {
    const char *text, *minus;
    bool leading, trailing;
  } cases[] = {{"-12", "-", true, false}, {"12-", "-", false, true}, {"12-", "-X", false, true},
               {"", "-", false, false},   {"12", "-", false, false}, {"-", "-", true, true}};
  for (const auto& row : cases)
    for (const int sign : {0, 3, 9}) {
      const auto form = static_cast<ESign>(sign);
      EXPECT_EQ(DataCnv::HasALeadingMinus(k(row.text), form, k(row.minus).characters(), nullptr), row.leading);
      EXPECT_EQ(DataCnv::HasATrailingMinus(k(row.text), form, k(row.minus).characters(), nullptr), row.trailing);
    }
  EXPECT_FALSE(DataCnv::HasALeadingMinus(u"-"_k, eSignNone, nullptr, nullptr));
  EXPECT_FALSE(DataCnv::HasATrailingMinus(u"-"_k, eSignNone, nullptr, nullptr));
}

TEST(Signs, SubstitutesTheMessagesOwnSign) {
  const struct {
    const char* text;
    ESign sign;
    const char* signText;
    bool nothingToRemove;
    const char* result;
  } cases[] = {
      {"-12", eSignLeadingSeparate, "DB", false, "DB12"},  {"12", eSignLeadingSeparate, "DB", true, "DB12"},
      {"-12", eSignTrailingSeparate, "CR", false, "12CR"}, {"-12", eSignTrailingSeparate, "CR", true, "-12CR"},
      {"-12", eSignTrailingSeparate, "", false, "-12"},    {"-12", eSignLeadingIncluded, "CR", false, "-12"},
      {"12", eSignLeadingSeparate, "CR", false, "CR2"},  // whatever stands in the minus's place goes
      {"", eSignTrailingSeparate, "CR", false, "CR"},
  };
  DataCnv converter = converterFor(500);
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    converter.SubstituteMinusSign(text, row.sign, k(row.signText).characters(), row.nothingToRemove);
    EXPECT_EQ(toUtf8(text), row.result);
  }
  KelWstring text = u"-12"_k;
  converter.SubstituteMinusSign(text, eSignLeadingSeparate, nullptr, false);
  EXPECT_EQ(text, u"-12"_k);
}

TEST(Signs, TracesUnderTheirNames) {
  DataCnv converter = converterFor(500);
  KelWstring text = u"1eCR5"_k;
  bool negative = false;
  const std::string lines = tracedAt(4, [&] {
    converter.ReplaceExponentialSign(text, u"CR"_k.characters(), nullptr);
    converter.ExtDecAddSign(text, eSignLeadingSeparate, nullptr, nullptr, negative);  // the short ones are silent
    converter.ExtDecTrimData(text, eJustifyLeft, '0', true);
    raisedBy([&] { converter.ExtDecRemoveSign(text, static_cast<ESign>(5), nullptr, nullptr, negative); });
  });
  const std::regex lineNumber(R"(\|\d+\|)");
  EXPECT_EQ(std::regex_replace(lines, lineNumber, "|line|"),
            "> DataCnv::CheckExponentialSign\n"
            "< DataCnv::CheckExponentialSign\n"
            "> DataCnv::TrimData\n"
            "> DataCnv::getNumTrailingPaddingChar\n"
            "< DataCnv::getNumTrailingPaddingChar\n"
            "< DataCnv::TrimData\n"
            "> DataCnv::ExtDecRemoveSign\n"
            "DataCnv::ExtDecRemoveSign: Throwing exception|src/cpi/bsutils/datacnv|line|CP_INTERNAL_ERROR|"
            "CPI Internal Error|Invalid sign type: 5\n");
}

}  // namespace
}  // namespace oxr::test
