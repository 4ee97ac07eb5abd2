#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "harness/newprocess.hpp"
#include "harness/table.hpp"

namespace oxr::test {
namespace {

// Reads a field: "-" or "+" before the digits, nothing trimmed, the pad "*", but for what the case says. The text that
// follows the field is not part of it.
template <bool kHasPlaces = true>
Member fields(auto member) {
  return [member](Case& c) {
    DataCnv cnv = c.converter();
    cnv.getDecimalFormatter();  // doubles go the fast way once there is one
    const bool isNull = c.word("field") == "null";
    const KelWstring text = k(c.word("field") + "7"), pad = k(c.word("pad", "*"));
    const auto call = [&](auto... places) {
      return member(cnv, isNull ? nullptr : text.characters(), c.number("length", static_cast<int>(text.length()) - 1),
                    places..., c.sign(eSignLeadingSeparate), c.text("minus", "-"), c.text("plus", "+"), c.trim(),
                    c.justification(eJustifyLeft), c.number<unsigned short>("padByte", pad[0]), !c.has("padByte"));
    };
    if constexpr (!kHasPlaces)
      return shown(call());
    else
      return shown(call(c.flag("virtual"), c.number("places", 2), c.text("point", ",")));
  };
}
// Reads a plain text.
Member texts(auto member) {
  return [member](Case& c) {
    DataCnv cnv = c.converter();
    if (!c.has("early")) cnv.getDecimalFormatter();
    const KelWstring text = k(c.word("field"));
    int length = c.number("length", static_cast<int>(text.length()));
    return shown(member(c, cnv, text, length));
  };
}
// What comes of a case without and with strict checking: "1.5 / OXR5557: 1,5 | 2" where that differs.
Member looselyAndStrictly(Member member) {
  return [member](Case& c) {
    std::string texts[2];
    for (const char* const strict : {"0", "1"}) {
      c.words["strict"] = strict;
      texts[*strict - '0'] = outcomeOf([&] { return member(c); });
    }
    return texts[0] == texts[1] ? texts[0] : (texts[0].empty() ? "''" : texts[0]) + " / " + texts[1];
  };
}

constexpr auto kDec = [](DataCnv& cnv, auto... a) { return cnv.StrToDec(a...); };
constexpr auto kDbl = [](DataCnv& cnv, auto... a) { return cnv.StrToDbl(a...); };
const Members kMembers = {
    {"StrToInt32", fields<false>([](DataCnv& cnv, auto... a) { return cnv.StrToInt32(a...); })},
    {"StrToInt64", fields<false>([](DataCnv& cnv, auto... a) { return cnv.StrToInt64(a...); })},
    {"StrToDec", fields(kDec)},
    {"StrToDbl", fields(kDbl)},
    {"StrToDec2", looselyAndStrictly(fields(kDec))},
    {"StrToDbl2", looselyAndStrictly(fields(kDbl))},
    {"UStringToInt64", texts([](Case&, DataCnv& cnv, auto& text, int) { return cnv.UStringToInt64(text); })},
    {"PWFStringTodouble", texts([](Case&, DataCnv& cnv, auto& text, int) { return cnv.PWFStringTodouble(text); })},
    {"plain_StrToDbl", texts([](Case& c, DataCnv& cnv, auto&, int n) { return cnv.StrToDbl(c.text("field"), n); })},
    {"short_StrToDec",
     texts([](Case& c, DataCnv& cnv, auto&, int& n) { return cnv.StrToDec(c.text("field"), n, c.trim()); })},
    {"bytes_StrToDec", texts([](Case& c, DataCnv& cnv, auto&, int& n) {
       n = c.sizeOf("field");
       return cnv.StrToDec(c.bytes("field"), n, c.number("places"));
     })},
};

void run(std::string_view table) {
  runTable(table, kMembers);
}

TEST(NumbersFromText, ReadIntegers) {
  run(R"(
    member                field                 sign ->
    StrToInt32,StrToInt64 +12                   LS   way=fast                       -> 12
    ~                     12CR                  TS   minus=CR way=fast              -> -12
    ~                     -                     LS   way=general                    -> 0
    ~                     **12                  LS   trim=pad justify=right padByte=0x15C way=general -> 12
    ~                     **12                  LS   trim=pad justify=right padByte=0x40 -> OXR5505: string | **12
    ~                     ٣                     LS   way=general                    -> 1587
    StrToInt32            123456789             LS   way=fast                       -> 123456789
    ~                     2147483647            LS   way=general                    -> 2147483647
    ~                     2147483648            LS -> OXR5506: string | 4-byte integer | 2147483648
    ~                     23s                   TI                                  -> -233
    StrToInt64            9223372036854775807   LS   way=general                    -> 9223372036854775807
    ~                     -9223372036854775809* LS trim=pad -> OXR5506: string | 8-byte integer | -9223372036854775809*
    ~                     00000000000000000000  LS -> OXR5506: string | 8-byte integer | 00000000000000000000
  )");
}

// The members with a 2 in their names are tried without and with strict checking.
TEST(NumbersFromText, ReadDecimalsAndDoubles) {
  run(R"(
    member            field                places ->
    StrToDec2         -5                   -2                                    -> OXR5505: string | -5 / OXR5553: -5
    ~                 1.50                 2                                     -> 1.50 / OXR5551: 1.50
    ~                 1E2                  2                                     -> 1E2 / OXR5555: 1E2
    ~                 ''                   2                                     -> '' / OXR5557:  | 2
    ~                 ***                  0      trim=pad                       -> 0 / OXR5550: ***
    ~                 ' 7 '                0                                     -> 7 / OXR5505: string |  7
    StrToDbl2         1,50                 2      way=fast                       -> 1.5
    ~                 1::50                2      point=:: way=general           -> 1.5
    ~                 1,5,0                2 -> OXR5505: string | 1,5,0 / OXR5557: 1,5,0 | 2
    ~                 -1,5                 -3                                    -> -1.5 / OXR5556: -1,5
    ~                 15                   -1     point=5                        -> 1 / OXR5554: 15
    ~                 5,                   -2     way=general                    -> 5
    ~                 0E999999999999       -3                                    -> inf
    ~                 -***                 0      trim=pad                       -> -0 / OXR5552: -***
    StrToDec,StrToDbl 1,50                 2      trim=pad pad=0 strict=1        -> 1.5
    StrToDbl          100                  2      trim=pad pad=0 strict=1 virtual=1 -> 0.01
    StrToDbl          12                   0      pad=0 strict=1 way=general     -> 12
    ~                 900719925474099,2    1      way=fast                       -> 900719925474099.2
    ~                 900719925474099,3    1      way=fast                       -> 900719925474099.2
    ~                 9007199254740993     0      way=general                    -> 9007199254740992
    ~                 0000000000000001,50  2      way=fast                       -> 1.5
    ~                 00000000000000001,50 2      way=general                    -> 1.5
  )");
}

TEST(NumbersFromText, ReadPlainTexts) {
  run(R"(
    member            field ->
    UStringToInt64    ''   way=fast    -> 0
    UStringToInt64    {9223372036854775807,-9223372036854775808} way=fast    -> {field}
    ~                 999999999999999999x9             -> OXR5505: string | 999999999999999999x9
    PWFStringTodouble,plain_StrToDbl -1.5E-3              way=fast    -> -0.0015
    ~                 0.100000000000000005551115123125782702118158340454101562500000001 way=general -> 0.1
    ~                 0.10000000000000000555111512312578270211815834045410156250000001 way=fast    -> 0.1
    PWFStringTodouble +1.5                             -> OXR5505: string | +1.5
    ~                 .x                               -> 0
    ~                 ''                               -> OXR5505: string | 
    plain_StrToDbl    .                                -> OXR5505: string | .
    ~                 1.5x                             -> OXR5505: string | 1.5x
    ~                 0x1p4                            -> 16
    ~                 null                 length=1    -> OXR5502: Error converting from unicode | 1
    ~                 null length=-1 -> OXR5505 bare: Tried to convert a zero length string to a double | float
    bytes_StrToDec    60F1F2F3F4           places=2    -> -12.34
    ~                 F1A7                             -> OXR5505: decimal | 1x
    ~                 ''                               -> OXR5502: size < MinBytesPerChar for codepage: 37
    ~                 null                 size=0      -> OXR5502: Null input pointer
    ~                 F1 size=-1 -> OXR5505 bare: Tried to convert a zero length string to a decimal | decimal | 
  )");
  EXPECT_EQ(raisedBy([] { converterFor(37).StrToDbl(u"1\0002"_k.characters(), 3); }).number & 0xFFFF, 5505);
}

// Of arguments that are all wrong, the first in the order is told; row by row one more of them is mended.
TEST(NumbersFromText, RefuseArgumentsInOrder) {
  run(R"(
    member            field length minus plus point sign strict ->
    StrToInt32 null -1 null null null TI 1 -> OXR5502: Null input pointer passed into DataCnv::StrToInt32
    ~ '' -1 null null null TI 1 -> OXR5505 bare: Tried to convert a zero length string to a integer | integer
    ~ '' 0 - null null TI 1 -> OXR5502: Null sign string pointer passed into DataCnv::StrToInt32
    ~                 ''    0      -     +    null  TI   1      -> 0
    StrToInt64 null -1 null null null TI 1 -> OXR5502: Null input pointer passed into DataCnv::StrToInt64
    ~ '' -1 null null null TI 1 -> OXR5505 bare: Tried to convert a zero length string to an integer | integer
    StrToDec,StrToDbl null  -1     null  null null  TI   1      -> OXR5502: Null input pointer
    StrToDec '' -1 null null null TI 1 -> OXR5505 bare: Tried to convert a zero length string to a decimal | decimal | 
    StrToDbl '' -1 null null null TI 1 -> OXR5505 bare: Tried to convert a zero length string to a double | float | 
    StrToInt64,StrToDec,StrToDbl ''    0      null  +    null  TI   1      -> OXR5502: Null sign string pointer
    ~                 ''    0      -     null null  TI   1      -> OXR5502: Null sign string pointer
    StrToDec,StrToDbl ''    0      -     +    null  TI   1      -> OXR5502: Null decimal point string pointer
    StrToInt64,StrToDec,StrToDbl ''    0      -     +    ,     TI   1      -> OXR5502: Sign type invalid for context: 2
    StrToDbl          ''    0      -     +    ,     LS   1      -> OXR5550: 
  )");
}

// The general ways are made of other members, which the trace shows.
TEST(NumbersFromText, Trace) {
  runTable(R"(
    member            field ->
    StrToInt32        1                  -> StrToInt32 TrimData CheckSign
    StrToInt64        1     padByte=0x5C -> StrToInt64 toUnicodeString TrimData CheckSign
    UStringToInt64    1                  -> UStringToInt64
    PWFStringTodouble 1     early=1      -> UStringTodouble
    bytes_StrToDec    F1    places=1     -> StrToDec toUnicodeString validateDecimal adjustDecimalForString
    StrToDbl 1,50 -> StrToDbl TrimData CheckSign UpdateDecimal CheckExponentialSign isDecimalValid UStringTodouble
    short_StrToDec    null               -> StrToDec StrToDec StrToDecimal
  )",
           tracesOf(kMembers));
}

// Neither ICU's default locale nor the process's own may change a reading. Swedish and Arabic have an exponent symbol
// of their own.
void expectTheSameNumbers(bool hasAsciiExponent) {
  run(R"(
    member            field ->
    StrToDbl2         -234567,75           -> -234567.75
    PWFStringTodouble -1.5       early=1   -> -1.5
    plain_StrToDbl    -1.5                 -> -1.5
    StrToDbl2         -1,5e-3    places=-3 -> )" +
      std::string(hasAsciiExponent ? "-0.0015" : "-1.5"));
}

TEST(NumbersFromText, LocalesChangeNothing) {
  for (const std::string name : {"de_DE", "sv_SE", "ar_EG", "de_CH"})
    inANewProcess([&] {
      useLocale(name.c_str());
      std::setlocale(LC_ALL, (name + ".UTF-8").c_str());  // the process's own, where it is installed
      expectTheSameNumbers(name != "sv_SE" && name != "ar_EG");
    });
}

}  // namespace
}  // namespace oxr::test
