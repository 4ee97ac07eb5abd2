#include <gtest/gtest.h>

#include "harness/converter.hpp"
#include "harness/outcome.hpp"
#include "harness/rows.hpp"

namespace oxr::test {
namespace {

constexpr auto kUnknownType = static_cast<ELogicalType>(7);

// A value by its type's number and its standard string, or "null"; a decimal, and what has no type, from its text.
PWFData valueOf(const std::string& typeNumber, const std::string& text) {
  const auto type = static_cast<ELogicalType>(std::stoi(typeNumber));
  if (text == "null") return PWFData(type);
  if (type == DECIMAL || type == kUnknownType) return PWFData(k(text).characters(), type);
  return converterFor(37).StandardStrToData(type, k(text));
}

// Both ways round, and by the other operator.
std::string compared(const PWFData& left, const PWFData& right) {
  std::string outcome = outcomeOf([&] { return left == right; });
  EXPECT_EQ(outcomeOf([&] { return right == left; }), outcome);
  EXPECT_EQ(outcomeOf([&] { return !(left != right); }), outcome);
  return outcome;
}

TEST(PwfDataComparison, ComparesByType) {
  for (const Row& c :
       rows("2 a_text_of_some_length 2 a_text_of_some_length true; 2 ab 2 abc false; 2 ab 2 aB false; 2 1 16 1 false;"
            "4 -5 4 -5 true; 4 0 4 4294967296 false; 6 -0 6 0 true; 6 nan 6 nan false; 10 0aff 10 0aff true;"
            "10 0aff 10 0afe false; 10 0aff 10 0a false; 10 '' 10 '' true; 12 1 12 true true; 12 1 12 0 false;"
            "14 P14M 14 P1Y2M true; 14 -PT0S 14 PT0S true; 14 PT5S 14 -PT5S false; 15 2001-02-03 15 2001-02-03 true;"
            "15 2001-02-03T12:30:00 15 2001-02-03T12:30:00Z false; 15 2001-02-03 15 2001-02-04 false; 16 1.50 16 1.5 "
            "true; 16 -0 16 0 false; 7 1 7 2 true;"
            "0 null 0 null true; 2 null 2 null true; 7 null 7 null true; 10 null 10 null true; 14 null 14 null true;"
            "15 null 15 null true; 16 null 16 null true; 0 null 2 null false; 4 null 4 0 false; 16 null 16 '' false"))
    EXPECT_EQ(compared(valueOf(c[0], c[1]), valueOf(c[2], c[3])), c[4]) << shown(c);
  EXPECT_EQ(compared(PWFData(PWFInt32{-5}, false), PWFData(PWFInt64{-5}, false)), "true");
  EXPECT_EQ(compared(PWFData(1, BOOLEAN), PWFData(2, BOOLEAN)), "false");
  // A length without bytes.
  EXPECT_EQ(compared(PWFData("abc", 3, BINARY, COPY), PWFData("abc", 3, BINARY, static_cast<EOwnership>(9))), "false");
}

TEST(PwfDataComparison, NullNumbersRaise) {
  const std::string refusal = "OXR5522 bare: CPI Internal error from invalid operation on PWFData | Can't get value ";
  EXPECT_EQ(compared(PWFData(INTEGER), PWFData(INTEGER)), refusal + "for null integer value");
  EXPECT_EQ(compared(PWFData(FLOAT), PWFData(FLOAT)), refusal + "for null double value");
  EXPECT_EQ(compared(PWFData(BOOLEAN), PWFData(BOOLEAN)), refusal + "for null boolean value");
}

// As where the texts are made: the left one first, each up to a zero.
TEST(PwfDataComparison, DecimalsRaiseWhereTheyAreNone) {
  EXPECT_EQ(compared(valueOf("16", "1"), valueOf("16", "1x")), "OXR5505: decimal | 1x");
  EXPECT_EQ(outcomeOf([] { return valueOf("16", "x") == valueOf("16", "y"); }), "OXR5505: decimal | x");
  const unsigned short cut[] = {'1', 0, 'x'};
  EXPECT_EQ(compared(PWFData(cut, sizeof cut, DECIMAL, COPY), valueOf("16", "1.0")), "true");
}

TEST(PwfDataComparison, DebugText) {
  for (const Row& c : rows("0 null NOTHING; 16 null NULL; 7 null NULL; 7 1 INVALID; 16 1x INVALID; 16 01.50 1.5;"
                           "6 1.5 1.5E+0; 10 0AFF 0aff; 12 1 true; 14 P12M P12M"))
    EXPECT_EQ(shown(valueOf(c[0], c[1]).getDebugString()), "STRING " + c[2]) << shown(c);
}

}  // namespace
}  // namespace oxr::test
