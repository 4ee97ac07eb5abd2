// Values in JSON lines are held against models in fuzz/records/jsonvalue_check.hpp.

#include "records/json/json.hpp"

#include <gtest/gtest.h>

#include "harness/text.hpp"

namespace oxr::rec::test {
namespace {

using oxr::test::k;

const WorkerInfoPtr kNone;
const std::vector<unsigned short> kNames = {'A', 0, 'B', 'C', 0};
const unsigned short* const kA = kNames.data();
const unsigned short* const kBC = kA + 2;

void writeField(JsonHandler& json, const unsigned short* name, int index, const PWFData& value) {
  json.startElement(name, kFieldElement, kNone, index, -1);
  json.data(value, kNone, -1, -1);
  json.endElement(name, kNone);
}

TEST(JsonHandler, WritesKnownAndUnknownNames) {
  JsonHandler json(kNames, {});
  json.startMessage(kNone, kNone);
  json.startElement(kA, kGroupElement, kNone, -1, -1);
  json.startElement(kBC, kArrayElement, kNone, -1, -1);
  writeField(json, kBC, 0, PWFData(PWFInt64{0}, false));
  writeField(json, kBC, 1, PWFData(PWFInt64{-5}, false));
  json.endElement(kBC, kNone);
  json.startElement(k("Ä\"").characters(), kFieldElement, kNone, -1, -1);  // not among the names, and without a value
  json.endElement(nullptr, kNone);
  json.endElement(kA, kNone);
  writeField(json, nullptr, -1, PWFData(k("x \t  ")));
  json.endMessage(kNone);
  const std::string first = "{\"A\":{\"BC\":[0,-5],\"Ä\\\"\":null},\"\":\"x \\t\"}\n";
  EXPECT_EQ(json.lines(), first);

  // Only what was begun last can be discarded.
  json.startMessage(kNone, kNone);
  json.discardUnfinished();
  json.discardUnfinished();
  json.startMessage(kNone, kNone);
  json.endMessage(kNone);
  json.discardUnfinished();
  EXPECT_EQ(json.lines(), first + "{}\n");
  json.discard();
  EXPECT_EQ(json.lines(), first);
}

TEST(JsonHandler, RefusesEventsThatDoNotFit) {
  JsonHandler json(kNames, {});
  json.startMessage(kNone, kNone);
  EXPECT_THROW(json.endElement(kA, kNone), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(STRING), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(kA, 9, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(1, kFieldElement, kNone, -1, -1, -1, -1, -1), FIHandlerException);
  json.startElement(kA, kFieldElement, kNone, -1, -1);
  EXPECT_THROW(json.startElement(kA, kFieldElement, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(2.5), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
  json.startMessage(kNone, kNone);
  json.startElement(kA, kGroupElement, kNone, -1, -1);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
}

}  // namespace
}  // namespace oxr::rec::test
