#include "records/json/line.hpp"

#include <gtest/gtest.h>

#include <random>

#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "kelwstringconvertor.hpp"
#include "records/json/json.hpp"

namespace oxr::rec::test {
namespace {

using oxr::test::k;
using Units = std::basic_string<unsigned short>;

// The values as an array, so that the comma between them shows too.
template <class Write>
std::string written(Write write) {
  rapidjson::StringBuffer out;
  JsonLine line(out);
  line.StartArray();
  write(line);
  line.EndArray();
  const std::string json(out.GetString(), out.GetSize());
  return json.substr(1, json.size() - 2);
}

std::string decimal(const std::string& text, bool pointsAsText) {
  const KelWstring units = oxr::fromUtf8(text);
  return written([&](JsonLine& line) {
    line.beginElement();
    line.decimal(units.view(), pointsAsText);
  });
}

TEST(JsonLine, DecimalsKeepTheirDigitsAndAreValid) {
  // The text, as a number, where decimals are text.
  for (const auto& c : oxr::test::rows(
           "0 0 0; 00123 123 123; 000 0 0; -000 -0 -0; -007 -7 -7; 000.50 0.50 \"0.50\"; .5 0.5 \"0.5\"; "
           "-.123 -0.123 \"-0.123\"; -0012.30 -12.30 \"-12.30\"; 12. 12 12; "
           "123456789012345678901234567890.10 123456789012345678901234567890.10 \"123456789012345678901234567890.10\"; "
           // Not a decimal: never a bare word in the line.
           "'' \"\" \"\"; - \"-\" \"-\"; . \".\" \".\"; 1.2.3 \"1.2.3\" \"1.2.3\"; 1E5 \"1E5\" \"1E5\"; "
           "0x1\" \"0x1\\\"\" \"0x1\\\"\"; 12- \"12-\" \"12-\"")) {
    EXPECT_EQ(decimal(c[0], false), c[1]) << c[0];
    EXPECT_EQ(decimal(c[0], true), c[2]) << c[0];
  }
}

TEST(JsonLine, TextIsWhatThePlainWriterWrites) {
  std::mt19937 random(20261121);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned short>(random() % limit); };
  for (int i = 0; i < 40'000; ++i) {
    // Mostly plain text with, in half of the cases, one unit of another kind.
    Units text(below(40), ' ');
    for (unsigned short& unit : text)
      unit = static_cast<unsigned short>(0x20 + below(0x5F));
    const int oddUnits[] = {below(0x20), '"', '\\', 0x7F + below(0x100), 0xD800 + below(0x800), below(0xFFFF)};
    if (!text.empty() && i % 2 == 0)
      text[below(static_cast<unsigned>(text.size()))] = static_cast<unsigned short>(oddUnits[below(6)]);
    if (text.size() > 3 && i % 16 == 0) {
      text[1] = static_cast<unsigned short>(0xD800 + below(0x400));
      text[2] = static_cast<unsigned short>(0xDC00 + below(0x400));
    }
    rapidjson::StringBuffer expected;
    const std::string valid = oxr::toUtf8(text);  // U+FFFD for half a pair
    rapidjson::Writer(expected).String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    const std::string given = written([&](JsonLine& line) {
      line.beginElement();
      line.text(text);
    });
    ASSERT_EQ(given, std::string(expected.GetString(), expected.GetSize()));
  }
}

const WorkerInfoPtr kNone;

std::vector<unsigned short> names(std::initializer_list<const char*> list) {
  std::vector<unsigned short> units;
  for (const char* name : list) {
    const KelWstring text = oxr::fromUtf8(name);
    units.insert(units.end(), text.characters(), text.characters() + text.length() + 1);
  }
  return units;
}

TEST(JsonHandler, WritesNestedElements) {
  const auto known = names({"LONGER-THAN-A-BLOCK-OF-16", "Ä\"", "C"});
  const unsigned short* const a = known.data();
  const unsigned short* const b = a + 26;
  const unsigned short* const c = b + 3;
  JsonHandler json(known, {});
  json.startMessage(kNone, kNone);
  json.startElement(a, kGroupElement, kNone, -1, -1);
  json.startElement(b, kArrayElement, kNone, -1, -1);
  for (int i = 0; i < 2; ++i) {
    json.startElement(b, kFieldElement, kNone, i, -1);
    json.data(PWFData(PWFInt64{-5} * i, false), kNone, -1, -1);
    json.endElement(b, kNone);
  }
  json.endElement(b, kNone);
  json.startElement(k("D").characters(), kFieldElement, kNone, -1, -1);  // not among the names
  json.endElement(nullptr, kNone);
  json.endElement(a, kNone);
  json.startElement(c, kArrayElement, kNone, -1, -1);
  json.startElement(c, kGroupElement, kNone, 0, -1);
  json.endElement(c, kNone);
  json.startElement(c, kGroupElement, kNone, 1, -1);
  json.startElement(b, kFieldElement, kNone, -1, -1);
  json.data(PWFData(k("x \t  ")), kNone, -1, -1);
  json.endElement(b, kNone);
  json.endElement(c, kNone);
  json.endElement(c, kNone);
  json.endMessage(kNone);
  const std::string first =
      "{\"LONGER-THAN-A-BLOCK-OF-16\":{\"Ä\\\"\":[0,-5],\"D\":null},\"C\":[{},{\"Ä\\\"\":\"x \\t\"}]}\n";
  EXPECT_EQ(json.lines(), first);

  json.startMessage(kNone, kNone);
  json.startElement(c, kGroupElement, kNone, -1, -1);
  json.discardUnfinished();
  json.discardUnfinished();
  EXPECT_EQ(json.lines(), first);
  json.startMessage(kNone, kNone);
  json.endMessage(kNone);
  json.discardUnfinished();
  EXPECT_EQ(json.lines(), first + "{}\n");
  json.discard();
  EXPECT_EQ(json.lines(), first);
}

TEST(JsonHandler, RefusesEventsThatDoNotFit) {
  const auto known = names({"A"});
  const unsigned short* const a = known.data();
  JsonHandler json(known, {});
  json.startMessage(kNone, kNone);
  EXPECT_THROW(json.endElement(a, kNone), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(STRING), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(a, 9, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(1, kFieldElement, kNone, -1, -1, -1, -1, -1), FIHandlerException);
  json.startElement(a, kFieldElement, kNone, -1, -1);
  EXPECT_THROW(json.startElement(a, kFieldElement, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(2.5), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
}

}  // namespace
}  // namespace oxr::rec::test
