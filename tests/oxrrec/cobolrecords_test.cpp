#include <gtest/gtest.h>

#include "oxrrec/cobol.hpp"

// Records that a COBOL program writes are read to the values that it moved.

namespace oxr::rec::test {
namespace {

struct Field {
  const char* name;
  const char* clauses;
  const char* values[3];  // of three records, as JSON has them
};

// These have the byte order of the machine whatever the compiler is told.
constexpr Field kNativeFields[] = {
    {"NATIVE-2", "PIC S9(4) COMP-5 SYNC", {"258", "-2", "-9999"}},
    {"NATIVE-4", "BINARY-LONG SYNC", {"16909060", "-3", "-2147483648"}},
    {"NATIVE-1", "BINARY-CHAR UNSIGNED", {"1", "200", "255"}},
    {"NATIVE-8", "BINARY-DOUBLE SYNC", {"1", "-9223372036854775807", "9223372036854775807"}},
    {"FLOAT-4", "COMP-1 SYNC", {"1.5", "-0.1", "123456"}},
    {"FLOAT-8", "COMP-2 SYNC", {"0.125", "-2.5e-07", "12345678901.25"}},
};

// Pictures that are read as numbers: all ways to suppress zeros, to show a sign, and to put characters in between.
constexpr Field kEdited[] = {
    {"E01", "PIC ZZ9.99-", {"12.50", "-0.05", "0.00"}},
    {"E02", "PIC Z,ZZZ,ZZ9.99CR", {"1234567.80", "-12.00", "0.07"}},
    {"E03", "PIC $$,$$9.99DB", {"123.00", "-4567.01", "0.00"}},
    {"E04", "PIC -(5)9", {"-12", "12345", "0"}},
    {"E05", "PIC +++,++9.9", {"-1.5", "12345.6", "0.0"}},
    {"E06", "PIC $**,**9.99", {"1.00", "0.10", "12345.67"}},
    {"E07", "PIC ***.**", {"0.00", "0.05", "120.00"}},
    {"E08", "PIC ZZZ.ZZ-", {"0.00", "-0.05", "7.10"}},
    {"E09", "PIC 99/99/9999", {"1022026", "31122026", "0"}},
    {"E10", "PIC 9B999B00", {"1", "1234", "40"}},
    {"E11", "PIC Z(6)VZZ-", {"0.00", "-0.05", "123456.78"}},
    {"E12", "PIC +9(6)V99", {"-1.25", "0.00", "123456.78"}},
    {"E13", "PIC ZZZ9 BLANK WHEN ZERO", {"0", "12", "9999"}},
    {"E14", "PIC $(4).$$", {"0.00", "0.05", "123.40"}},
    {"E15", "PIC ZZ,ZZZ", {"0", "12", "12345"}},
    {"E16", "PIC B99,999", {"0", "12", "12345"}},
    {"E17", "PIC $(4)9-", {"-1", "1234", "0"}},
    {"E18", "PIC ++++", {"0", "-1", "123"}},
    {"E19", "PIC 0ZZ9,00", {"0", "1", "123"}},
    {"E20", "PIC Z9/99", {"0", "1", "123"}},
    {"E21", "PIC $ZZ9-", {"0", "-1", "123"}},
    {"E22", "PIC **9+", {"0", "-1", "123"}},
    {"E23", "PIC ****CR", {"0", "-1", "123"}},
    {"E24", "PIC ZZ9PP", {"0", "100", "12300"}},
    {"E25", "PIC $$,$$$,$$$.99-", {"0.00", "-1000.00", "1234567.89"}},
};

constexpr Field kFields[] = {
    {"LETTERS", "PIC X(5)", {"\"ab\"", "\"x y\"", "\"\""}},
    {"INCLUDED", "PIC S9(3)V99", {"123.45", "-0.05", "-999.99"}},
    {"LEADING-SIGN", "PIC S9(3) LEADING", {"12", "-12", "-900"}},
    {"SEPARATE-BEFORE", "PIC S9(3) SIGN LEADING SEPARATE", {"7", "-7", "0"}},
    {"SEPARATE-BEHIND", "PIC S9V9 TRAILING SEPARATE", {"1.5", "-1.5", "0.0"}},
    {"DIGITS", "PIC 9(4)", {"1234", "0", "9999"}},
    {"SCALED", "PIC SPP99", {"0.0012", "-0.0034", "0.0099"}},
    {"PACKED", "PIC S9(5)V99 COMP-3", {"12345.67", "-0.01", "-99999.99"}},
    {"PACKED-UNSIGNED", "PIC 9(4) COMP-3", {"1", "20", "9999"}},
    {"NO-SIGN", "PIC 9(5) COMP-6", {"12345", "0", "99999"}},
    {"BINARY-1", "PIC S9(2) COMP", {"1", "-1", "-99"}},
    {"BINARY-2", "PIC S9(4) COMP SYNC", {"1234", "-1", "-9999"}},
    {"BINARY-4", "PIC 9(9) COMP SYNC", {"123456789", "0", "999999999"}},
    {"BINARY-8", "PIC S9(13)V9(5) COMP SYNC", {"1.00001", "-1234567890123.12345", "0.00000"}},
    {"BINARY-SCALED", "PIC S9(3)PPP COMP", {"12000", "-5000", "999000"}},
    {"EDITED", "PIC ZZ9.99-", {"\" 12.50\"", "\"  0.05-\"", "\"999.99\""}},
};

// What the program moves to give the field this value: of an edited field its number.
std::string moved(const Field& field, const std::string& value) {
  if (value[0] != '"') return value;
  const std::string text = value.substr(1, value.size() - 2);
  if (std::string(field.name) != "EDITED") return text.empty() ? "SPACES" : '\'' + text + '\'';
  const std::string number = replaced(replaced(text, " ", ""), "-", "");
  return number.size() < text.size() && text.back() == '-' ? '-' + number : number;
}

struct Written {
  std::string copybook = "       01 REC.\n";
  std::string statements;
  std::string lines;
};

Written written(const std::vector<Field>& fields) {
  Written result;
  for (const Field& field : fields)
    result.copybook += std::string("          05 ") + field.name + "\n             " + field.clauses + ".\n";
  for (std::size_t record = 0; record < 3; ++record) {
    result.statements += "           MOVE LOW-VALUES TO REC.\n";
    std::string line;
    for (const Field& field : fields) {
      const std::string value = field.values[record];
      result.statements += "           MOVE " + moved(field, value) + "\n             TO " + field.name + ".\n";
      line += (line.empty() ? "{\"" : ",\"") + std::string(field.name) + "\":" + value;
    }
    result.statements += "           WRITE REC.\n";
    result.lines += line + "}\n";
  }
  return result;
}

constexpr char kFileSection[] =
    "       ENVIRONMENT DIVISION.\n       INPUT-OUTPUT SECTION.\n       FILE-CONTROL.\n"
    "           SELECT OUT-FILE ASSIGN TO 'records'\n           ORGANIZATION IS SEQUENTIAL.\n"
    "       DATA DIVISION.\n       FILE SECTION.\n       FD OUT-FILE.\n       COPY \"rec.cpy\".\n";

// The records that a program writes with these fields are read to the values, and come back byte for byte.
void expectBackAndForth(const std::vector<Field>& fields, const std::string& compiler, const std::string& arguments) {
  const Folder folder;
  const Written records = written(fields);
  const std::string copybook = folder.write("rec.cpy", records.copybook);
  runCobol(folder,
           "       IDENTIFICATION DIVISION.\n       PROGRAM-ID. P.\n" + std::string(kFileSection) +
               "       PROCEDURE DIVISION.\n           OPEN OUTPUT OUT-FILE.\n" + records.statements +
               "           CLOSE OUT-FILE.\n           STOP RUN.\n",
           compiler);
  const std::string options = " --copybook " + copybook + " --ccsid 819 --dialect gnucobol --binary-sizes 1-2-4-8 " +
                              arguments + folder.path("records");
  const Outcome read = runProgram("decode" + options);
  EXPECT_EQ(read.lines, records.lines) << read.messages;
  const Outcome verified = runProgram("verify" + options);
  EXPECT_EQ(verified.code, kDone) << verified.lines << verified.messages;
}

// SYNCHRONIZED and both byte orders; the slack bytes hold zeros.
TEST(CobolRecords, AreReadToTheValuesThatWereMovedAndComeBack) {
  std::vector<Field> all(std::begin(kFields), std::end(kFields));
  expectBackAndForth(all, "-fbinary-size=1-2-4-8 -fbinary-byteorder=big-endian", "");
  all.insert(all.begin() + 1, std::begin(kNativeFields), std::end(kNativeFields));
  expectBackAndForth(all, "-fbinary-size=1-2-4-8 -fbinary-byteorder=native", "--integers little --floats ieee-le ");
}

TEST(CobolRecords, ShowNumbersAsTheirPicturesSay) {
  expectBackAndForth({std::begin(kEdited), std::end(kEdited)}, "", "--edited number ");
}

}  // namespace
}  // namespace oxr::rec::test
