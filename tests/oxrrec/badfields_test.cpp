// What people are told of fields that cannot be read, and that it is the same for the first of them and for all others.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

// A picture, the bytes of a field of it, what is told of it between the path and the bytes, and arguments.
const struct {
  const char* picture;
  const char* bytes;
  const char* reason;
  const char* arguments = "";
} kFields[] = {
    // Packed numbers.
    {"S9(5)V99 COMP-3", "00A0005C", "not a packed decimal: half byte A in byte 2 of 4 (OXR5505)"},
    {"S9(3) COMP-3", "1230", "not a packed decimal: half byte 0 in byte 2 of 2, where its sign should stand (OXR5505)"},
    {"9(3) COMP-3", "123D", "a minus where the picture has no sign: half byte D in byte 2 of 2 (OXR5505)"},
    {"S9(3) COMP-3", "1234", "not a packed decimal: half byte 1 in byte 1 of 2, where its sign should stand (OXR5505)",
     "--field F:packed-sign=leading"},
    {"9(4) COMP-6", "123A", "not a packed number without a sign: half byte A in byte 2 of 2"},
    {"S9(3) COMP-3", "4040", "holds blanks, not digits; --blank-numbers null or zero would accept it (OXR5505)"},
    {"S9(3) COMP-3", "0000", "holds NULs, not digits; --low-values null or zero would accept it (OXR5505)"},
    // A digit a byte.
    {"9(3)", "F1D6F3", "not a number: byte 2 of 3 is D6 (\"O\"), no digit (OXR5505)"},
    {"9(3)", "F1F2D3", "a sign where the picture has none: byte 3 of 3 is D3 (\"L\") (OXR5505)"},
    {"9(3)", "60F1F2", "a sign where the picture has none: byte 1 of 3 is 60 (\"-\")"},
    {"9(3)", "313273", "a sign where the picture has none: byte 3 of 3 is 73 (\"s\") (OXR5505)", "--ccsid 819"},
    {"9(2)", "C1C2", "not a number: byte 1 of 2 is C1 (\"A\"), no digit (OXR5505)"},
    {"9(3)", "F14BF2", "not a number: byte 2 of 3 is 4B (\".\"), no digit"},
    {"S9(2)", "F1A3", "not a number: byte 2 of 2 is A3 (\"t\"), no digit with a sign (OXR5505)"},
    {"S9(3)", "30307B",
     "not a number: byte 3 of 3 is 7B (\"{\"), no digit with a sign; --ascii-signs letters would accept it (OXR5505)",
     "--ccsid 819"},
    {"S9(3)", "303073",
     "not a number: byte 3 of 3 is 73 (\"s\"), no digit with a sign; --ascii-signs plain would accept it (OXR5505)",
     "--ccsid 819 --ascii-signs letters"},
    {"S9.9", "302E4B",
     "not a number: byte 3 of 3 is 4B (\"K\"), no digit with a sign; --ascii-signs letters would accept it (OXR5505)",
     "--ccsid 819 --edited number"},
    {"S9(3)", "60F1F2", "not a number: byte 1 of 3 is 60 (\"-\"), no digit"},
    {"S9(2)", "2D31", "not a number: byte 1 of 2 is 2D (\"-\"), no digit with a sign",
     "--ccsid 819 --field F:sign=leading"},
    {"S9(3) SIGN LEADING SEPARATE", "F1F2F3F4", "its sign is missing: byte 1 of 4 is F1 (\"1\"), not + or -"},
    {"S9(3) SIGN TRAILING SEPARATE", "F1F2F3F4", "its sign is missing: byte 4 of 4 is F4 (\"4\"), not + or -"},
    {"S9(3) SIGN TRAILING SEPARATE", "F1F24E60", "not a number: byte 3 of 4 is 4E (\"+\"), no digit"},
    {"S9(1) SIGN LEADING SEPARATE", "6000", "not a number: it has no digit", "--lenient-numbers"},
    {"9(3)", "40F1F2",
     "its digits are padded with blanks or NULs: byte 1 of 3 is 40 (\" \"); --lenient-numbers would accept it "
     "(OXR5505)"},
    {"S9(3)V9", "31327000",
     "its digits are padded with blanks or NULs: byte 4 of 4 is 00; --lenient-numbers would accept it (OXR5505)",
     "--ccsid 819"},
    {"S9(3) SIGN LEADING SEPARATE", "604000C1", "not a number: byte 4 of 4 is C1 (\"A\"), no digit (OXR5505)",
     "--lenient-numbers"},
    {"S9(3) SIGN LEADING SEPARATE", "604040F2",
     "its digits are padded with blanks or NULs: byte 2 of 4 is 40 (\" \"); --lenient-numbers would accept it "
     "(OXR5505)"},
    {"9(2)", "4040", "holds blanks, not digits; --blank-numbers null or zero would accept it (OXR5505)"},
    {"9(2)", "0000", "holds NULs, not digits; --low-values null or zero would accept it (OXR5505)"},
    {"S9(5)", "0FF40F0FF4", "not a number: byte 1 of 5 is 0F, no digit", "--ccsid 939"},
    {"S9(3) SIGN LEADING SEPARATE", "00310032", "not a number: it reads \"12\"", "--ccsid 1200"},
    {"9(4)", "00310041", "not a number: it reads \"1A\" (OXR5505)", "--ccsid 1200"},
    {"9(4)", "328160F1", "not a number: byte 2 of 4 is 81, no digit", "--ccsid 943"},
    // Edited numbers, floats and text.
    {"ZZ9.99", "40C1F14BF2F2", "no edited number: byte 2 of 6 is C1 (\"A\")", "--edited number"},
    {"ZZ9.99", "F1F2F3F4F5F6", "no edited number: byte 4 of 6 is F4 (\"4\")", "--edited number"},
    {"ZZ9", "40F140", "no edited number: byte 3 of 3 is 40 (\" \")", "--edited number"},
    {"$9.99", "61F54BF0F0", "no edited number: byte 1 of 5 is 61 (\"/\")", "--edited number"},
    {"-99", "5BF1F2", "no edited number: byte 1 of 3 is 5B (\"$\")", "--edited number"},
    {"9(3)CR", "F0F1F2C4C2", "no edited number: byte 4 of 5 is C4 (\"D\")", "--edited number"},
    {"ZZ9.99", "4040404B4040", "no edited number: it has no digit", "--edited number"},
    {"S99.99", "F1F24BC1F4", "not a number: byte 4 of 5 is C1 (\"A\"), no digit (OXR5505)", "--edited number"},
    {"G(1) DISPLAY-1", "42C1", "its code page has no double-byte characters: page 37"},
    // Dates.
    {"9(8)", "F0F0F0F0F1F0F1F0", "no date: there is no year 0 (OXR5540)", "--field F:date=yyyyMMdd"},
    {"9(8)", "F2F0F2F3F0F2F2F9", "no date: month 2 has no day 29 (OXR5540)", "--field F:date=yyyyMMdd"},
    {"9(8)", "F2F0F2F4F1F1F2F2", "no date: it has 8 characters, and its pattern 6 (OXR5540)", "--field F:date=yyMMdd"},
    {"9(6)", "F2F4F0F0F0F0", "no date: there is no hour 24 (OXR5540)", "--field F:date=HHmmss"},
    {"9(6)", "F2F3F6F0F0F0", "no date: there is no minute 60 (OXR5540)", "--field F:date=HHmmss"},
    {"9(6)", "F2F3F5F9F6F0", "no date: there is no second 60 (OXR5540)", "--field F:date=HHmmss"},
    {"X(10)", "F0F14BF1F34BF2F0F2F3", "no date: there is no month 13 (OXR5540)", "--field F:date=dd.MM.yyyy"},
    {"9(7)", "F2F0F2F3F3F6F7", "no date: there is no day 367 (OXR5540)", "--field F:date=yyyyDDD"},
    {"X(10)", "F0F161F1F161F2F0F2F3", "no date: character 3 is \"/\" (OXR5540)", "--field F:date=dd.MM.yyyy"},
    {"X(2)", "F20F", "no date: character 2 is U+000F (OXR5540)", "--field F:date=HH"},
    {"X(8)", "F2F0F2F340404040", "no date: it has 4 characters, and its pattern 8 (OXR5540)",
     "--field F:date=yyyyMMdd"},
    {"X(6)", "F14BF1F34BF6", "no date: it reads \"1.13.6\", and its pattern is d.M.y (OXR5540)",
     "--field F:date=d.M.y"},
    {"S9(7) COMP-3", "0261122D", "no date: it is below zero", "--field F:date=yyMMdd"},
    {"X(8)", "4040404040404040", "holds blanks, not digits; --blank-numbers null or zero would accept it (OXR5540)",
     "--field F:date=yyyyMMdd"},
};

