// Real record files, where they are at hand, compared value by value with what another reader made of them.

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <map>
#include <regex>

#include "harness/hex.hpp"
#include "oxrrec/runs.hpp"
#include "records/json/rapidjson.hpp"
// RapidJSON's own headers come after rapidjson.hpp, which sets the library up.
#include <rapidjson/document.h>

namespace oxr::rec::test {
namespace {

using Values = std::map<std::string, std::string>;

// A number without superfluous zeros; other text without blanks and controls: in UTF-8 the C1 controls are C2 80 to
// C2 9F. The other reader writes 0 for null.
std::string comparable(const rapidjson::Value& value) {
  static const std::regex kZeros("^(-?[0-9]+)(\\.0*|(\\.[0-9]*[1-9])0*)$");
  static const std::regex kBlanks("[[:cntrl:] ]|\xC2[\x80-\x9F]");
  static const std::regex kExponent("^-?[0-9.]+E-?[0-9]+$");
  if (value.IsNull()) return "0";
  std::string text(value.GetString(), value.GetStringLength());
  if (std::regex_search(text, kExponent)) {
    char digits[32];
    text.assign(digits, std::to_chars(digits, digits + sizeof digits, std::stod(text)).ptr);
  }
  return std::regex_replace(std::regex_replace(text, kZeros, "$1$3"), kBlanks, "");
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

// The values of all lines; a path begins with the number of its line. Numbers stay as they are written, so that no
// digit is lost.
Values valuesOf(const std::string& lines) {
  Values values;
  std::istringstream stream(lines);
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseNumbersAsStringsFlag>(line.data(), line.size());
    const bool hasRoot = document.MemberCount() == 1 && document.HasMember("RECORD");
    flatten(hasRoot ? document["RECORD"] : document, std::to_string(++number), values);
  }
  return values;
}

// Folder, copybook, records, what the other reader made of them, and the arguments.
constexpr const char* kSets[] = {
    "occurs-segments customers.cob customers.first50.rdw.bin customers.first50.expected.jsonl"
    " --ccsid 37 --records rdw --flat --decimals text",
    "occurs-segments nested.cob nested.ascii.txt nested.expected.jsonl --ccsid 819",
    "occurs-segments accounts.cob accounts.bin accounts.expected.jsonl --ccsid 37 --odo fixed --low-values null"
    " --blank-numbers null",
    "occurs-segments segments.cob segments.rdw.bin segments.first300.expected.jsonl --ccsid 37 --records rdw-le"
    " --length-includes-header no --lenient-numbers --when SEGMENT-ID=1:COMPANY --when SEGMENT-ID=2:DEPT"
    " --when SEGMENT-ID=3:EMPLOYEE --when SEGMENT-ID=4:OFFICE --when SEGMENT-ID=5:CUSTOMER"
    " --when SEGMENT-ID=6:CONTACT --when SEGMENT-ID=7:CONTRACT",
    "code-pages layout.cob records.bin first60.cp037_ext.expected.jsonl --ccsid 37",
    "code-pages layout.cob records.bin first60.cp273.expected.jsonl --ccsid 273",
    "numeric-types layout.cob first20.bin first20.expected.jsonl --ccsid 37 --floats ieee-be --edited number",
};

TEST(SharedData, ReadsAsTheOtherReaderDid) {
  if (!std::filesystem::exists(OXR_SHARED_DATA_DIR)) GTEST_SKIP() << OXR_SHARED_DATA_DIR << " is not here";
  for (const char* const set : kSets) {
    SCOPED_TRACE(set);
    std::istringstream words(set);
    std::string name, copybook, input, expected, arguments;
    std::getline(words >> name >> copybook >> input >> expected, arguments);
    const std::string folder = std::string(OXR_SHARED_DATA_DIR) + '/' + name + '/';
    const Outcome outcome = runProgram("decode --copybook " + folder + copybook + arguments + ' ' + folder + input);
    EXPECT_EQ(outcome.code, kDone) << outcome.messages;
    Values ours = valuesOf(outcome.lines);
    const Values theirs = valuesOf(contentOf(folder + expected));
    EXPECT_GT(theirs.size(), 20u);
    // These three are no fields.
    static const std::regex kTheirs("\\.(File_Id|Record_Id|Record_Byte_Length)$");
    for (const auto& [path, value] : theirs)
      ASSERT_TRUE(std::regex_search(path, kTheirs) || ours[path] == value)
          << path << ": " << value << ", not " << ours[path];
  }
}

std::vector<std::vector<std::string>> table(const std::string& path) {
  std::vector<std::vector<std::string>> lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    lines.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
  }
  return lines;
}

TEST(SharedData, ReadsFloatsOfEachForm) {
  const std::string folder = std::string(OXR_SHARED_DATA_DIR) + "/floats/";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << folder << " is not here";
  const auto number = [](const rapidjson::Document& line, const char* name) { return line[name].GetDouble(); };
  std::istringstream expected(contentOf(folder + "expected.jsonl"));
  for (std::string text; std::getline(expected, text);) {
    rapidjson::Document line, ours;
    line.Parse(text.c_str());
    const std::string file = line["file"].GetString();
    const std::string form = file.starts_with("hex-be") ? "hex" : file.substr(0, file.find('.'));
    const Outcome outcome = runProgram("decode --ccsid 37 --records rdw-le --length-includes-header no --floats " +
                                       form + " --copybook " + folder + "layout.cob " + folder + file);
    EXPECT_EQ(std::count(outcome.lines.begin(), outcome.lines.end(), '\n'), line["records"].GetInt());
    ours.Parse(outcome.lines.substr(0, outcome.lines.find('\n')).c_str());
    EXPECT_FLOAT_EQ(static_cast<float>(number(ours, "F")), static_cast<float>(number(line, "F")));
    EXPECT_DOUBLE_EQ(number(ours, "D"), number(line, "D"));
  }
  for (const auto& row : table(folder + "hex-points.tsv")) {
    if (row[0] == "size") continue;
    SCOPED_TRACE(row[1]);
    const bool isShort = row[0] == "4";
    const Outcome outcome =
        decodeBytes(isShort ? "01 R. 05 F COMP-1." : "01 R. 05 F COMP-2.", oxr::test::fromHex(row[1]));
    rapidjson::Document ours;
    ours.Parse(outcome.lines.c_str());
    const double value = std::stod(row[2]);
    EXPECT_NEAR(number(ours, "F"), value, std::abs(value) * (isShort ? 1e-7 : 5e-16));
  }
}

// Folder, copybook, records and arguments with which all bytes come back.
constexpr const char* kVerified[] = {
    "occurs-segments customers.cob customers.first50.rdw.bin --ccsid 37 --records rdw",
    "occurs-segments nested.cob nested.ascii.txt --ccsid 819",
    "occurs-segments accounts.cob accounts.bin --ccsid 37 --odo fixed --low-values null --blank-numbers null"
    " --filler 40",
    "occurs-segments segments.cob segments.rdw.bin --ccsid 37 --records rdw-le --length-includes-header no "
    "--keep-filler --lenient-numbers"
    " --when SEGMENT-ID=1:COMPANY --when SEGMENT-ID=2:DEPT --when SEGMENT-ID=3:EMPLOYEE --when SEGMENT-ID=4:OFFICE"
    " --when SEGMENT-ID=5:CUSTOMER --when SEGMENT-ID=6:CONTACT --when SEGMENT-ID=7:CONTRACT",
    "floats layout.cob hex-be.rdw-le.bin --ccsid 37 --records rdw-le --length-includes-header no --floats hex",
    "floats layout.cob hex-le.rdw-le.bin --ccsid 37 --records rdw-le --length-includes-header no --floats hex-le",
    "floats layout.cob ieee-be.rdw-le.bin --ccsid 37 --records rdw-le --length-includes-header no --floats ieee-be",
    "floats layout.cob ieee-le.rdw-le.bin --ccsid 37 --records rdw-le --length-includes-header no --floats ieee-le",
    "code-pages layout.cob records.bin --ccsid 37",
    "code-pages layout.cob records.bin --ccsid 273",
    "code-pages layout.cob records.bin --ccsid cp500",
    "code-pages layout.cob records.bin --ccsid cp1140",
    "numeric-types layout.cob first20.bin --ccsid 37 --floats ieee-be --edited number --fields SETTINGS",
};

// Numbers that are not negative have C as their sign, but unsigned packed ones F, as the library writes them; what is
// edited has a plus where COBOL shows a blank.
std::string numericSettings() {
  std::string text = "RECORD:plus=C\nCOMMON-97COMP3:plus=F\nCOMMON-915COMP3:plus=F\n";
  for (int i = 101; i <= 114; ++i)
    text += "NUM-BCD-INT" + std::to_string(i).substr(1) + ":plus=F\n" +
            (i > 110 ? "" : "NUM-BCD-DEC" + std::to_string(i).substr(1) + ":plus=F\n");
  for (const char* const name : {"INT03", "INT04", "DEC02", "DEC03"})
    text += std::string("EX-NUM-") + name + ":plus=+\n";
  return text;
}

TEST(SharedData, ComesBackByteForByte) {
  if (!std::filesystem::exists(OXR_SHARED_DATA_DIR)) GTEST_SKIP() << OXR_SHARED_DATA_DIR << " is not here";
  const Folder own;
  const std::string settings = own.write("settings", numericSettings());
  for (const char* const set : kVerified) {
    std::istringstream words(set);
    std::string name, copybook, input, arguments;
    std::getline(words >> name >> copybook >> input, arguments);
    const std::string folder = std::string(OXR_SHARED_DATA_DIR) + '/' + name + '/';
    const Outcome outcome = runProgram("verify --copybook " + folder + copybook +
                                       replaced(arguments, "SETTINGS", settings) + ' ' + folder + input);
    EXPECT_EQ(outcome.code, kDone) << set << '\n' << outcome.lines << outcome.messages;
  }
}

}  // namespace
}  // namespace oxr::rec::test
