#include <gtest/gtest.h>

#include <string>

#include "harness/newprocess.hpp"
#include "harness/table.hpp"

namespace oxr::test {
namespace {

// Writes a field of `size` units by both forms, which must do the same: `write(converter, case, out, length, look...)`.
// The number has a leading sign, "-" or "+", and no padding, but for what the case says.
Member fields(auto write, bool hasStringForm = true) {
  return [write, hasStringForm](Case& c) {
    DataCnv cnv = c.converter();
    cnv.getDecimalFormatter();  // doubles go the fast way once there is one
    const int size = c.number("size", 9);
    const bool isNull = c.word("target") == "null";
    std::vector<unsigned short> buffer(40, 0xFFFF);
    unsigned short* const units = isNull ? nullptr : buffer.data();
    KelWstring text = u"before"_k;
    const auto run = [&](auto& out) {
      int length = size;
      const std::string failure = outcomeOf([&] {
        write(cnv, c, out, length, c.sign(eSignLeadingSeparate), c.text("minus", "-"), c.text("plus", "+"),
              c.has("pad") || c.has("padByte"), c.justification(eJustifyRight),
              c.number<unsigned short>("padByte", k(c.word("pad", " "))[0]), !c.has("padByte"));
        return std::string();
      });
      EXPECT_TRUE(failure.empty() || length == size);
      return failure.empty() ? toUtf8(UnitView(buffer.data(), static_cast<std::size_t>(length))) : failure;
    };
    const std::string result = run(units);
    EXPECT_EQ(buffer.back(), 0xFFFF);
    if (!hasStringForm || isNull) return result;
    const std::string again = run(text);
    EXPECT_EQ(again.starts_with("OXR") ? again : toUtf8(text), result) << "the string form";
    return result;
  };
}

constexpr auto kInt32 = [](DataCnv& cnv, Case& c, auto& out, int& length, auto... look) {
  if constexpr (std::is_pointer_v<std::remove_cvref_t<decltype(out)>>)
    cnv.StrFromInt32(c.number("value"), out, length, look...);
};
constexpr auto kInt64 = [](DataCnv& cnv, Case& c, auto& out, int& length, auto... look) {
  cnv.StrFromInt64(c.number<long>("value"), out, length, look...);
};
constexpr auto kDbl = [](DataCnv& cnv, Case& c, auto& out, int& length, auto... look) {
  cnv.StrFromDbl(c.number<double>("value"), out, length, c.flag("virtual"), c.number("places", -1),
                 c.text("point", "."), look...);
};
constexpr auto kDec = [](DataCnv& cnv, Case& c, auto& out, int& length, auto... look) {
  cnv.StrFromDec(c.text("value"), out, length, c.flag("virtual"), c.number("places", -1), c.text("point", "."), look...,
                 c.flag("showPlus"));
};
const Members kMembers = {
    {"StrFromInt32", fields(kInt32, false)},
    {"StrFromInt64", fields(kInt64)},
    {"StrFromDbl", fields(kDbl)},
    {"StrFromDec", fields(kDec)},
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

TEST(NumbersToText, WriteFields) {
  runTable(R"(
    member           value                size ->
    StrFromInt32,StrFromInt64 -12                  6    pad=0                     -> -00012
    ~                -12                  6    pad=0 justify=left        -> -12000
    ~                -12                  6    pad=*                     -> ***-12
    ~                -12                  6    pad=0 sign=TS minus=CR    -> 0012CR
    ~                -12                  6    padByte=0xFFF0            -> -00012
    ~                -12                  6    padByte=0x5C              -> ***-12
    ~                -12                  5    pad=٣                     -> -٣٣12
    ~                0                    1    sign=none                 -> 0
    ~                12                   5    plus=1                    -> 2
    ~                -12                  4 pad=0 minus=CRR -> OXR5506: integer | string (4 characters) | -12
    StrFromInt32     -1                   1 sign=none -> OXR5506: 4-byte integer | string (no sign) | -1
    StrFromInt64     -1                   1 sign=none -> OXR5506: 8-byte integer | string (no sign) | -1
    StrFromInt32     -2147483648          11                             -> -2147483648
    StrFromInt64     -9223372036854775808 20                             -> -9223372036854775808
    StrFromDbl       1.25                 9    places=1                  -> 1.2
    ~                12.345               9    virtual=1 places=2        -> 1234
    ~                0.5                  9    virtual=1 places=0        -> .5
    ~                1500                 9    places=-3                 -> 1.5E+3
    ~                1.5                  9    point=::                  -> 1::5
    ~                -12.5                8    point=, pad=0             -> -00012,5
    ~                -0.0                 9    minus=CR sign=none        -> -0
    ~                -inf                 9    minus=CR                  -> CRINF
    ~                nan                  9    places=2 sign=none        -> NaN.00
    ~                1.25                 3 -> OXR5506: double | string (3 characters) | 1.25
    StrFromDec       5                    9    showPlus=1                -> +5
    ~                5                    5    showPlus=1 plus=PL pad=0  -> PL005
    ~                007.500              9                              -> 7.5
    ~                ''                   9                              -> ''
    ~                -.5                  9    places=-2 point=, sign=TS -> 0,5-
    ~                -1.25                3                              -> OXR5507: decimal | string | 3 | -1.25
    ~                -0                   9    sign=none                 -> OXR5506: decimal | string (no sign) | -0
    ~                5-                   9    sign=TS                   -> OXR5505: decimal | 5-
    bytes_StrFromDec -1.5                 9    places=1                  -> 60F1F5
    ~                1.5                  9    places=3                  -> F1F5F0F0
    ~                1e5                  9                              -> OXR5505: decimal | 1e5
  )",
           kMembers);
}

TEST(NumbersToText, WritePlainForms) {
  runTable(R"(
    member             value ->
    plain_StrFromInt64 -9223372036854775808   way=fast    -> STRING -9223372036854775808
    plain_StrFromDbl   -1500                  way=fast    -> STRING -1.5E+3
    ~                  inf                    way=general -> STRING INF
    ~                  0.999999999999999      way=general -> STRING 9.99999999999999E-1
    plain_StrFromDec   -007.50                way=fast    -> STRING -7.5
    ~                  +.5                    way=fast    -> STRING 0.5
    ~                  000                    way=fast    -> STRING 0
    ~                  ''                     way=fast    -> STRING
    ~                  12345678901234567890.1 way=fast    -> STRING 12345678901234567890.1
    ~                  1e5                    way=general -> OXR5505: decimal | 1e5
    ~                  null                   way=general -> OXR5502: Null input pointer
    short_StrFromDbl   -1500                  size=8      -> -1.5E+3
    ~                  -1500                  size=7      -> OXR5506: double | string (7 characters) | -1500
    ~                  1                      target=null -> OXR5502: Null output buffer pointer
  )",
           kMembers);
}

// Of arguments that are all wrong, the first in the order is told.
TEST(NumbersToText, RefuseArgumentsInOrder) {
  runTable(R"(
    member           value size minus plus sign ->
    StrFromInt32,StrFromInt64,StrFromDbl -1    0    null  null LI   target=null -> OXR5502: Null output buffer pointer
    StrFromInt32,StrFromInt64,StrFromDbl,StrFromDec -1    0    null  null LI -> OXR5502: Invalid output buffer length: 0
    ~                -1    1    null  x    LI               -> OXR5502: Null sign string pointer
    ~                -1    1    x     null LI               -> OXR5502: Null sign string pointer
    ~                -1    1    x     x    LI               -> OXR5502: Sign type invalid for context: 1
    ~                -1    1    x     x    TI               -> OXR5502: Sign type invalid for context: 2
    StrFromDec       null  0    null  null LI   target=null -> OXR5502: Null output buffer pointer
    StrFromDec       null  0    null  null LI               -> OXR5502: Null input pointer
    bytes_StrFromDec null  0    x     x    LI   target=null -> OXR5502: Null input pointer
    ~                x     0    x     x    LI   target=null -> OXR5502: Null output buffer pointer
    ~                x     0    x     x    LI               -> OXR5502: Invalid output buffer size: 0
  )",
           kMembers);
}

// The plain forms are made of buffer forms, and these of string forms; a case of a field runs both.
TEST(NumbersToText, Trace) {
  runTable(R"(
    member             value ->
    plain_StrFromInt64 1             -> StrFromInt64 StrFromInt64 StrFromInt64 Int64ToUString CheckSign
    plain_StrFromDbl   1     early=1 -> StrFromDbl StrFromDbl doubleToUString
    plain_StrFromDec   5-            -> StrFromDec StrFromDec StrFromDec validateDecimal
    StrFromInt64       1     size=0  -> StrFromInt64 StrFromInt64 StrFromInt64
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
  for (const auto& [locale, text, plain] : cases)
    inANewProcess([&] {
      useLocale(locale);
      runTable(std::string("member value ->\nStrFromDbl -1234.5 -> ") + text + "\nplain_StrFromDbl -1234.5 -> STRING " +
                   plain + "\n~ nan -> STRING NaN\n~ inf -> STRING INF\nplain_StrFromDec -1.50 -> STRING -1.5\n",
               kMembers);
    });
}

}  // namespace
}  // namespace oxr::test
