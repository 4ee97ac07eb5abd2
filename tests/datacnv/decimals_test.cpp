#include <gtest/gtest.h>

#include <string>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

// Calls a member that edits the text of a case; the result is what it makes of it.
Member edits(auto edit) {
  return [edit](Case& c) {
    KelWstring text = k(c.word("text"));
    DataCnv cnv = c.converter();
    edit(cnv, text, c.number("places"));
    return toUtf8(text);
  };
}

const Members kMembers = {
    {"shift", edits([](DataCnv& cnv, KelWstring& text, int places) { cnv.adjustDecimalForString(text, places); })},
    {"places", edits([](DataCnv& cnv, KelWstring& text, int places) { cnv.adjustPrecisionForString(text, places); })},
    {"trailingPoint", edits([](DataCnv& cnv, KelWstring& text, int) { cnv.removeTrailingDecimal(text); })},
    {"fromPoint", edits([](DataCnv& cnv, KelWstring& text, int) { cnv.TrimFromDecimal(text); })},
    {"zeros", edits([](DataCnv& cnv, KelWstring& text, int) { cnv.TrimNonSignificantZeros(text); })},
    {"UpdateDecimal",
     [](Case& c) {
       KelWstring text = k(c.word("text"));
       const int position = c.converter().UpdateDecimal(text, c.text("old"), c.text("new"));
       return toUtf8(text) + " at " + std::to_string(position);
     }},
    {"validateDecimal",
     [](Case& c) { return c.converter().validateDecimal(k(c.word("text")), c.sign()), std::string("valid"); }},
    {"isDecimalValid", [](Case& c) { return shown(c.converter().isDecimalValid(k(c.word("text")), c.flag("point"))); }},
};

void run(std::string_view table) {
  runTable(table, kMembers);
}

TEST(Decimals, Edits) {
  run(R"(
    member          text    places ->
    shift           .5      0                     -> .5
    ~               -12     2                     -> -.12
    ~               .1.     -2                    -> 1..
    places          12.345  2                     -> 12.34
    ~               12.345  0                     -> 12
    ~               12.     0                     -> 12.
    ~               ''      2                     -> .00
    ~               .5      3                     -> 0.500
    ~               .000    -1                    -> 0
    ~               12      -2                    -> 12.
    ~               ''      -2                    -> .
    ~               .50     -3                    -> .50
    ~               1234.5  -5                    -> 0
    trailingPoint   {.5,.}  0                     -> {0.5,0}
    zeros           007.500 0                     -> 7.5
    ~               0.00    0                     -> ''
    fromPoint       1.2.3   0                     -> 1
    UpdateDecimal   1.5.6   0      old=. new=::   -> 1::5.6 at 1
    ~               12:345  0      old=,: new=.   -> 12.45 at 2
    ~               1.5     0      old=. new=null -> 1.5 at -1
    validateDecimal +5      0      sign=TS        -> OXR5505: decimal | +5
    ~               5:      0      sign=LS        -> OXR5505: decimal | 5:
    isDecimalValid  1.5E+3  0      point=1        -> true
    ~               5       0      point=1        -> false
    ~               e٥      0                     -> true
    ~               1e2E3   0                     -> false
    ~               1e+-3   0                     -> false
  )");
}

TEST(Decimals, ScalesDoublesByTheSystemsPower) {
  DataCnv converter = converterFor(500);
  // Not interchangeable: a tenth is no double.
  EXPECT_EQ(converter.MultiplyDouble(3.0, -1), 0.30000000000000004);
  EXPECT_EQ(converter.DivideDouble(3.0, 1), 0.3);
  for (const int power : {0, -400})
    EXPECT_EQ(converter.MultiplyDouble(7.25, power) + converter.DivideDouble(7.25, power), 14.5);
}

}  // namespace
}  // namespace oxr::test
