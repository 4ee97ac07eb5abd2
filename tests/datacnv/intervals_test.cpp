#include <gtest/gtest.h>

#include <cstdio>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

// "years/months/microseconds/sign".
PWFInterval intervalOf(const Case& c) {
  PWFInterval value{};
  std::sscanf(c.word("value").c_str(), "%d/%d/%ld/%d", &value._years, &value._months, &value._microseconds,
              &value._sign);
  return value;
}

const Members kMembers = {
    {"StrToInterval",  // the value as it is written, and the events in the log
     [](Case& c) {
       std::string text;
       const std::string events = tracedAt(0, [&] {
         text = outcomeOf([&] {
           return toUtf8(PWFData(c.converter().StrToInterval(c.text("text"), c.number("length", -1)))
                             .getDebugString()
                             .getPWFStringValue());
         });
       });
       return text + (events.empty() ? "" : " | " + events.substr(0, events.size() - 1));
     }},
    {"StrFromInterval", [](Case& c) { return shown(c.converter().StrFromInterval(intervalOf(c))); }},
    {"Field",  // both forms at once; nothing is written after the text in the buffer
     [](Case& c) {
       DataCnv converter = c.converter();
       int length = c.number("length"), bufferLength = length;
       KelWstring text = u"old"_k;
       unsigned short buffer[300] = {};
       const auto write = [&](auto& out, int& size) {
         converter.StrFromInterval(intervalOf(c), out, size, c.has("pad"), c.justification(),
                                   c.number<unsigned short>("pad"), c.flag("unicode", true));
       };
       write(text, length);
       write(buffer, bufferLength);
       EXPECT_TRUE(text == buffer && bufferLength == length && text.length() == static_cast<unsigned>(length));
       return toUtf8(text);
     }},
    {"AppendIntervalField",
     [](Case& c) {
       KelWstring text = u"P"_k;
       c.converter().AppendIntervalField(c.number("value"), text, c.flag("fraction"));
       return toUtf8(text);
     }},
};

TEST(Intervals, AreReadOrRefused) {
  runTable(R"(
    member         text ->
    StrToInterval  {P1Y2M,-P1DT2H3M4.5S,P99999999D}    -> {text}
    ~              {P0Y,PY,-PT0S,-P0M}                 -> {PT0S,PT0S,-PT0S,-PT0S}
    ~              {P1H,P5S,PT1HT2H,PT1M1ST2M,PTTS}    -> {PT1H,PT5S,PT3H,PT3M1S,PT0S}
    ~              {PT0.000001S,PT.25S,PT1.0S,PT1.,P1.T2M} -> {PT0.000001S,PT0.25S,PT1S,PT1S,PT2M1S}
    ~              {P.S,-P.S,PT1.S,-PT1.S,PT12.S}      -> {PT0.01S,-PT0.001S,PT1.0001S,-PT1.00001S,PT12.00001S}
    ~              P00000000000000000001Y              -> P1Y
    ~              P1Yxx length={3,4}                  -> {P1Y,OXR5505: interval | P1Yx}
    ~              P٣Y                                 -> P1587Y
    ~              PT0.0000019S    -> PT0.000001S | DataCnv::StrToInterval: CPI Seconds precision finer than microseconds|interval|{text}
    ~              PT0.999999999S  -> PT0.999999S | DataCnv::StrToInterval: CPI Seconds precision finer than microseconds|interval|{text}
    ~              PT1234.S        -> PT20M34S | DataCnv::StrToInterval: CPI Seconds precision finer than microseconds|interval|{text}
    ~              PT1.1234567SX   -> OXR5505: interval | {text} | DataCnv::StrToInterval: CPI Seconds precision finer than microseconds|interval|{text}
    ~              {'',-,P,-P,1Y,p1Y,' P1Y',--P1Y,+P1Y} -> OXR5505: interval | {text}
    ~              null length={-1,3,-2}                -> OXR5505: interval |
    ~              {P1,P1Y2,PT1.5,P99999999999,PT,P1DT} -> OXR5505: interval | {text}
    ~              {P1M1Y,P1Y1Y,P1M1M,P1D1M,P1D1D,P1H1H,PT1D,PT1M1H,PT1M1M} -> OXR5505: interval | {text}
    ~              {P1T,P1YT,P1.T,PT1.1.1S,PT1.1M,PT1S1S,PT1S1.,P1X,P1Y-1M,P1ÿ} -> OXR5505: interval | {text}
    ~              {P2147483648Y,P99999999999X,PT0.1234567890S,P99999999DT2147483647H} -> OXR5547: interval | {text}
    ~              {P100000000D,P2147483647D}           -> OXR5549: interval | {text}
    ~              {P1Y1D,P1YT1.,P1M.000001S}           -> OXR5546: interval | {text}
  )",
           kMembers);
}

TEST(Intervals, AreWritten) {
  runTable(R"(
    member           value ->
    StrFromInterval  {0/0/90000000/0,0/0/1500000/0,0/0/86400000000/0,0/0/0/7} way=fast -> {STRING PT1M30S,STRING PT1.5S,STRING P1D,STRING -PT0S}
    ~                2147483647/2147483647/9223372036854775807/1 -> STRING -P2147483647Y2147483647M106751991DT4H54.775807S
    ~                {-1/0/0/0,1/-1/0/0} way=general             -> OXR5506: interval | positive integer | -1
    ~                {0/0/-86400000000/0,0/0/-1/0,0/0/-61000000/1} -> OXR5506: interval | positive integer | -1
    Field            0/0/90000000/0 length={0,9,-5}              -> PT1M30S
    ~                0/0/90000000/0 length={9,7,-2147483648} pad=42 justify=left -> {PT1M30S**,PT1M30S,PT1M30S}
    ~                0/0/90000000/0 length=9 pad={0x5C,0x15C} unicode=0 -> **PT1M30S
    AppendIntervalField  {0,7,2147483647} fraction=0             -> {P0,P7,P2147483647}
    ~                {0,50000,999999,100000} fraction=1          -> {P,P05,P999999,P1}
    ~                -1  fraction={0,1}                          -> OXR5506: interval | positive integer | -1
  )",
           kMembers);
}

TEST(Intervals, TraceShowsTheFields) {
  DataCnv converter = converterFor(37);
  EXPECT_EQ(tracedAt(-1, [&] { converter.StrToInterval(u"PT0.0000019S"_k.characters(), -1); }), "") << "no events";
  const std::string lines = tracedAt(4, [&] { converter.StrFromInterval(PWFInterval{0, 0, 1'500'000, 1}); });
  const std::string name = "DataCnv::StrFromInterval", entry = "> " + name + '\n', field = "> DataCnv::AppendInt";
  EXPECT_TRUE(lines.starts_with(entry + name + ": intervalIn._years|0\n" + name + ": intervalIn._months|0\n" + name +
                                ": intervalIn._microseconds|1500000\n" + name + ": intervalIn._sign|1\n" + entry +
                                entry + field))
      << lines;
}

}  // namespace
}  // namespace oxr::test
