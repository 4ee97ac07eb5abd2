#include <gtest/gtest.h>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

ELogicalType typeOf(const Case& c) {
  const auto names = wordsOf("None 1 String 3 Integer 5 Float 7 8 9 Binary 11 Boolean 13 Interval DateTime Decimal");
  return c.oneOf("type", names, NOTHING);
}

// A value's type, its bytes, and its standard string.
std::string told(const PWFData& value) {
  return std::to_string(value.getDataLogicalType()) + ' ' + std::to_string(value.getDataLength()) + ' ' +
         toUtf8(value.getDebugString().getPWFStringValue());
}

int lengthOf(const Case& c) {
  return c.number("length", c.word("text") == "null" ? 0 : static_cast<int>(k(c.word("text")).length()));
}

const Members kMembers = {
    {"StandardStrToData",  // what is nested in a failure comes after it
     [](Case& c) {
       try {
         return told(c.converter().StandardStrToData(typeOf(c), c.text("text"), lengthOf(c)));
       } catch (const KelConversionException& e) {
         const KelLog::ComplexItem& cause = *e.nestedItem(e.nestedItemCount() - 1);
         return shown({"KelConversionException", e.messageNumber(), e.inserts()}) + " < " +
                shown({"KelConversionException", cause.messageNumber(), cause.inserts()});
       }
     }},
    {"StandardString", [](Case& c) { return told(c.converter().StandardStrToData(typeOf(c), k(c.word("text")))); }},
    {"StrToBin", [](Case& c) { return told(c.converter().StrToBin(c.text("text"), lengthOf(c))); }},
};

TEST(StandardStrings, AreRead) {
  runTable(R"(
    member             type      text ->
    StandardStrToData,StandardString  String  {abc,''}    -> {2 6 abc,2 0}
    ~                  Integer   {-5,+5}                  -> {4 8 -5,4 8 5}
    ~                  Float     {1.5,-2.5E+3}            -> {6 8 1.5E+0,6 8 -2.5E+3}
    ~                  Binary    {'0A ff',''}             -> {10 2 0aff,10 0}
    ~                  Boolean   {TrUe,1,FALSE,0} length=0 -> {12 4 true,12 4 true,12 4 false,12 4 false}
    ~                  Interval  {P1Y2M,PT90S}            -> {14 24 P1Y2M,14 24 PT1M30S}
    ~                  DateTime  2001-02-03T04:05:06.789Z -> 15 48 2001-02-03T04:05:06.789+00:00
    ~                  Decimal   {-1.50,+007}             -> {16 10 -1.5,16 2 7}
    StandardStrToData  Integer   123  length=2            -> 4 8 12
    ~                  Decimal   15   strict=1            -> 16 4 15
  )",
           kMembers);
}

TEST(StandardStrings, FailureIsNestedInOneOfTheirs) {
  runTable(R"(
    member             type      text ->
    StandardStrToData  Integer   ' 5'             -> OXR5523: Integer |  5 < OXR5505: string |  5
    ~                  Float     1e               -> OXR5523: Float | 1e < OXR5505: string | 1e
    ~                  Binary    0                -> OXR5523: Binary | 0 < OXR5505 bare: Odd number of hexadecimal digits is not allowed
    ~                  Boolean   {yes,1x} length={2,0,-7} -> OXR5523: Boolean | {text} < OXR5505 bare: Boolean value not recognised | boolean | {text}
    ~                  Interval  P1Yx length=-1   -> OXR5523: Interval | P1Yx < OXR5505: interval | P1Yx
    ~                  DateTime  2001- length={-1,4,5} -> OXR5523: DateTime | 2001- < OXR5544
    ~                  Decimal   1.5  strict=1    -> OXR5523: Decimal | 1.5 < OXR5557: 1.5 | 0
    ~                  {String,None,7,17,-1} null -> KelParserException OXR5502: Should not call this method with null a null string!
    ~                  {None,1,7,17,-1}      1    -> KelParserException OXR5502: Should not call this method without a valid type
  )",
           kMembers);
  const std::string lines =
      tracedAt(3, [] { raisedBy([] { converterFor(37).StandardStrToData(BOOLEAN, u"yes"_k); }); });
  EXPECT_LT(lines.find("CP_CONV_INPUT_DATA_INVALID|Boolean value"), lines.find("CP_INVALID_LOGICAL_STRING|Exception"));
}

TEST(StandardStrings, AreNotWrittenOfNothing) {
  const auto written = [](const PWFData& value) {
    return outcomeOf([&] { return converterFor(37).StandardStrFromData(value); });
  };
  for (const ELogicalType type : {NOTHING, STRING, INTEGER, BINARY, DECIMAL, static_cast<ELogicalType>(7)})
    EXPECT_EQ(written(PWFData(type)), "KelParserException OXR5502: Should not call this method with null data");
  EXPECT_EQ(written(PWFData("1", 1, static_cast<ELogicalType>(7), COPY)),
            "KelParserException OXR5502: Should not call this method without a valid type");
}

TEST(StandardStrings, HexadecimalText) {
  runTable(R"(
    member      text ->
    StrToBin    {'0a 1B','0 a1 B',''} -> {10 2 0a1b,10 2 0a1b,10 0}
    ~           {0G,:0,/0,@0,`0,g0}   -> OXR5505: hex character string | {text}
    ~           {0,'0a 1','0a1 '}     -> OXR5505 bare: Odd number of hexadecimal digits is not allowed
    ~           0a1b length={2,0}     -> {10 1 0a,10 0}
    ~           0a   length=-1        -> OXR5505 bare: Invalid input length: -1 | string | binary
    ~           null length=-1        -> OXR5502: Null input pointer
  )",
           kMembers);
  EXPECT_EQ(outcomeOf([] { return converterFor(37).StrFromBin(PWFData(1.5)); }),
            "OXR5522 bare: CPI Internal error from invalid operation on PWFData | Logical type not equal to binary");
}

}  // namespace
}  // namespace oxr::test
