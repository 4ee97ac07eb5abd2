#include "cpunicodeconverter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/ucnv_err.h>

#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "kelconverter.hpp"
#include "support/failures.hpp"
#include "support/headers.hpp"
#include "support/text.hpp"
#include "support/tracing.hpp"

namespace oxr::test {
namespace {

using namespace std::string_view_literals;

constexpr int kTruncated = U_TRUNCATED_CHAR_FOUND;
constexpr int kOverflow = U_BUFFER_OVERFLOW_ERROR;
constexpr int kIllegal = U_ILLEGAL_ARGUMENT_ERROR;

// A conversion's text, or bytes, and status as one value to compare.
using Outcome = std::pair<std::string, int>;

Outcome decoded(const CPUnicodeConverter& page, std::string_view bytes) {
  KelWstring text = u"old"_k;
  UErrorCode status = U_INTERNAL_PROGRAM_ERROR;  // must not matter
  page.toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()), status);
  return {toUtf8(text), status};
}

Outcome encoded(const CPUnicodeConverter& page, const KelWstring& text, int room) {
  std::string bytes(static_cast<std::size_t>(room) + 1, '#');
  UErrorCode status = U_ZERO_ERROR;
  page.fromUnicodeString(bytes.data(), room, text, status);
  EXPECT_EQ(bytes.back(), '#');
  bytes.resize(static_cast<std::size_t>(room));
  return {bytes, status};
}

// ICU by itself with the settings that the class promises.
KelWstring decodedByIcu(const std::string& name, std::string_view bytes) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer converter(ucnv_open(name.c_str(), &status));
  ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  ucnv_setFallback(converter.getAlias(), true);
  KelWstring text;
  unsigned short* const units = text.resizeForOverwrite(static_cast<unsigned>(2 * bytes.size()));
  const int length = ucnv_toUChars(converter.getAlias(), toIcu(units), static_cast<int>(text.length()), bytes.data(),
                                   static_cast<int>(bytes.size()), &status);
  EXPECT_TRUE(U_SUCCESS(status)) << name;
  return text.substr(0, static_cast<unsigned>(length));
}

TEST(CpUnicodeConverter, KnowsTheUnicodeCcsids) {
  for (const int ccsid : {1200, 13488, 17584})
    EXPECT_TRUE(CPUnicodeConverter::IsUnicode(ccsid));
  for (const int ccsid : {1208, 1202, 1204, 0, -1200, 37})
    EXPECT_FALSE(CPUnicodeConverter::IsUnicode(ccsid));
}

TEST(CpUnicodeConverter, NamesItselfForMessages) {
  struct Named : CPUnicodeConverter {
    using CPUnicodeConverter::CPUnicodeConverter;
    using CPUnicodeConverter::name;
  };
  EXPECT_EQ(Named(1200, eEndianBig).name, "utf-16be");
  EXPECT_EQ(Named(13488, eEndianLittle).name, "utf-16le");
  EXPECT_EQ(Named(17584, eEndianBig).name, "utf-16be");
  EXPECT_EQ(Named(500, eEndianBig).name, "ibm-500");
  EXPECT_EQ(Named(1208, eEndianUnset).name, "ibm-1208");
  EXPECT_EQ(Named(1200, eEndianUnset).name, "");
}

TEST(CpUnicodeConverter, TellsWhatIcuKnows) {
  UErrorCode status = U_ZERO_ERROR;
  const struct {
    int ccsid, minimum, maximum;
    UConverterType type;
    const char* name;
  } cases[] = {{37, 1, 1, UCNV_SBCS, "ibm-37_P100-1995"},
               {1208, 1, 3, UCNV_UTF8, "UTF-8"},
               {943, 1, 2, UCNV_MBCS, "ibm-943_P130-1999"},
               {1200, 2, 2, UCNV_UTF16_LittleEndian, "UTF-16LE"}};
  for (const auto& row : cases) {
    const CPUnicodeConverter page(row.ccsid, eEndianLittle);
    EXPECT_EQ(page.getMinBytesPerChar(), row.minimum);
    EXPECT_EQ(page.getMaxBytesPerChar(), row.maximum);
    EXPECT_EQ(page.getType(), row.type);
    EXPECT_STREQ(page.getName(status), row.name);
  }
}

