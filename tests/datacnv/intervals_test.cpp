#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

// "-1Y2M 3us": sign, years, months, microseconds.
std::string told(const PWFInterval& value) {
  return (value._sign != 0 ? "-" : "") + std::to_string(value._years) + "Y" + std::to_string(value._months) + "M " +
         std::to_string(value._microseconds) + "us";
}

// "years/months/microseconds", and the sign after that.
PWFInterval intervalOf(const Case& c) {
  PWFInterval value{};
  char separator;
  std::istringstream words(c.word("value"));
  words >> value._years >> separator >> value._months >> separator >> value._microseconds >> separator >> value._sign;
  return value;
}

// What comes of a call, and then its warnings.
std::string withWarnings(const std::function<std::string()>& call) {
  const auto sink = std::make_shared<RecordingLogSink>();
  std::string text;
  {
    const ScopedLogSink scope(sink);
    text = outcomeOf(call);
  }
  for (const LogRecord& record : sink->records())
    if (record.kind == RecordKind::event && static_cast<unsigned>(record.messageNumber) == 0x800015AC)
      for (const std::string& insert : record.inserts)
        text += " | " + insert;
  return text;
}

const Members kMembers = {
    {"StrToInterval",
     [](Case& c) {
       return withWarnings([&] { return told(c.converter().StrToInterval(c.text("text"), c.number("length", -1))); });
     }},
    {"StrFromInterval", [](Case& c) { return shown(c.converter().StrFromInterval(intervalOf(c))); }},
    {"Field",  // both forms at once; nothing is written after the text in the buffer
     [](Case& c) {
       DataCnv converter = c.converter();
       const auto pad = static_cast<unsigned short>(c.number("pad"));
       int length = c.number("length"), bufferLength = length;
       KelWstring text = u"old"_k;
       unsigned short buffer[300] = {};
       converter.StrFromInterval(intervalOf(c), text, length, c.has("pad"), c.justification(), pad,
                                 c.flag("unicode", true));
       converter.StrFromInterval(intervalOf(c), buffer, bufferLength, c.has("pad"), c.justification(), pad,
                                 c.flag("unicode", true));
       EXPECT_TRUE(text == buffer && bufferLength == length && text.length() == static_cast<unsigned>(length));
       return toUtf8(text) + '|';
     }},
    {"AppendIntervalField",
     [](Case& c) {
       KelWstring text = u"P"_k;
       c.converter().AppendIntervalField(c.number("value"), text, c.flag("fraction"));
       return toUtf8(text);
     }},
};

TEST(Intervals, AreRead) {
  runTable(R"(
    member         text ->
    StrToInterval  P1Y2M                  -> 1Y2M 0us
    ~              -P1DT2H3M4.5S          -> -0Y0M 93784500000us
    ~              {P0Y,PY,-PT0S,-P0M}    -> {0Y0M 0us,0Y0M 0us,-0Y0M 0us,-0Y0M 0us}
    ~              P99999999D             -> 0Y0M 8639999913600000000us
    ~              P2147483647Y2147483647M -> 2147483647Y2147483647M 0us
    ~              {P1H,P5S,PT1HT2H,P1YT} -> {0Y0M 3600000000us,0Y0M 5000000us,0Y0M 10800000000us,OXR5505: interval | P1YT}
    ~              {PT1M1ST2M,PTTS,P1.T,P1.T2M} -> {0Y0M 181000000us,0Y0M 0us,OXR5505: interval | P1.T,0Y0M 121000000us}
    ~              {PT0.000001S,PT.25S,PT1.000S,PT1.,P1.} -> {0Y0M 1us,0Y0M 250000us,0Y0M 1000000us,0Y0M 1000000us,0Y0M 1000000us}
    ~              {P.S,-P.S,PT1.S,-PT1.S,PT12.S} -> {0Y0M 10000us,-0Y0M 1000us,0Y0M 1000100us,-0Y0M 1000010us,0Y0M 12000010us}
    ~              P00000000000000000001Y -> 1Y0M 0us
    ~              P1Yxx length={3,4}     -> {1Y0M 0us,OXR5505: interval | P1Yx}
    ~              P٣Y                    -> 1587Y0M 0us
  )",
           kMembers);
}

// The digits that are too many are dropped, not rounded; the warning comes even if the text is refused later.
TEST(Intervals, WarnOfFineSeconds) {
  runTable(R"(
    member         text ->
    StrToInterval  PT0.0000019S    -> 0Y0M 1us | CPI Seconds precision finer than microseconds | interval | PT0.0000019S
    ~              PT0.999999999S  -> 0Y0M 999999us | CPI Seconds precision finer than microseconds | interval | PT0.999999999S
    ~              PT1.1234567SX   -> OXR5505: interval | PT1.1234567SX | CPI Seconds precision finer than microseconds | interval | PT1.1234567SX
    ~              PT123.S         -> 0Y0M 123000001us
    ~              PT1234.S        -> 0Y0M 1234000000us | CPI Seconds precision finer than microseconds | interval | PT1234.S
  )",
           kMembers);
}