TEST(BadFields, AreToldToPeople) {
  for (const auto& [picture, bytes, reason, arguments] : kFields) {
    const std::string twice = oxr::test::fromHex(bytes) + oxr::test::fromHex(bytes);
    const Outcome outcome =
        decodeBytes("01 R. 05 F PIC " + std::string(picture) + '.', twice, "--on-error null " + std::string(arguments));
    EXPECT_EQ(outcome.lines, "{\"F\":null}\n{\"F\":null}\n") << picture;
    std::string told;
    for (int record = 1; record <= 2; ++record)
      told += "oxrrec: standard input: record " + std::to_string(record) + ", byte " +
              std::to_string((record - 1) * twice.size() / 2) + ", F: " + reason + "; bytes";
    std::string messages = outcome.messages;
    for (std::size_t at = messages.find("; bytes "); at != std::string::npos; at = messages.find("; bytes ", at + 1))
      messages.erase(at + 7, messages.find('\n', at) - at - 6);
    EXPECT_EQ(messages.substr(0, told.size()), told);
  }
}

// A field of the blanks that a short line is filled up with stands where the line ends.
TEST(BadFields, StandInTheInput) {
  const Outcome outcome = decodeBytes("05 A PIC 9. 05 B PIC 9(3). 05 C PIC 9.", "1\n22222\n",
                                      "--ccsid 819 --records lines --on-error null");
  EXPECT_THAT(outcome.messages, testing::HasSubstr("record 1, byte 1, B: holds blanks"));
  EXPECT_THAT(outcome.messages, testing::HasSubstr("record 1, byte 1, C: holds blanks"));
}

// A float that begins with its last byte ends where the next field begins.
TEST(BadFields, HaveNoBytesOfOthers) {
  const std::string record = oxr::test::fromHex("000000000000F07FF07F");
  const Outcome outcome =
      decodeBytes("05 F COMP-2. 05 G PIC X(2).", record + record, "--floats ieee-le --on-error null");
  EXPECT_THAT(outcome.messages, testing::HasSubstr("record 1, byte 0, F: an infinite number; "));
  EXPECT_THAT(outcome.messages, testing::HasSubstr("record 2, byte 10, F: an infinite number; "));
}

// Good fields between bad ones are read as ever.
TEST(BadFields, LeaveTheOthersAlone) {
  const Outcome outcome =
      decodeBytes("05 A PIC 9. 05 B PIC S9 SIGN LEADING SEPARATE.", "1+2x-41:32-5", "--ccsid 819 --on-error null");
  EXPECT_EQ(outcome.lines, "{\"A\":1,\"B\":2}\n{\"A\":null,\"B\":-4}\n{\"A\":1,\"B\":null}\n{\"A\":2,\"B\":-5}\n");
}

}  // namespace
}  // namespace oxr::rec::test