TEST(CpUnicodeConverter, RefusesACodePageWithoutATable) {
  for (const int ccsid : {0, 1, 99999, -5}) {
    const std::string number = std::to_string(ccsid);
    EXPECT_EQ(raisedBy([&] { CPUnicodeConverter page(ccsid, eEndianBig); }),
              recoverableFailure(2132, {"Invalid codepage (or missing table)", number, "ibm-" + number}));
  }
}

TEST(CpUnicodeConverter, CarriesBothHeaders) {
  EXPECT_EQ(headerOfA<CPUnicodeConverter>("QVTB", 37, eEndianBig), "QVTB 0 8240 / 0OXR QVTB 0 8240");
  EXPECT_EQ(headerOfA<CPUnicodeConverter>("QVTC", 37, eEndianBig), "QVTC 8240 8256 / 0OXR QVTC 8240 8256");
}

// Each byte alone and all in one text, where fallbacks and bytes without a character lie in between.
TEST(CpUnicodeConverter, SingleBytePagesReadAsIcuReadsThem) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte)
    all += static_cast<char>(byte);
  for (const int ccsid : {37,  273, 277, 284, 297, 367, 420, 424,  437,  500,  813,  819,  850,  852, 858,
                          869, 870, 871, 874, 875, 912, 923, 1025, 1026, 1047, 1122, 1140, 1148, 1252}) {
    SCOPED_TRACE(ccsid);
    const std::string name = "ibm-" + std::to_string(ccsid);
    ASSERT_NE(KelConverter::createConverter(static_cast<unsigned>(ccsid), 0, nullptr)->singleByteTable(), nullptr);
    CPUnicodeConverter page(ccsid, eEndianBig);
    ASSERT_EQ(decoded(page, all), Outcome(toUtf8(decodedByIcu(name, all)), 0));
    for (const char& byte : all)
      ASSERT_EQ(decoded(page, {&byte, 1}), Outcome(toUtf8(decodedByIcu(name, {&byte, 1})), 0)) << int(byte);

    // The forwarded conversion agrees, and a text cut for want of room leaves nothing behind.
    unsigned short units[256], *target = units;
    const char* source = all.data();
    UErrorCode status = U_ZERO_ERROR;
    EXPECT_EQ(page.toUnicode(target, units + 100, source, source + 256, nullptr, true, status), kOverflow);
    ASSERT_EQ(decoded(page, all), Outcome(toUtf8(decodedByIcu(name, all)), 0));
    status = U_ZERO_ERROR;
    EXPECT_EQ(page.toUnicode(target, units + 256, source, all.data() + 256, nullptr, true, status), 0);
    EXPECT_EQ(toUtf8(UnitView(units, 256)), toUtf8(decodedByIcu(name, all)));
  }
}

TEST(CpUnicodeConverter, OtherPagesReadAsIcuReadsThem) {
  std::mt19937 random(20240229);
  const std::pair<int, const char*> pages[] = {
      {1208, "UTF-8"},    {943, "ibm-943"},     {930, "ibm-930"},  {1388, "ibm-1388"}, {1390, "ibm-1390"},
      {1399, "ibm-1399"}, {33722, "ibm-33722"}, {5488, "gb18030"}, {1200, "UTF-16BE"}, {1232, "UTF-32BE"},
  };
  for (const auto& [ccsid, name] : pages) {
    SCOPED_TRACE(name);
    const CPUnicodeConverter page(ccsid, eEndianBig);
    for (int i = 0; i < 200; ++i) {
      KelWstring text;
      for (unsigned length = 1 + random() % 40; text.length() < length;) {
        const auto unit = static_cast<unsigned short>(random() % 3 == 0 ? 0x4E00 + random() % 0x800 : random() % 0x180);
        text.appendInternal(&unit, 1, 0);
        const unsigned short pair[] = {0xD83D, static_cast<unsigned short>(0xDE00 + random() % 64)};
        if (random() % 4 == 0) text.appendInternal(pair, 2, 0);
      }
      const auto [bytes, status] = encoded(page, text, 400);
      ASSERT_EQ(status, 0);
      ASSERT_EQ(decoded(page, bytes), Outcome(toUtf8(decodedByIcu(name, bytes)), 0));
      const bool holdsAll = ccsid == 1208 || ccsid == 1200 || ccsid == 1232;
      ASSERT_EQ(holdsAll ? decoded(page, bytes).first : toUtf8(text), toUtf8(text));
    }
  }
}