TEST(Intervals, AreRefused) {
  runTable(R"(
    member         text ->
    StrToInterval  {'',-,P,-P,1Y,p1Y,' P1Y',--P1Y,+P1Y} -> OXR5505: interval | {text}
    ~              null length={-1,3,-2}                -> OXR5505: interval |
    ~              {P1,P1Y2,PT1.5,P99999999999,PT,P1DT} -> OXR5505: interval | {text}
    ~              {P1M1Y,P1Y1Y,P1M1M,P1D1M,P1D1D,P1D1Y,P1H1H,PT1D,PT1M1H,PT1M1M} -> OXR5505: interval | {text}
    ~              {P1T,PT1.1.1S,PT1.1M,PT1S1S,PT1S1.,P1X,PYM-,P1Y-1M,P1ÿ} -> OXR5505: interval | {text}
    ~              {P2147483648Y,P99999999999X,PT0.1234567890S,P99999999999999999999Y} -> OXR5547: interval | {text}
    ~              P99999999DT2147483647H       -> OXR5547: interval | {text}
    ~              {P100000000D,P2147483647D}   -> OXR5549: interval | {text}
    ~              {P1Y1D,P1YT1.,P1M.000001S}     -> OXR5546: interval | {text}
  )",
           kMembers);
}

TEST(Intervals, AreWritten) {
  runTable(R"(
    member           value ->
    StrFromInterval  {0/0/90000000/0,0/0/1500000/0,0/0/1/0,0/0/86400000000/0,0/0/0/0} way=fast -> {STRING PT1M30S,STRING PT1.5S,STRING PT0.000001S,STRING P1D,STRING PT0S}
    ~                {0/0/0/7,1/2/0/0,0/0/93784500000/1,0/0/3600000000/0}  -> {STRING -PT0S,STRING P1Y2M,STRING -P1DT2H3M4.5S,STRING PT1H}
    ~                2147483647/2147483647/9223372036854775807/1 -> STRING -P2147483647Y2147483647M106751991DT4H54.775807S
    ~                {-1/0/0/0,1/-2/0/0} way=general             -> {OXR5506: interval | positive integer | -1,OXR5506: interval | positive integer | -2}
    ~                {0/0/-86400000000/0,0/0/-1/0,0/0/-61000000/1} -> {OXR5506: interval | positive integer | -1,OXR5506: interval | positive integer | -1,OXR5506: interval | positive integer | -1}
    Field            0/0/90000000/0 length={0,9,-5}              -> PT1M30S|
    ~                0/0/90000000/0 length={9,7,-2147483648} pad=42 justify=left -> {PT1M30S**|,PT1M30S|,PT1M30S|}
    ~                0/0/90000000/0 length=9 pad=0x5C unicode=0  -> **PT1M30S|
    ~                0/0/90000000/0 length=9 pad=0x15C justify=right unicode=0 -> **PT1M30S|
    AppendIntervalField  {0,7,2147483647} fraction=0             -> {P0,P7,P2147483647}
    ~                {0,50000,999999,1000000,100000} fraction=1  -> {P,P05,P999999,P,P1}
    ~                -1  fraction={0,1}                          -> OXR5506: interval | positive integer | -1
  )",
           kMembers);
}

TEST(Intervals, TraceShowsFieldsAndMembers) {
  DataCnv converter = converterFor(37);
  const PWFInterval value{0, 0, 61'500'000, 1};
  EXPECT_EQ(enteredWords([&] { converter.StrFromInterval(value); }),
            "StrFromInterval StrFromInterval StrFromInterval AppendIntervalField AppendIntervalField "
            "AppendIntervalField");
  const std::string lines = tracedAt(4, [&] { converter.StrFromInterval(value); });
  EXPECT_NE(lines.find("DataCnv::StrFromInterval: intervalIn._years|0\nDataCnv::StrFromInterval: intervalIn._months|0\n"
                       "DataCnv::StrFromInterval: intervalIn._microseconds|61500000\n"
                       "DataCnv::StrFromInterval: intervalIn._sign|1\n"),
            lines.npos);
  EXPECT_EQ(enteredWords([&] { converter.StrToInterval(u"P1Y"_k.characters(), -1); }), "StrToInterval");
}

}  // namespace
}  // namespace oxr::test
