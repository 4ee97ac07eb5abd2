#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "harness/outcome.hpp"
#include "harness/rows.hpp"
#include "pwfdata.hpp"

namespace oxr::test {
namespace {

constexpr auto kUnknownType = static_cast<ELogicalType>(7);

PWFData decimal(const std::string& text) {
  return PWFData(k(text).characters(), DECIMAL);
}
PWFData binary(const char* bytes, int length, EOwnership own = REFERENCE) {
  return PWFData(bytes, length, BINARY, own);
}

// Both ways round, and by the other operator.
std::string compared(const PWFData& left, const PWFData& right) {
  const std::string outcome = outcomeOf([&] { return left == right; });
  EXPECT_EQ(outcomeOf([&] { return right == left; }), outcome);
  EXPECT_EQ(outcomeOf([&] { return !(left != right); }), outcome);
  return outcome;
}

TEST(PwfDataComparison, ComparesByType) {
  const PWFDateTime noon{2001, 2, 3, 12, 0, 0, 0, 6, nullptr, 0, 0}, own{2001, 2, 3, 12, 0, 0, 0, 6, nullptr, 1, 0};
  const std::pair<PWFData, PWFData> same[] = {
      {PWFData(u"a text of some length"_k), PWFData(u"a text of some length"_k)},
      {PWFData(PWFInt32{-5}, false), PWFData(PWFInt64{-5}, false)},
      {PWFData(0.0), PWFData(-0.0)},
      {PWFData(1, BOOLEAN), PWFData(true)},
      {binary("abc", 3, COPY), binary("abc", 3)},
      {binary("abc", -1), binary("abc", 0)},
      {PWFData(noon), PWFData(noon)},
      {PWFData("1", 1, kUnknownType, COPY), PWFData("2", 1, kUnknownType, COPY)},
      {PWFData(NOTHING), PWFData(NOTHING)},
  };
  for (const auto& [left, right] : same)
    EXPECT_EQ(compared(left, right), "true") << shown(left);
  const std::pair<PWFData, PWFData> different[] = {
      {PWFData(u"1"_k), decimal("1")},
      {PWFData(u"ab"_k), PWFData(u"abc"_k)},
      {PWFData(PWFInt32{0}, false), PWFData(PWFInt64{1} << 32, false)},
      {PWFData(std::nan("")), PWFData(std::nan(""))},
      {PWFData(1, BOOLEAN), PWFData(2, BOOLEAN)},
      {binary("abc", 3), binary("abd", 3)},
      {binary("abc", 3), binary("abc", 3, static_cast<EOwnership>(9))},  // a length without bytes
      {PWFData(noon), PWFData(own)},
      {PWFData(INTEGER), PWFData(PWFInt64{0}, false)},
      {PWFData(DECIMAL), decimal("")},
  };
  for (const auto& [left, right] : different)
    EXPECT_EQ(compared(left, right), "false") << shown(left);
}

TEST(PwfDataComparison, NullsAreEqualOrRaise) {
  for (const ELogicalType type : {STRING, BINARY, INTERVAL, DATETIME, DECIMAL, kUnknownType})
    EXPECT_EQ(compared(PWFData(type), PWFData(type)), "true") << type;
  const std::string refusal = "OXR5522 bare: CPI Internal error from invalid operation on PWFData | Can't get value ";
  EXPECT_EQ(compared(PWFData(INTEGER), PWFData(INTEGER)), refusal + "for null integer value");
  EXPECT_EQ(compared(PWFData(FLOAT), PWFData(FLOAT)), refusal + "for null double value");
  EXPECT_EQ(compared(PWFData(BOOLEAN), PWFData(BOOLEAN)), refusal + "for null boolean value");
}

TEST(PwfDataComparison, DecimalsAreEqualAsCanonicalTexts) {
  for (const Row& c : rows("1.50 1.5 true; .5 0.50 true; -0 0 false; 1.5 -1.5 false; 1,000 1000 false; 5 50 false"))
    EXPECT_EQ(compared(decimal(c[0]), decimal(c[1])), c[2]) << shown(c);
  EXPECT_EQ(compared(decimal("1"), decimal("1x")), "OXR5505: decimal | 1x");
  EXPECT_EQ(outcomeOf([] { return decimal("x") == decimal("y"); }), "OXR5505: decimal | x");
  const unsigned short cut[] = {'1', 0, 'x'};  // the text ends at a zero
  EXPECT_EQ(compared(PWFData(cut, sizeof cut, DECIMAL, COPY), decimal("1.0")), "true");
}

// Years, months, microseconds, sign.
TEST(PwfDataComparison, DurationsAreEqualByTheirTimesOrMonths) {
  for (const Row& c :
       rows("0 0 0 0  0 0 0 1 true;   0 0 5 0  0 0 5 1 false;  0 0 5 1  0 0 5 1 true;"
            "0 0 5 1  0 0 5 2 false;  1 2 5 0  9 9 5 0 true;   1 2 5 0  1 2 6 0 false;"
            "1 2 0 0  0 14 0 0 true;  1 2 5 0  0 14 0 0 true;  1 2 0 0  0 13 0 0 false;"
            "1 2 0 0  1 2 0 1 false;  1 -12 0 0  2 -24 0 0 true;  0 0 0 0  1 -12 0 0 false;"
            "0 0 5 0  0 0 0 0 false;  1 0 5 0  0 0 0 0 false;  536870912 0 0 0  1610612736 0 0 0 true")) {
    const auto value = [&](std::size_t at) {
      return PWFData(PWFInterval{std::stoi(c[at]), std::stoi(c[at + 1]), std::stol(c[at + 2]), std::stoi(c[at + 3])});
    };
    EXPECT_EQ(compared(value(0), value(4)), c[8]) << shown(c);
  }
}

TEST(PwfDataComparison, DebugText) {
  const std::pair<PWFData, const char*> cases[] = {
      {PWFData(NOTHING), "NOTHING"},   {PWFData(DECIMAL), "NULL"},
      {PWFData(kUnknownType), "NULL"}, {PWFData("1", 1, kUnknownType, COPY), "INVALID"},
      {decimal("1x"), "INVALID"},      {PWFData(PWFInterval{-1, 0, 0, 0}), "INVALID"},
      {decimal("01.50"), "1.5"},       {PWFData(1.5), "1.5E+0"},
      {binary("\x0A\xFF", 2), "0aff"},
  };
  for (const auto& [value, expected] : cases)
    EXPECT_EQ(shown(value.getDebugString()), std::string("STRING ") + expected);
}

}  // namespace
}  // namespace oxr::test
