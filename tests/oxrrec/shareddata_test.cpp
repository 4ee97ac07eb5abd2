// Real record files, where they are at hand, compared value by value with what another reader made of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "oxrrec/runs.hpp"
// RapidJSON's own headers come after records.hpp, which sets the library up.
#include <rapidjson/document.h>

namespace oxr::rec::test {
namespace {

using Values = std::map<std::string, std::string>;

// The text without blanks and controls. In UTF-8 the C1 controls are C2 80 to C2 9F.
std::string tidyText(const std::string& text) {
  std::string tidy;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0)
      ++i;
    else if (byte > ' ' && byte != 0x7F)
      tidy += text[i];
  }
  return tidy;
}

// A number without superfluous zeros; other text tidied. The other reader writes 0 for null.
std::string comparable(const rapidjson::Value& value) {
  if (value.IsNull()) return "0";
  const std::string text(value.GetString(), value.GetStringLength());
  if (text.empty() || text.find_first_not_of("0123456789.-") != std::string::npos) return tidyText(text);
  const bool hasPoint = text.find('.') != std::string::npos;
  const std::string digits = hasPoint ? text.substr(0, text.find_last_not_of('0') + 1) : text;
  return digits.substr(0, digits.size() - (digits.back() == '.' ? 1 : 0));
}

// All values by their paths, with "_" for "-" in names as the other reader has it; an array gives its size too.
void flatten(const rapidjson::Value& value, const std::string& path, Values& values) {
  if (value.IsObject()) {
    for (const auto& member : value.GetObject())
      flatten(member.value, path + '.' + replaced(member.name.GetString(), "-", "_"), values);
  } else if (value.IsArray()) {
    values[path] = std::to_string(value.Size());
    for (rapidjson::SizeType i = 0; i < value.Size(); ++i)
      flatten(value[i], path + '(' + std::to_string(i + 1) + ')', values);
  } else {
    values[path] = comparable(value);
  }
}

// Each line's values. Numbers stay as they are written, so that no digit is lost.
std::vector<Values> valuesOf(const std::string& lines) {
  std::vector<Values> all;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseNumbersAsStringsFlag>(line.data(), line.size());
    EXPECT_FALSE(document.HasParseError()) << line;
    const bool hasRoot = document.MemberCount() == 1 && document.HasMember("RECORD");
    flatten(hasRoot ? document["RECORD"] : document, "", all.emplace_back());
  }
  return all;
}

// Edited numbers are text here and numbers there, so they are left out, as is what has one of the names.
void expectSameValues(const std::string& given, const std::string& wanted, const std::set<std::string>& leftOut = {}) {
  const std::vector<Values> ours = valuesOf(given);
  const std::vector<Values> theirs = valuesOf(wanted);
  ASSERT_GE(ours.size(), theirs.size());
  ASSERT_GE(theirs.size(), 5u);
  for (std::size_t i = 0; i < theirs.size(); ++i) {
    for (const auto& [path, value] : theirs[i]) {
      const std::string name = path.substr(path.rfind('.') + 1);
      if (name.find("_EDEC") != std::string::npos || name.starts_with("EX_NUM_") || leftOut.count(name) != 0) continue;
      const auto found = ours[i].find(path);
      ASSERT_NE(found, ours[i].end()) << path << " is missing in record " << i + 1;
      ASSERT_EQ(found->second, value) << path << " of record " << i + 1;
    }
  }
}

// Folder, copybook, records, what the other reader made of them, and the arguments.
constexpr const char* kSets[] = {
    "occurs-segments customers.cob customers.first50.rdw.bin customers.first50.expected.jsonl"
    " --ccsid 37 --rdw big --flat --decimals text",
    "occurs-segments nested.cob nested.ascii.txt nested.expected.jsonl --ccsid 819",
    "occurs-segments accounts.cob accounts.bin accounts.expected.jsonl --ccsid 37 --odo fixed --on-error null",
    "code-pages layout.cob records.bin first60.cp037_ext.expected.jsonl --ccsid 37",
    "code-pages layout.cob records.bin first60.cp500.expected.jsonl --ccsid 500",
    "code-pages layout.cob records.bin first60.cp273.expected.jsonl --ccsid 273",
    "code-pages layout.cob records.bin first60.cp1140.expected.jsonl --ccsid 1140",
    "numeric-types layout.cob first20.bin first20.expected.jsonl --ccsid 37 --on-error null",
};

// Floats and binary numbers of 9 bytes and more are refused by name; the rest is read once these have none.
TEST(SharedData, ReadsAsTheOtherReaderDid) {
  if (!std::filesystem::exists(OXR_SHARED_DATA_DIR)) GTEST_SKIP() << OXR_SHARED_DATA_DIR << " is not here";
  const Folder mine;
  for (const char* const set : kSets) {
    SCOPED_TRACE(set);
    std::istringstream words(set);
    std::string name, copybook, input, expected, arguments;
    std::getline(words >> name >> copybook >> input >> expected, arguments);
    const std::string folder = std::string(OXR_SHARED_DATA_DIR) + '/' + name + '/';
    const std::string rest = arguments + ' ' + folder + input;
    Outcome outcome = runProgram("decode --copybook " + folder + copybook + rest);
    std::set<std::string> refused;
    if (outcome.code == kFailed) {
      std::string text = contentOf(folder + copybook);
      std::istringstream messages(outcome.messages);
      for (std::string line, field; std::getline(messages, line); refused.insert(replaced(field, "-", "_"))) {
        const std::size_t begin = line.find(": ", line.find(".cob:")) + 2;
        field = line.substr(begin, line.find(':', begin) - begin);
        text = replaced(text, ' ' + field + ' ', " FILLER ");
      }
      outcome = runProgram("decode --copybook " + mine.write("c", text) + rest);
    }
    EXPECT_EQ(refused.size(), name == "numeric-types" ? 12u : 0u);
    EXPECT_EQ(outcome.code, kDone) << outcome.messages;
    expectSameValues(outcome.lines, contentOf(folder + expected), refused);
  }
}

}  // namespace
}  // namespace oxr::rec::test
