// Real record files, where they are at hand, compared value by value with what another reader made of them.

#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"
#include "records/json/rapidjson.hpp"
// Behind rapidjson.hpp, which sets it up.
#include <rapidjson/document.h>

namespace oxr::rec::test {
namespace {

// Numbers stay as they are written, so that no digit is lost in a comparison.
rapidjson::Document parsed(const std::string& line) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseNumbersAsStringsFlag>(line.data(), line.size());
  EXPECT_FALSE(document.HasParseError()) << line;
  return document;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

// Controls to blanks, blanks at both ends away. UTF-8: the C1 controls are C2 80 to C2 9F.
std::string tidyText(const std::string& text) {
  std::string tidy;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool isC1 = byte == 0xC2 && next < 0xA0;
    tidy += isC1 || byte < 0x20 || byte == 0x7F ? ' ' : text[i];
    i += isC1 ? 1 : 0;
  }
  tidy.erase(tidy.find_last_not_of(' ') + 1);
  return tidy.erase(0, tidy.find_first_not_of(' '));
}

// A number without superfluous zeros; other text tidied.
std::string comparable(const rapidjson::Value& value) {
  std::string text(value.GetString(), value.GetStringLength());
  if (text.empty() || text.find_first_not_of("0123456789.-") != std::string::npos) return tidyText(text);
  if (text.find('.') == std::string::npos) return text;
  const std::string digits = text.substr(0, text.find_last_not_of('0') + 1);
  return digits.back() == '.' ? digits.substr(0, digits.size() - 1) : digits;
}

// Edited numbers are text here and numbers there.
bool isOfAnotherMind(const std::string& name) {
  return name.find("_EDEC") != std::string::npos || name.starts_with("EX_NUM_");
}

// Where the two differ, "" if nowhere. Members that only `given` has do not count; the other reader writes 0 for null.
std::string difference(const rapidjson::Value& expected, const rapidjson::Value& given, const std::string& path) {
  if (expected.IsObject() && given.IsObject()) {
    for (const auto& member : expected.GetObject()) {
      const std::string name = member.name.GetString();
      if (isOfAnotherMind(name)) continue;
      auto found = given.FindMember(name.c_str());
      std::string dashed = name;
      std::replace(dashed.begin(), dashed.end(), '_', '-');
      if (found == given.MemberEnd()) found = given.FindMember(dashed.c_str());
      if (found == given.MemberEnd()) return path + '.' + name + " is missing";
      std::string inner = difference(member.value, found->value, path + '.' + name);
      if (!inner.empty()) return inner;
    }
    return {};
  }
  if (expected.IsArray() && given.IsArray()) {
    if (expected.Size() != given.Size()) return path + " has " + std::to_string(given.Size()) + " elements";
    for (rapidjson::SizeType i = 0; i < expected.Size(); ++i) {
      std::string inner = difference(expected[i], given[i], path + '(' + std::to_string(i + 1) + ')');
      if (!inner.empty()) return inner;
    }
    return {};
  }
  if (given.IsNull() && expected.IsString()) return comparable(expected) == "0" ? "" : path + " is null";
  if (!expected.IsString() || !given.IsString()) return path + " is of another kind";
  return comparable(expected) == comparable(given) ? "" : path + ": " + comparable(given);
}

struct SharedCase {
  const char* folder;
  const char* copybook;
  const char* input;
  const char* expected;
  const char* arguments;
};

void expectSameValues(const std::string& linesGiven, const std::string& linesExpected) {
  const std::vector<std::string> given = linesOf(linesGiven);
  const std::vector<std::string> wanted = linesOf(linesExpected);
  ASSERT_GE(given.size(), wanted.size());
  ASSERT_GE(wanted.size(), 5u);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const rapidjson::Document line = parsed(wanted[i]);
    const bool hasRoot = line.MemberCount() == 1 && line.HasMember("RECORD");
    ASSERT_EQ(difference(hasRoot ? line["RECORD"] : line, parsed(given[i]), ""), "") << "record " << i + 1;
  }
}

const SharedCase kSharedCases[] = {
    {"occurs-segments", "customers.cob", "customers.first50.rdw.bin", "customers.first50.expected.jsonl",
     "--ccsid 37 --rdw big --flat --decimals text"},
    {"occurs-segments", "nested.cob", "nested.ascii.txt", "nested.expected.jsonl", "--ccsid 819"},
    {"occurs-segments", "accounts.cob", "accounts.bin", "accounts.expected.jsonl",
     "--ccsid 37 --odo fixed --on-error null"},
    {"code-pages", "layout.cob", "records.bin", "first60.cp037_ext.expected.jsonl", "--ccsid 37"},
    {"code-pages", "layout.cob", "records.bin", "first60.cp500.expected.jsonl", "--ccsid 500"},
    {"code-pages", "layout.cob", "records.bin", "first60.cp273.expected.jsonl", "--ccsid 273"},
    {"code-pages", "layout.cob", "records.bin", "first60.cp1140.expected.jsonl", "--ccsid 1140"},
};

TEST(SharedData, ReadsAsTheOtherReaderDid) {
  if (!std::filesystem::exists(OXR_SHARED_DATA_DIR)) GTEST_SKIP() << OXR_SHARED_DATA_DIR << " is not here";
  for (const auto& [name, copybook, input, expected, arguments] : kSharedCases) {
    SCOPED_TRACE(expected);
    const std::string folder = std::string(OXR_SHARED_DATA_DIR) + '/' + name + '/';
    const Outcome outcome =
        runProgram("decode --copybook " + folder + copybook + ' ' + arguments + ' ' + folder + input);
    EXPECT_EQ(outcome.code, kDone) << outcome.messages;
    expectSameValues(outcome.lines, contentOf(folder + expected));
  }
}

// Its floats and its binary numbers of 9 bytes and more are refused by name. The rest is read once these have none.
TEST(SharedData, ReadsEveryNumberOfTheMachinesWidth) {
  const std::string folder = std::string(OXR_SHARED_DATA_DIR) + "/numeric-types/";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << folder << " is not here";
  const std::string input = " --ccsid 37 " + folder + "first20.bin";
  const Outcome refused = runProgram("decode --copybook " + folder + "layout.cob" + input);
  EXPECT_EQ(refused.code, kFailed);

  std::string copybook = contentOf(folder + "layout.cob");
  std::string expected = contentOf(folder + "first20.expected.jsonl");
  const std::vector<std::string> messages = linesOf(refused.messages);
  EXPECT_EQ(messages.size(), 12u);
  for (const std::string& message : messages) {
    const std::size_t begin = message.find(": ", message.find("layout.cob:")) + 2;
    std::string name = message.substr(begin, message.find(':', begin) - begin);
    ASSERT_NE(copybook.find(' ' + name + ' '), std::string::npos) << message;
    copybook.replace(copybook.find(' ' + name + ' ') + 1, name.size(), "FILLER");
    std::replace(name.begin(), name.end(), '-', '_');
    for (std::size_t at; (at = expected.find('"' + name + "\":")) != std::string::npos;)
      expected.erase(at, std::min(expected.find(",\"", at) + 1, expected.find('}', at)) - at);
  }
  for (std::size_t at; (at = expected.find(",}")) != std::string::npos;)
    expected.erase(at, 1);
  const Folder mine;
  const Outcome outcome = runProgram("decode --on-error null --copybook " + mine.write("c", copybook) + input);
  EXPECT_EQ(outcome.code, kDone);
  expectSameValues(outcome.lines, expected);
}

}  // namespace
}  // namespace oxr::rec::test
