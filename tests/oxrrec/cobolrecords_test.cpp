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

// SYNCHRONIZED and both byte orders; the slack bytes hold zeros.
TEST(CobolRecords, AreReadToTheValuesThatWereMoved) {
  std::vector<Field> all(std::begin(kFields), std::end(kFields));
  const std::vector<Field> withoutNative = all;
  all.insert(all.begin() + 1, std::begin(kNativeFields), std::end(kNativeFields));
  for (const bool isLittle : {false, true}) {
    const Folder folder;
    const Written records = written(isLittle ? all : withoutNative);
    const std::string copybook = folder.write("rec.cpy", records.copybook);
    runCobol(folder,
             "       IDENTIFICATION DIVISION.\n       PROGRAM-ID. P.\n" + std::string(kFileSection) +
                 "       PROCEDURE DIVISION.\n           OPEN OUTPUT OUT-FILE.\n" + records.statements +
                 "           CLOSE OUT-FILE.\n           STOP RUN.\n",
             std::string("-fbinary-size=1-2-4-8 -fbinary-byteorder=") + (isLittle ? "native" : "big-endian"));
    const std::string options = "--copybook " + copybook + " --ccsid 819 --dialect gnucobol --binary-sizes 1-2-4-8 " +
                                (isLittle ? "--integers little " : "") + folder.path("records");
    const Outcome read = runProgram("decode " + options);
    EXPECT_EQ(read.lines, records.lines) << read.messages;
  }
}

}  // namespace
}  // namespace oxr::rec::test