TEST(CpUnicodeConverter, SubstitutesWhatHasNoCounterpart) {
  EXPECT_EQ(decoded(CPUnicodeConverter(424, eEndianBig), "\x70"), Outcome("\uFFFD", 0));
  EXPECT_EQ(encoded(CPUnicodeConverter(37, eEndianBig), u"A\u4E2DB"_k, 10), Outcome("\xC1\x3F\xC2", 0));
  EXPECT_EQ(encoded(CPUnicodeConverter(1252, eEndianBig), u"A\u4E2DB"_k, 10), Outcome("A\x1A"
                                                                                      "B",
                                                                                      0));
  EXPECT_EQ(encoded(CPUnicodeConverter(1208, eEndianBig), u"\xD83D"_k, 10), Outcome("\uFFFD", 0));
  // A fallback: the full-width form of a letter that the page has in its normal form only.
  EXPECT_EQ(encoded(CPUnicodeConverter(850, eEndianBig), u"\uFF21"_k, 10), Outcome("A", 0));
}

TEST(CpUnicodeConverter, ReportsACharacterCutOffByTheEndAndNothingElse) {
  const struct {
    const char* what;
    int ccsid;
    std::string_view bytes;
    const char* text;
    int status;
  } cases[] = {
      {"one byte of three", 1208, "A\xE2"sv, "A", kTruncated},
      {"two bytes of three", 1208, "A\xE2\x82"sv, "A", kTruncated},
      {"three bytes of four", 1208, "\xF0\x9F\x98"sv, "", kTruncated},
      {"whole", 1208, "\xE2\x82\xAC"sv, "\u20AC", 0},
      {"no such byte", 1208,
       "\xFF"sv
       "A"sv,
       "\uFFFDA", 0},
      {"cut off inside the text", 1208,
       "\xE2\x82"sv
       "A"sv,
       "\uFFFDA", 0},
      {"first byte of two", 943, "A\x88"sv, "A", kTruncated},
      {"whole", 943, "\x88\x9F"sv, "\u4E9C", 0},
      {"no such second byte", 943, "\x88\x20"sv, "\x1A ", 0},
      {"half a unit", 1200, "\0A\0"sv, "A", kTruncated},
      {"less than the shortest character", 1200, "A"sv, "", kTruncated},
      {"first half of a pair", 1200, "\0A\xD8\x3D"sv, "A", kTruncated},
      {"a pair and a half unit", 1200, "\xD8\x3D\xDE\0\xD8"sv, "\U0001F600", kTruncated},
      {"second half of a pair", 1200, "\xDE\0\0A"sv, "\uFFFDA", 0},
      {"half a shifted character", 930, "\xC1\x0E\x45"sv, "A", kTruncated},
      {"half of 32 bits", 1232, "\0\0\0A\0\0"sv, "A", kTruncated},
      {"32 bits out of range", 1232, "\x7F\0\0\0\0\0\0A"sv, "\uFFFDA", 0},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::to_string(row.ccsid) + ": " + row.what);
    const CPUnicodeConverter page(row.ccsid, eEndianBig);
    EXPECT_EQ(decoded(page, row.bytes), Outcome(row.text, row.status));
    // Nothing of it is left: a shifted state neither.
    const std::string letter = encoded(page, u"A"_k, 4).first;
    EXPECT_EQ(decoded(page, letter), Outcome("A", 0));
  }
}

TEST(CpUnicodeConverter, ReadsTextsOfMoreUnitsThanCharacters) {
  const CPUnicodeConverter page(1232, eEndianBig);  // four bytes give up to two units
  std::string bytes, text;
  for (int i = 0; i < 5; ++i) {
    bytes += "\0\x01\xF6\0"sv;
    text += "\U0001F600";
    EXPECT_EQ(decoded(page, bytes), Outcome(text, 0));
  }
}

