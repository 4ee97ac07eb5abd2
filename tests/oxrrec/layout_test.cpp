#include <gtest/gtest.h>

#include "oxrrec/cobol.hpp"

namespace oxr::rec::test {
namespace {

// Every usage that both know, SYNCHRONIZED, arrays in arrays, redefinitions, signs, and texts that are copied.
constexpr char kBook[] = R"(
       01 USAGES.
          05 A PIC X.
          05 B PIC S9(4) COMP SYNC.
          05 C PIC X.
          05 D PIC S9(9) COMP SYNC.
          05 E PIC X(5).
          05 F PIC S9(18) COMP SYNC.
          05 G PIC X.
          05 H COMP-1 SYNC.
          05 I PIC X.
          05 J COMP-2 SYNC.
          05 K PIC X.
          05 L POINTER SYNC.
          05 M PIC X.
          05 N INDEX SYNC.
          05 O PIC X.
          05 P PIC S9(18) COMP-5 SYNC.
          05 Q PIC X.
          05 S USAGE BINARY-LONG SYNC.
          05 T PIC 9(5) COMP-6.
          05 U PIC N(3).
          05 V PIC 9(5) COMP-3 SYNC.
          05 W PIC S9(7)V99 PACKED-DECIMAL.
          05 X USAGE BINARY-CHAR UNSIGNED.
          05 Y USAGE BINARY-SHORT.
          05 Z USAGE BINARY-DOUBLE.
          05 A-A PROCEDURE-POINTER.
          05 A-B PIC ZZ9.99CR.
          05 A-C PIC SPPP9(5).
          05 A-D PIC 9(6)PPP COMP.
       01 SIGNS.
          05 B-A SIGN LEADING SEPARATE.
             10 B-B PIC S9(4).
             10 B-C PIC 9(4).
             10 B-D PIC S9(4) SIGN TRAILING.
          05 B-E PIC S9(3)V9 TRAILING SEPARATE.
          05 B-F PIC S9(3)V9 LEADING.
       01 ARRAYS.
          05 C-A PIC X.
          05 C-B OCCURS 3.
             10 C-C PIC X.
             10 C-D PIC S9(9) COMP SYNC.
             10 C-E PIC X.
          05 C-F PIC X.
          05 C-G OCCURS 3 PIC S9(4) COMP SYNC.
          05 C-H SYNC.
             10 C-I PIC X.
             10 C-J PIC 9(9) COMP.
          05 C-K PIC 9(9) COMP SYNC OCCURS 2.
          05 C-L OCCURS 2.
             10 C-M PIC X.
             10 C-N OCCURS 3.
                15 C-O PIC S9(4) COMP SYNC.
                15 C-P PIC X.
             10 C-Q PIC X.
       01 REDEFINED.
          05 D-A PIC X.
          05 D-B PIC X(8).
          05 D-C REDEFINES D-B PIC S9(9) COMP SYNC.
          05 D-D REDEFINES D-B.
             10 D-E PIC S9(9) COMP SYNC.
          05 D-F.
             10 D-G PIC S9(9) COMP SYNC.
       01 COUNTED.
          05 D-H PIC 9(2).
          05 D-I PIC X(3) OCCURS 1 TO 5 DEPENDING ON D-H.
       01 SIZES.
           COPY "part" REPLACING ==:TAG:== BY ==U== ==:S:== BY ====.
           COPY "part" REPLACING ==:TAG:== BY ==S== ==(:S:)== BY ====
                LEADING ==9== BY ==S9==.
)";

std::string partText() {
  std::string text;
  for (int digits = 1; digits <= 18; ++digits)
    text += "       05 :TAG:-" + std::to_string(digits) + " PIC 9(" + std::to_string(digits) + ") COMP.\n";
  return text;
}

// Statements that print the name, offset and length of each named item: of the first occurrence in arrays. Counted
// arrays are at their largest.
std::string printing(const Layout& layout) {
  std::string text;
  for (const Item& item : layout.items)
    if (item.occurs.isCounted())
      text += "           MOVE " + std::to_string(item.occurs.max) + " TO " +
              layout.items[layout.counters[item.occurs.counter]].name + ".\n";
  for (ItemIndex i = 0; i < layout.items.size(); ++i) {
    std::string subscripts;
    for (ItemIndex group = i; group != kNoItem; group = layout.items[group].parent)
      if (layout.items[group].occurs.isArray) subscripts += subscripts.empty() ? "(1" : " 1";
    const std::string name = layout.items[i].name + subscripts + (subscripts.empty() ? "" : ")");
    text += "           SET ITEM-POINTER TO ADDRESS OF " + name + "\n           SET RECORD-POINTER TO ADDRESS OF " +
            layout.recordName +
            "\n           COMPUTE ITEM-OFFSET = ITEM-PLACE - RECORD-PLACE\n           MOVE LENGTH OF " + name +
            "\n            TO ITEM-LENGTH\n           DISPLAY '" + layout.items[i].name +
            " ' ITEM-OFFSET ' ' ITEM-LENGTH.\n";
  }
  return text;
}

constexpr char kPointers[] =
    "       01 ITEM-POINTER POINTER.\n       01 ITEM-PLACE REDEFINES ITEM-POINTER PIC 9(18) COMP-5.\n"
    "       01 RECORD-POINTER POINTER.\n       01 RECORD-PLACE REDEFINES RECORD-POINTER PIC 9(18) COMP-5.\n"
    "       77 ITEM-OFFSET PIC 9(4).\n       77 ITEM-LENGTH PIC 9(4).\n";

std::string padded(std::uint32_t number) {
  const std::string digits = std::to_string(number);
  return std::string(4 - digits.size(), '0') + digits;
}

// Offsets and lengths of all items as a COBOL program prints them, against the layout.
TEST(Layout, IsThatOfAnIndependentCompiler) {
  const Folder folder;
  folder.write("part.cpy", partText());
  CopybookOptions options;
  options.dialect = Dialect::gnucobol;
  for (const auto& [sizes, word] :
       {std::pair(BinarySizes::oneTwoFourEight, "1-2-4-8"), {BinarySizes::oneToEight, "1--8"}}) {
    options.binarySizes = sizes;
    const Copybook book = Copybook::readFile(folder.write("book.cpy", kBook), options);
    std::string ours;
    std::string statements;
    for (const std::string& name : book.recordNames()) {
      const Layout layout = book.layout(name);
      statements += printing(layout);
      for (ItemIndex i = 0; i < layout.items.size(); ++i) {
        const std::uint32_t offset = layout.recordOffset(i).value_or(layout.items[i].offset);
        ours += layout.items[i].name + ' ' + padded(offset) + ' ' + padded(layout.items[i].size) + '\n';
      }
    }
    const std::string theirs =
        runCobol(folder, cobolProgram(std::string(kPointers) + "       COPY \"book.cpy\".\n", statements),
                 std::string("-fbinary-size=") + word);
    EXPECT_EQ(ours, theirs) << word;
  }
}

// What a user sees: the options reach the reader of the copybook, and each form is whole.
TEST(Layout, IsShownInThreeForms) {
  const Folder folder;
  std::filesystem::create_directory(folder.path("lib"));
  folder.write("lib/TAIL.CPY", "       05 C COMP-5 PIC S9(2)V9. 05 FILLER OCCURS 2. 10 D PIC PP9.\n");
  const std::string command =
      "layout --copybook " +
      folder.write("c", "01 R. 05 A PIC X. 05 G OCCURS 0 TO 2 DEPENDING N. 10 B PIC N(3). 05 N PIC 9.");
  EXPECT_EQ(runProgram(command).code, kFailed);
  const std::string good =
      "layout -I " + folder.path("lib") + " --binary-sizes 1-8 --copybook " +
      folder.write("d", "01 S PIC X. 01 R. 05 N PIC 9. 05 G OCCURS 0 TO 2 DEPENDING N. 10 B PIC X(3).\nCOPY tail.");
  const Outcome table = runProgram(good);
  EXPECT_EQ(table.lines,
            "level and name                          offset    size  kind          picture\n"
            "1 S                                          0       1  text          X\n");
  EXPECT_EQ(table.messages, "oxrrec: this is S; --record chooses another: R\n");
  EXPECT_EQ(runProgram(good + " --as sql").messages, table.messages);
  for (const char* const said : {" --lenient-numbers", " --field N:sign=leading"})
    EXPECT_EQ(runProgram(good + said).messages,
              "oxrrec: --as table shows the copybook alone: what is said of values is for --as json-schema and sql\n");
  EXPECT_EQ(runProgram(good + " --record r --as sql").lines,
            "CREATE TABLE \"R\" (\n  \"N\" numeric(1,0),\n  \"G(1).B\" varchar(3),\n  \"G(2).B\" varchar(3),\n"
            "  \"C\" numeric(5,1),\n  \"FILLER(1).D\" numeric(3,3),\n  \"FILLER(2).D\" numeric(3,3)\n);\n");
  const std::string schema = runProgram(good + " --record r --as json-schema --decimals text").lines;
  for (const char* const part :
       {"\"title\": \"R\"", "\"maxItems\": 2,\n", "\"B\": { \"type\": \"string\", \"maxLength\": 3 }",
        "\"N\": { \"type\": \"integer\", \"minimum\": 0 }", "\"C\": { \"type\": \"string\", \"pattern\"",
        "\"required\": [\"N\", \"G\", \"C\", \"FILLER\"]"})
    EXPECT_NE(schema.find(part), std::string::npos) << part << " in\n" << schema;
}

// The clauses of A, arguments, its type in a table, and its schema between the braces.
constexpr const char* kTypes[][4] = {
    {"COMP-1", "", "real", R"("type": "number")"},
    {"COMP-2", "", "double precision", R"("type": "number")"},
    {"PIC G(3)", "", "varchar(3)", R"("type": "string", "maxLength": 3)"},
    {"PIC 9(5) COMP-6", "", "numeric(5,0)", R"("type": "integer", "minimum": 0)"},
    {"PIC 99PPP", "", "numeric(5,0)", R"("type": "integer", "minimum": 0)"},
    {"PIC S9(4) COMP-5", "", "numeric(5,0)", R"("type": "integer")"},
    {"PIC S9(19) COMP-5", "", "numeric(22,0)", R"("type": "integer")"},
    {"PIC 9(5)", "--blank-numbers null", "numeric(5,0)", R"("type": ["integer", "null"], "minimum": 0)"},
    {"PIC ZZ9.99", "", "varchar(6)", R"("type": "string", "maxLength": 6)"},
    {"PIC ZZ9.99", "--edited number --decimals text", "numeric(6,2)",
     R"("type": "string", "pattern": "^-?[0-9]+\\.[0-9]+$")"},
    {"PIC X(9)", "--field A:date=HHmmssZZZ", "time with time zone", R"("type": "string", "format": "time")"},
    {"PIC X(9)", "--field A:date=HHmmssSSS", "time",
     R"("type": "string", "pattern": "^[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}$")"},
    {"PIC X(6)", "--field A:date=yyMMdd --low-values zero", "date", R"("type": ["string", "null"], "format": "date")"},
};

TEST(Layout, GivesEachFieldAType) {
  for (const auto& [clauses, arguments, type, schema] : kTypes) {
    const Folder folder;
    const std::string command = "layout --format free --copybook " +
                                folder.write("c", "05 A " + std::string(clauses) + '.') + ' ' + arguments + " --as ";
    EXPECT_EQ(runProgram(command + "sql").lines, "CREATE TABLE \"RECORD\" (\n  \"A\" " + std::string(type) + "\n);\n");
    EXPECT_NE(runProgram(command + "json-schema").lines.find("\"A\": { " + std::string(schema) + " }\n"),
              std::string::npos)
        << clauses << ' ' << arguments;
  }
  const Folder folder;
  EXPECT_EQ(
      runProgram("layout --as sql --format free --copybook " + folder.write("c", "05 A OCCURS 65537 PIC X.")).messages,
      "oxrrec: " + folder.path("c") + ": the table would have more than 65536 columns\n");
}

// What is said of values and kinds of record shows in what they become; a table of the copybook has no place for it.
TEST(Layout, FollowsWhatIsSaidOfValues) {
  const Folder folder;
  const std::string command =
      "layout --flat --copybook " +
      folder.write("c",
                   "01 A. 05 T PIC X. 05 D PIC 9(8). 05 P. 10 Q PIC 9. 05 R REDEFINES P. 10 Q PIC X.\n"
                   "01 B. 05 T PIC X. 05 D PIC X(14). 05 E PIC ZZ9.9-. 05 H PIC X(4). 05 L PIC X(20).") +
      " --edited number --low-values null --field A.D:date=yyyyMMdd --field B.D:date=yyyyMMddHHmmss"
      " --field H:date=yyMM --field L:date=yyyyMMddHHmmssZZZ --when T=a:A --when T=b:B --when A.T=a:P --when A.T=b:R "
      "--as ";
  const std::string schema = runProgram(command + "json-schema").lines;
  for (const char* const part : {"\"anyOf\": [\n    {\n      \"title\": \"A\",",
                                 "\"D\": { \"type\": [\"string\", \"null\"], \"format\": \"date\" }",
                                 "\"Q\": { \"anyOf\": [{ \"type\": [\"integer\", \"null\"], \"minimum\": 0 }, { "
                                 "\"type\": \"string\", \"maxLength\": 1 }] }",
                                 "\"required\": [\"T\", \"D\"],", "T[0-9]{2}:[0-9]{2}:[0-9]{2}$\"",
                                 "\"E\": { \"type\": [\"number\", \"null\"] }",
                                 "\"H\": { \"type\": [\"string\", \"null\"], \"pattern\": \"^[0-9]{4}-[0-9]{2}$\" }",
                                 "\"format\": \"date-time\""})
    EXPECT_NE(schema.find(part), std::string::npos) << part << " in\n" << schema;
  EXPECT_EQ(runProgram(command + "sql").lines,
            "CREATE TABLE \"A\" (\n  \"T\" varchar(1),\n  \"D\" varchar(14),\n  \"Q\" varchar(3),\n"
            "  \"E\" numeric(6,1),\n  \"H\" varchar(7),\n  \"L\" timestamp with time zone\n);\n");
  EXPECT_EQ(runProgram(command + "table").messages,
            "oxrrec: --as table shows the copybook alone: what is said of values is for --as json-schema and sql\n");
}

}  // namespace
}  // namespace oxr::rec::test
