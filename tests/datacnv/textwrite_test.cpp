#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "harness/newprocess.hpp"
#include "harness/table.hpp"

namespace oxr::test {
namespace {

// Writes a field of `size` units by a buffer form, which goes through the string form: `write(converter, case, out,
// length, look...)`. The number has a leading sign, "-" or "+", and no padding, but for what the case says.
Member fields(auto write) {
  return [write](Case& c) {
    DataCnv cnv = c.converter();
    cnv.getDecimalFormatter();  // doubles go the fast way once there is one
    std::vector<unsigned short> field(40, 0xFFFF);
    const int size = c.number("size", 9);
    int length = size;
    const Raised raised = raisedBy([&] {
      write(cnv, c, c.word("target") == "null" ? nullptr : field.data(), length, c.sign(eSignLeadingSeparate),
            c.text("minus", "-"), c.text("plus", "+"), c.has("pad") || c.has("padByte"), c.justification(eJustifyRight),
            c.number<unsigned short>("padByte", k(c.word("pad", " "))[0]), !c.has("padByte"));
    });
    const auto end = field.begin() + (raised.kind.empty() ? length : 0);
    EXPECT_TRUE(raised.kind.empty() || length == size);
    EXPECT_EQ(std::count(end, field.end(), 0xFFFF), field.end() - end) << "written after the text";
    return raised.kind.empty() ? toUtf8(UnitView(field.data(), static_cast<std::size_t>(length))) : shown(raised);
  };
}

const Members kMembers = {
    {"StrFromInt32", fields([](auto& cnv, Case& c, auto&&... a) { cnv.StrFromInt32(c.number("value"), a...); })},
    {"StrFromInt64", fields([](auto& cnv, Case& c, auto&&... a) { cnv.StrFromInt64(c.number<long>("value"), a...); })},
    {"StrFromDbl", fields([](auto& cnv, Case& c, auto* out, int& length, auto... a) {
       cnv.StrFromDbl(c.number<double>("value"), out, length, c.flag("virtual"), c.number("places", -1),
                      c.text("point", "."), a...);
     })},
    {"StrFromDec", fields([](auto& cnv, Case& c, auto* out, int& length, auto... a) {
       cnv.StrFromDec(c.text("value"), out, length, c.flag("virtual"), c.number("places", -1), c.text("point", "."),
                      a..., c.flag("showPlus"));
     })},
    {"bytes_StrFromDec",
     [](Case& c) {
       int size = c.number("size", 9);
       c.converter().StrFromDec(c.text("value"), c.target(size), size, c.number("places"));
       return c.written(size);
     }},
    {"short_StrFromDbl",
     [](Case& c) {
       int length = c.number("size");
       unsigned short out[40];
       c.converter().StrFromDbl(c.number<double>("value"), c.word("target") == "null" ? nullptr : out, length);
       EXPECT_EQ(length, static_cast<int>(UnitView(out).size()));
       return toUtf8(UnitView(out));
     }},
    {"plain_StrFromInt64", [](Case& c) { return shown(c.converter().StrFromInt64(c.number<long>("value"))); }},
    {"plain_StrFromDbl",
     [](Case& c) {
       DataCnv cnv = c.converter();
       if (!c.has("early")) cnv.getDecimalFormatter();
       return shown(cnv.StrFromDbl(c.number<double>("value")));
     }},
    {"plain_StrFromDec", [](Case& c) { return shown(c.converter().StrFromDec(c.text("value"))); }},
};

void run(std::string_view table) {
  runTable(table, kMembers);
}

TEST(NumbersToText, WriteFields) {
  run(R"(
    member           value                size ->
    StrFromInt32,StrFromInt64 -12                  6    pad=0                     -> -00012
    ~                -12                  6    pad=*                     -> ***-12
    ~                -12                  6    pad=0 sign=TS minus=CR    -> 0012CR
    ~                -12                  6    padByte=0xFFF0            -> -00012
    ~                -12                  5    pad=٣                     -> -٣٣12
    ~                12                   5    plus=1                    -> 2
    ~                -12                  4 pad=0 minus=CRR -> OXR5506: integer | string (4 characters) | -12
    StrFromInt32     -1                   1 sign=none -> OXR5506: 4-byte integer | string (no sign) | -1
    StrFromInt64     -1                   1 sign=none -> OXR5506: 8-byte integer | string (no sign) | -1
    StrFromDbl       1.25                 9    places=1                  -> 1.2
    ~                12.345               9    virtual=1 places={0,2}    -> {12.345,1234}
    ~                1500                 9    places=-3                 -> 1.5E+3
    ~                -12.5                8    point=, pad=0             -> -00012,5
    ~                -0.0                 9    minus=CR sign=none        -> -0
    ~                -inf                 9    minus=CR                  -> CRINF
    ~                1.25                 3 -> OXR5506: double | string (3 characters) | 1.25
    StrFromDec       5                    9    showPlus=1                -> +5
    ~                007.500              9                              -> 7.5
    ~                -.5                  9    places=-2 point=, sign=TS -> 0,5-
    ~                -1.25                3                              -> OXR5507: decimal | string | 3 | -1.25
    bytes_StrFromDec -1.5                 9    places=1                  -> 60F1F5
  )");
}

TEST(NumbersToText, WritePlainForms) {
  run(R"(
    member             value ->
    plain_StrFromInt64 -9223372036854775808 way=fast    -> STRING -9223372036854775808
    plain_StrFromDbl   -1500                way=fast    -> STRING -1.5E+3
    ~                  0.999999999999999    way=general -> STRING 9.99999999999999E-1
    ~                  2.2250738585072014E-308 way=fast -> STRING 2.2250738585072014E-308
    plain_StrFromDec   -007.50              way=fast    -> STRING -7.5
    ~                  ''                   way=fast    -> STRING
    ~                  1e5                  way=general -> OXR5505: decimal | 1e5
    ~                  null                 way=general -> OXR5502: Null input pointer
    short_StrFromDbl   -1500                size=8      -> -1.5E+3
    ~                  -1500                size=7      -> OXR5506: double | string (7 characters) | -1500
    ~                  1                    target=null -> OXR5502: Null output buffer pointer
  )");
}

// Of arguments that are all wrong, the first in the order is told.
TEST(NumbersToText, RefuseArgumentsInOrder) {
  run(R"(
    member           value size minus plus sign ->
    StrFromInt32,StrFromInt64,StrFromDbl -1    0    null  null LI   target=null -> OXR5502: Null output buffer pointer
    StrFromInt32,StrFromInt64,StrFromDbl,StrFromDec -1    0    null  null LI -> OXR5502: Invalid output buffer length: 0
    ~                -1    1    null  x    LI               -> OXR5502: Null sign string pointer
    ~                -1    1    x     null LI               -> OXR5502: Null sign string pointer
    ~                -1    1    x     x    LI               -> OXR5502: Sign type invalid for context: 1
    StrFromDec       null  0    null  null LI   target=null -> OXR5502: Null output buffer pointer
    StrFromDec       null  0    null  null LI               -> OXR5502: Null input pointer
    bytes_StrFromDec null  0    x     x    LI   target=null -> OXR5502: Null input pointer
    ~                x     0    x     x    LI   target=null -> OXR5502: Null output buffer pointer
  )");
}

// The plain forms are made of buffer forms, and these of string forms.
TEST(NumbersToText, Trace) {
  runTable(R"(
    member             value ->
    plain_StrFromInt64 1             -> StrFromInt64 StrFromInt64 StrFromInt64 Int64ToUString CheckSign
    plain_StrFromDbl   1     early=1 -> StrFromDbl StrFromDbl doubleToUString
    StrFromInt64       1     size=0  -> StrFromInt64 StrFromInt64
    bytes_StrFromDec   1             -> StrFromDec validateDecimal adjustDecimalForString
  )",
           tracesOf(kMembers));
}

// A decimal comma changes no number. Where the formatter writes signs and digits of the locale's own, so do the
// members.
TEST(NumbersToText, LocalesChangeNothing) {
  const struct {
    const char *locale, *text, *plain;
  } cases[] = {{"de_DE", "-1234.5", "-1.2345E+3"},
               {"sv_SE", "-1234.5", "−1.2345×10^+3"},
               {"ar_EG", "--١٢٣٤.٥", "\u061C-١.٢٣٤٥اس\u061C+٣"}};
  for (const auto& c : cases)
    inANewProcess([&] {
      useLocale(c.locale);
      runTable(std::string("member value ->\nStrFromDbl -1234.5 -> ") + c.text +
                   "\nplain_StrFromDbl -1234.5 -> STRING " + c.plain +
                   "\n~ nan -> STRING NaN\n~ inf -> STRING INF\nplain_StrFromDec -1.50 -> STRING -1.5\n",
               kMembers);
    });
}

}  // namespace
}  // namespace oxr::test