TEST(CpUnicodeConverter, UnitsHeldBackComeOutFirst) {
  const auto holdBack = [](CPUnicodeConverter& page, std::string_view bytes) {
    unsigned short unit = 0, *target = &unit;
    const char* source = bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    EXPECT_EQ(page.toUnicode(target, &unit + 1, source, source + bytes.size(), nullptr, true, status), kOverflow);
    EXPECT_EQ(target, &unit + 1);
    EXPECT_EQ(unit, 0xD83D);
  };
  const auto units = [](const CPUnicodeConverter& page, std::string_view bytes) {
    KelWstring text;
    UErrorCode status = U_ZERO_ERROR;
    page.toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()), status);
    return std::pair(text, static_cast<int>(status));
  };
  CPUnicodeConverter utf16(1200, eEndianBig);
  holdBack(utf16, "\xD8\x3D\xDE\0"sv);
  EXPECT_EQ(units(utf16, "A"), std::pair(u"\xDE00"_k, kTruncated));  // less than a character: must not go on for ever
  CPUnicodeConverter utf8(1208, eEndianBig);
  holdBack(utf8, "\xF0\x9F\x98\x80");
  EXPECT_EQ(units(utf8, "A"), std::pair(u"\xDE00"
                                        u"A"_k,
                                        0));
  holdBack(utf8, "\xF0\x9F\x98\x80");
  utf8.resetToUnicode();
  EXPECT_EQ(units(utf8, "A"), std::pair(u"A"_k, 0));
}

TEST(CpUnicodeConverter, StringsWithoutLengthOrRoomAreIllegalArguments) {
  const CPUnicodeConverter page(37, eEndianBig);
  EXPECT_EQ(decoded(page, ""sv), Outcome("old", kIllegal));
  EXPECT_EQ(decoded(page, {}), Outcome("old", kIllegal));
  KelWstring text = u"old"_k;
  UErrorCode status = U_ZERO_ERROR;
  page.toUnicodeString(text, "\xC1", -1, status);
  EXPECT_EQ(status, kIllegal);
  EXPECT_TRUE(text == u"old"_k);
  char byte = '#';
  for (int room : {0, -1}) {
    const int before = room;
    status = U_ZERO_ERROR;
    page.fromUnicodeString(&byte, room, u"A"_k, status);
    EXPECT_EQ(status, kIllegal);
    EXPECT_EQ(room, before);
  }
  int room = 1;
  status = U_MEMORY_ALLOCATION_ERROR;  // an error from before stays, and nothing is written
  page.fromUnicodeString(&byte, room, u"A"_k, status);
  EXPECT_EQ(status, U_MEMORY_ALLOCATION_ERROR);
  EXPECT_EQ(room, 0);
  EXPECT_EQ(byte, '#');
}

TEST(CpUnicodeConverter, ATextCutForWantOfRoomLeavesNothingBehind) {
  const struct {
    int ccsid, room;
    std::string_view bytes;
  } cases[] = {
      {37, 2, "\x9F\x9F"sv}, {1208, 4, "\u20AC\xE2"sv}, {1200, 3, "\x20\xAC\x20"sv}, {930, 4, "\x0E\x44\x4C\x0F"sv}};
  for (const auto& row : cases) {
    SCOPED_TRACE(row.ccsid);
    CPUnicodeConverter page(row.ccsid, eEndianBig);
    const KelWstring text = row.ccsid == 37    ? u"\u00A4\u00A4\u00A4"_k
                            : row.ccsid == 930 ? u"\u3042A\u3042"_k
                                               : u"\u20AC\u20AC"_k;
    const auto [bytes, status] = encoded(page, text, row.room);
    EXPECT_EQ(status, kOverflow);
    EXPECT_EQ(bytes.substr(0, 2), row.bytes.substr(0, 2));
    const std::string letter = encoded(CPUnicodeConverter(row.ccsid, eEndianBig), u"A"_k, 4).first;
    EXPECT_EQ(encoded(page, u"A"_k, 4), Outcome(letter, 0));
    std::string target(8, '#');
    int size = row.room;
    EXPECT_EQ(raisedBy([&] {
                page.fromUnicode(target.data(), &size, text.characters(), static_cast<int>(text.length()));
              }).inserts.at(1),
              "15");
    EXPECT_EQ(encoded(page, u"A"_k, 4), Outcome(letter, 0));
  }
}

