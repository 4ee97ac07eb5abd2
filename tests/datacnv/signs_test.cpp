#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

Raised invalidSign(int sign) {
  return conversionFailure(5502, {"CPI Internal Error", "Invalid sign type: " + std::to_string(sign)});
}
ESign form(const std::string& number) {
  return static_cast<ESign>(std::stoi(number));
}

// Text, form, minus text, plus text, what stays, whether a minus came off.
TEST(Signs, CheckSignTakesTheSignOff) {
  DataCnv converter = converterFor(500);
  for (const Row& c : rows("-12 0 - + -12 +; -12 3 - + 12 -; +12 3 - + 12 +; 12 3 - + 12 +; 12- 3 - + 12- +;"
                           "-+12 3 - + +12 -;"  // in front the first match ends it
                           "'' 3 - + '' +; - 3 - + '' -; 12 3 '' + 12 -; +12 3 '' + +12 -; +12 3 - '' +12 +;"
                           "DB12 3 DB CR 12 -; db12 3 DB CR db12 +; D 3 DB CR D +;"
                           "12- 4 - + 12 -; 12+ 4 - + 12 +; 12-+ 4 - + 12- +; -12 4 - + -12 +; 12CR 4 CR + 12 -;"
                           "12+- 4 - + 12 -;"  // behind both come off
                           "R 4 CR DB R +; '' 4 - + '' +; 12+ 4 '' + 12 -;"
                           "p23 1 - + 023 -; 123 1 - + 123 +; 12y 2 - + 129 -; p23 2 - + p23 +; y 2 - + 9 -;"
                           "-12 1 - + \uFFED12 -;"  // any unit but a digit counts as folded
                           "'' 1 - + '' +; '' 2 - + '' +")) {
    KelWstring text = k(c[0]);
    const bool negative = converter.CheckSign(text, form(c[1]), k(c[2]).characters(), k(c[3]).characters());
    EXPECT_EQ(toUtf8(text), c[4]) << shown(c);
    EXPECT_EQ(negative, c[5] == "-") << shown(c);
  }
  KelWstring text = u"-12"_k;
  EXPECT_FALSE(converter.CheckSign(text, eSignLeadingSeparate, nullptr, nullptr));
  for (const int sign : {5, -1})
    EXPECT_EQ(raisedBy([&] { converter.CheckSign(text, static_cast<ESign>(sign), nullptr, nullptr); }),
              invalidSign(sign));
  EXPECT_EQ(text, u"-12"_k);
}

TEST(Signs, ExponentSignsBecomeCanonical) {
  DataCnv converter = converterFor(500);
  for (const Row& c : rows("1.5eCR3 CR DB 1.5e-3; 1.5EDB3 CR DB 1.5E+3; 1e+5 - + 1e+5; 1e CR DB 1e; 15 1 5 15;"
                           "1e5eDB7 CR DB 1e5eDB7; 1eC CR DB 1eC; 1eCR5 CR '' 1e-5; '' CR DB ''; eCR CR DB e-;"
                           "1eDB5 '' DB 1eDB5;"  // an empty minus ends the work
                           "DB5eCRDB1 CR DB DB5e-DB1; 1eDB5 CR null 1eDB5; 1eDB5 null DB 1e+5")) {
    KelWstring text = k(c[0]);
    const KelWstring minus = k(c[1]), plus = k(c[2]);
    converter.ReplaceExponentialSign(text, c[1] == "null" ? nullptr : minus.characters(),
                                     c[2] == "null" ? nullptr : plus.characters());
    EXPECT_EQ(toUtf8(text), c[3]) << shown(c);
  }
}

