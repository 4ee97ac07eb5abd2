#include "records/json/reader.hpp"

#include <gtest/gtest.h>

#include "kelwstringconvertor.hpp"

namespace oxr::rec::test {
namespace {

std::string padded(const std::string& line) {
  return line + std::string(JsonReader::kPadding, 'x');
}

// "name=value" for each field, "name{...}" for an object, "name[...]" for an array, as the tree's iterator shows them.
std::string shown(FITreeIterator place) {
  const unsigned short* const name = place.getTagName();
  std::string text = name == nullptr ? "" : toUtf8(UnitView(name));
  if (place.getCategory() == TreeCategory::kField) {
    const PWFData value = place.getData();
    if (value.isNull()) return text + "=null";
    if (value.getDataLogicalType() == BOOLEAN) return text + (value.getBoolValue() ? "=true" : "=false");
    const char* const mark = value.getDataLogicalType() == DECIMAL ? "=" : "='";
    return text + mark + toUtf8(UnitView(static_cast<const unsigned short*>(value.getDataValue())));
  }
  const bool isArray = place.getCategory() == TreeCategory::kArray;
  text += isArray ? '[' : '{';
  const char* separator = "";
  for (bool more = place.moveToFirstChild(); more; more = place.moveToNextSibling()) {
    text += separator + shown(place);
    separator = " ";
  }
  return text + (isArray ? ']' : '}');
}

class JsonReading : public testing::Test {
 protected:
  // A reader that knows the names A and B, and has seen them in another order.
  JsonReading() { reader_.read(std::string_view(padded(R"({"B":1,"A":2})")).substr(0, 13)); }
  std::string read(const std::string& line) {
    const std::string bytes = padded(line);
    try {
      return shown(reader_.read(std::string_view(bytes).substr(0, line.size())).getMsgContentIterator());
    } catch (const JsonLineError& error) {
      return error.what();
    }
  }
  const std::vector<unsigned short> names_ = {'A', 0, 'B', 0};
  JsonReader reader_{names_};
};

TEST_F(JsonReading, MakesATreeOfALine) {
  const std::string seventeen(17, 'x');
  EXPECT_EQ(read(R"({"A":1,"B":"x"})"), "{A=1 B='x}");
  EXPECT_EQ(read(R"({"A":[1,{"B":-1.50e+3,"C D":""},[ true , false ],null],"A":{}})"),
            "{A[A=1 A{B=-1.50e+3 C D='} A[A=true A=false] A=null] A{}}");
  EXPECT_EQ(read(" {\t\"\\u0041\" : 100000000000000000000000000000000000000.0000000001 } "),
            "{A=100000000000000000000000000000000000000.0000000001}");
  EXPECT_EQ(
      read("{\"A\":\"" + seventeen + "\\n\",\"\xC3\x9C\":\"\\ud83d\\ude00\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"}"),
      "{A='" + seventeen + "\n \xC3\x9C='\xF0\x9F\x98\x80\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80}");
  EXPECT_EQ(read("{}"), "{}");
  EXPECT_EQ(read("{\"A\\u0000\":1}"), "{A\uFFFD=1}");
}

TEST_F(JsonReading, PassesOverHiddenNodesAndWalksBack) {
  const std::string line = padded(R"({"A":{"B":1},"B":2,"A":[3],"B":4})");
  JsonTree& tree = reader_.read(std::string_view(line).substr(0, 33));
  tree.hide(3);
  FITreeIterator place = tree.getMsgContentIterator();
  EXPECT_EQ(shown(place), "{A{B=1} A[A=3] B=4}");
  ASSERT_TRUE(place.moveToFirstChild() && place.moveToNextSibling());
  EXPECT_EQ(shown(place), "A[A=3]");
  ASSERT_TRUE(place.moveToPreviousSibling() && place.moveToFirstChild() && !place.moveToNextSibling());
  tree.setRoot(1);
  place = tree.getMsgContentIterator();
  EXPECT_EQ(shown(place), "A{B=1}");
  EXPECT_FALSE(place.moveToNextSibling() || place.moveToParent());
}

TEST_F(JsonReading, RefusesWhatIsNoObject) {
  constexpr struct {
    const char* line;
    const char* told;
  } kCases[] = {
      {"", "column 1: the line is empty"},
      {"[1]", "column 1: an object is wanted, as in {\"NAME\": ...}"},
      {R"({"A":01})", "column 6: no number: 01"},
      {R"({"A":-})", "column 6: no number: -"},
      {R"({"A":1.})", "column 6: no number: 1."},
      {R"({"A":1e})", "column 6: no number: 1e"},
      {R"({"A":nul})", "column 6: no value: nul"},
      {R"({"A":{"B":1}}})", "column 14: more follows after the object"},
      {R"({"A":"\x"})", "column 10: a text has an escape that is none"},
      {R"({"A":"x)", "column 1: a text has no closing quote"},
      {"{\"A\":\"\xFF\"}", "column 1: the line is no UTF-8"},
      {"{\"A\":\"\n\"}", "column 1: a control character stands in a text"},
      {R"({"A":"B":{}})", "column 9: no JSON: a quote, a comma, a colon or a bracket is missing or too many"},
      {R"({"A" 1})", "column 6: no JSON: a quote, a comma, a colon or a bracket is missing or too many"},
  };
  for (const auto& [line, told] : kCases)
    EXPECT_EQ(read(line), told) << line;
  const auto nested = [](std::size_t arrays) {
    return R"({"A":)" + std::string(arrays, '[') + std::string(arrays, ']') + '}';
  };
  EXPECT_EQ(read(nested(100000)), "column 262: too many objects and arrays in each other");
  EXPECT_EQ(read(nested(256)).substr(0, 5), "{A[A[");
}

}  // namespace
}  // namespace oxr::rec::test