TEST(CpUnicodeConverter, ConvertsWholeTextsOrRaises) {
  CPUnicodeConverter page(37, eEndianBig);  // the local code page is UTF-8 all the same
  char bytes[8] = {};
  unsigned short units[8] = {};
  int size = 8;
  page.fromUnicode(bytes, &size, u"AB"_k.characters(), 2);
  EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(size)), "\xC1\xC2");
  size = 8;
  page.fromUnicodeToLocal(bytes, &size, u"A\u20AC"_k.characters(), 2);
  EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(size)), "A\u20AC");
  size = 8;
  page.fromLocalToUnicode(units, &size, "A\u20AC", 4);
  EXPECT_EQ(toUtf8(UnitView(units, static_cast<std::size_t>(size))), "A\u20AC");

  const auto refused = [](const char* text, const char* status) { return conversionFailure(5502, {text, status}); };
  size = 1;
  EXPECT_EQ(raisedBy([&] { page.fromUnicode(bytes, &size, u"AB"_k.characters(), 2); }),
            refused("Error converting to text to codepage", "15"));
  EXPECT_EQ(raisedBy([&] { page.fromUnicodeToLocal(bytes, &size, u"\u20AC"_k.characters(), 1); }),
            refused("Error converting to text to local codepage", "15"));
  EXPECT_EQ(raisedBy([&] { page.fromLocalToUnicode(units, &size, "AB", 2); }),
            refused("Error converting from local codepage to unicode", "15"));
  EXPECT_EQ(raisedBy([&] { page.fromLocalToUnicode(units, &size, "\xE2\x82", 2); }),
            refused("Error converting from local codepage to unicode", "11"));
  EXPECT_EQ(size, 1);
  size = -1;
  EXPECT_EQ(raisedBy([&] { page.fromUnicodeToLocal(bytes, &size, u"A"_k.characters(), 1); }),
            refused("Error converting to text to local codepage", "1"));
}

TEST(CpUnicodeConverter, ForwardedConversionsMoveThePointers) {
  CPUnicodeConverter page(1208, eEndianBig);
  unsigned short units[4] = {}, *unit = units;
  int offsets[4] = {};
  const char source[] = "a\u20ACb";
  const char* byte = source;
  UErrorCode status = U_ZERO_ERROR;
  EXPECT_EQ(page.toUnicode(unit, units + 4, byte, source + 5, offsets, true, status), 0);
  EXPECT_EQ(unit - units, 3);
  EXPECT_EQ(byte - source, 5);
  EXPECT_EQ(offsets[2], 4);

  char bytes[8] = {}, *out = bytes;
  const unsigned short* in = units;
  EXPECT_EQ(page.fromUnicode(out, bytes + 2, in, units + 3, nullptr, true, status), kOverflow);
  EXPECT_EQ(out - bytes, 2);
  EXPECT_EQ(in - units, 2);
  status = U_ZERO_ERROR;
  EXPECT_EQ(page.fromUnicode(out, bytes + 8, in, units + 3, nullptr, true, status), 0);
  EXPECT_STREQ(bytes, source);
}

TEST(CpUnicodeConverter, TracesForwardersAndFailures) {
  EXPECT_EQ(tracedAt(4,
                     [] {
                       CPUnicodeConverter page(37, eEndianBig);
                       decoded(page, "\xC1");
                       encoded(page, u"A"_k, 1);
                       page.resetToUnicode();
                     }),
            "> CPUnicodeConverter::CPUnicodeConverter\n< CPUnicodeConverter::CPUnicodeConverter\n"
            "> CPUnicodeConverter::resetToUnicode\n< CPUnicodeConverter::resetToUnicode\n");
  EXPECT_EQ(tracedAt(2, [] { CPUnicodeConverter(37, eEndianBig).getMinBytesPerChar(); }), "");
  const std::string failure = tracedAt(3, [] { raisedBy([] { CPUnicodeConverter page(1, eEndianBig); }); });
  EXPECT_THAT(failure, ::testing::StartsWith("CPUnicodeConverter::CPUnicodeConverter: Throwing exception|"
                                             "src/cpi/bsutils/cpunicodeconverter|"));
  EXPECT_THAT(failure, ::testing::EndsWith("|OXR2132|Invalid codepage (or missing table)|1|ibm-1\n"));
}

TEST(CpUnicodeConverterThreads, ObjectsShareNothing) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < 50; ++i)
        for (const int ccsid : {37, 1208, 943, 1200, 1047}) {
          const CPUnicodeConverter page(ccsid, eEndianBig);
          const std::string bytes = encoded(page, u"Threads"_k, 40).first;
          EXPECT_EQ(decoded(page, bytes), Outcome("Threads", 0));
        }
    });
  for (std::thread& thread : threads)
    thread.join();
}

}  // namespace
}  // namespace oxr::test