// Text, form, table of the positive digits, of the negative ones, sign, the signed text. "=" in front: that gives the
// text and the sign back.
TEST(Signs, TablesFoldTheSignIn) {
  DataCnv converter = converterFor(500);
  for (const Row& c : rows("123 0 '' '' + =123; 123 3 '' '' - =-123; 123 3 '' '' + =+123; 123 4 '' '' - =123-;"
                           "'' 4 '' '' + =+; 123 2 0123456789 pqrstuvwxy - =12s; 123 1 0123456789 pqrstuvwxy - =q23;"
                           "123 1 0123456789 pqrstuvwxy + =123; A23 1 0123456789{ABCDEFGHI pqrstuvwxy - q23;"
                           "A23 1 0123456789{ABCDEFGHI pqrstuvwxy + 123; 12! 2 0123456789 pqrstuvwxy - 12!;"
                           "'' 2 0123456789 pqrstuvwxy - ''; 123 5 0123456789 pqrstuvwxy - 123")) {
    const KelWstring positive = k(c[2]), negative = k(c[3]);
    KelWstring text = k(c[0]);
    bool isNegative = c[4] == "-";
    converter.ExtDecAddSign(text, form(c[1]), positive.characters(), negative.characters(), isNegative);
    const bool andBack = c[5].starts_with('=');
    EXPECT_EQ(toUtf8(text), c[5].substr(andBack ? 1 : 0)) << shown(c);
    if (!andBack) continue;
    isNegative = !isNegative;
    converter.ExtDecRemoveSign(text, form(c[1]), positive.characters(), negative.characters(), isNegative);
    EXPECT_EQ(toUtf8(text) + (isNegative ? '-' : '+'), c[0] + c[4]) << shown(c);
  }

  KelWstring text = u"123"_k;
  bool negative = true;
  converter.ExtDecAddSign(text, eSignTrailingIncluded, u"0123"_k.characters(), u"p"_k.characters(), negative);
  EXPECT_EQ(text, u"12\0"_k);  // the table of the sign is too short
  text = u"12H"_k;             // index 18 of the positive table
  converter.ExtDecRemoveSign(text, eSignTrailingIncluded, u"0123456789{ABCDEFGHI"_k.characters(), nullptr, negative);
  EXPECT_TRUE(text == u"128"_k && !negative);
  for (const Row& c : rows("12! 2; '' 1; 12 5; 12 -1")) {
    text = k(c[0]);
    EXPECT_EQ(raisedBy([&] { converter.ExtDecRemoveSign(text, form(c[1]), u"01"_k.characters(), nullptr, negative); }),
              invalidSign(std::stoi(c[1])));
    EXPECT_EQ(text, k(c[0]));
  }
}

TEST(Signs, InquiriesLookAtOneUnitOnly) {
  for (const Row& c : rows("-12 - yes no; 12- - no yes; 12- -X no yes; '' - no no; 12 - no no; - - yes yes")) {
    const KelWstring text = k(c[0]), minus = k(c[1]);
    for (const ESign sign : {eSignNone, eSignLeadingSeparate, static_cast<ESign>(9)}) {
      EXPECT_EQ(DataCnv::HasALeadingMinus(text, sign, minus.characters(), nullptr), c[2] == "yes") << shown(c);
      EXPECT_EQ(DataCnv::HasATrailingMinus(text, sign, minus.characters(), nullptr), c[3] == "yes") << shown(c);
    }
    EXPECT_FALSE(DataCnv::HasALeadingMinus(text, eSignNone, nullptr, nullptr));
    EXPECT_FALSE(DataCnv::HasATrailingMinus(text, eSignNone, nullptr, nullptr));
  }
}

TEST(Signs, SubstitutesTheMessagesOwnSign) {
  DataCnv converter = converterFor(500);
  for (const Row& c : rows("-12 3 DB remove DB12; 12 3 DB keep DB12; -12 4 CR remove 12CR; -12 4 CR keep -12CR;"
                           "-12 4 '' remove -12; -12 1 CR remove -12; '' 4 CR remove CR;"
                           "12 3 CR remove CR2")) {  // whatever stands in the minus's place goes
    KelWstring text = k(c[0]);
    converter.SubstituteMinusSign(text, form(c[1]), k(c[2]).characters(), c[3] == "keep");
    EXPECT_EQ(toUtf8(text), c[4]) << shown(c);
    converter.SubstituteMinusSign(text, form(c[1]), nullptr, false);
    EXPECT_EQ(toUtf8(text), c[4]);
  }
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
