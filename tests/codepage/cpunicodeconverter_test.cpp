#include "cpunicodeconverter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/ucnv_err.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <thread>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"
#include "kelconverter.hpp"

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

TEST(CpUnicodeConverter, NamesItselfAndKnowsItsPage) {
  struct Named : CPUnicodeConverter {
    using CPUnicodeConverter::CPUnicodeConverter;
    using CPUnicodeConverter::name;
  };
  // CCSID, byte order, one of the Unicode CCSIDs, name, shortest and longest character, ICU's name.
  for (const Row& c : rows("1200 2 1 utf-16be 2 2 UTF-16BE; 13488 1 1 utf-16le 2 2 UTF-16LE; "
                           "17584 2 1 utf-16be 2 2 UTF-16BE; 1202 2 0 ibm-1202 2 2 UTF-16LE; "
                           "1208 -1 0 ibm-1208 1 3 UTF-8; 1392 1 0 ibm-1392 1 4 gb18030")) {
    const Named page(std::stoi(c[0]), EEndian{std::stoi(c[1])});
    UErrorCode status = U_ZERO_ERROR;
    EXPECT_EQ(CPUnicodeConverter::IsUnicode(std::stoi(c[0])), c[2] == "1");
    EXPECT_EQ(page.name, c[3]);
    EXPECT_EQ(page.getMinBytesPerChar(), std::stoi(c[4]));
    EXPECT_EQ(page.getMaxBytesPerChar(), std::stoi(c[5]));
    EXPECT_EQ(page.getName(status), c[6]);
  }
  EXPECT_EQ(Named(1200, eEndianUnset).name, "");
  EXPECT_EQ(CPUnicodeConverter(37, eEndianBig).getType(), UCNV_SBCS);
  EXPECT_EQ(headerOfA<CPUnicodeConverter>("QVTB", 37, eEndianBig), "QVTB 0 8240 / 0OXR QVTB 0 8240");
  EXPECT_EQ(headerOfA<CPUnicodeConverter>("QVTC", 37, eEndianBig), "QVTC 8240 8256 / 0OXR QVTC 8240 8256");
}

TEST(CpUnicodeConverter, RefusesACodePageWithoutATable) {
  for (const std::string ccsid : {"0", "99999", "-5"})
    EXPECT_EQ(raisedBy([&] { CPUnicodeConverter page(std::stoi(ccsid), eEndianBig); }),
              recoverableFailure(2132, {"Invalid codepage (or missing table)", ccsid, "ibm-" + ccsid}));
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
  const KelWstring alphabet = u"Az09 \u00E9\uFF71\u4E00\u3042\u20AC\U0001F600"_k;
  for (const Row& c : rows("1208 UTF-8; 943 ibm-943; 930 ibm-930; 1388 ibm-1388; 1390 ibm-1390; 1399 ibm-1399; "
                           "33722 ibm-33722; 5488 gb18030; 1200 UTF-16BE; 1232 UTF-32BE")) {
    SCOPED_TRACE(shown(c));
    const CPUnicodeConverter page(std::stoi(c[0]), eEndianBig);
    for (int i = 0; i < 200; ++i) {
      KelWstring text = u"A"_k;
      for (unsigned parts = random() % 10; parts != 0; --parts)
        text = text + alphabet.substr(random() % 12, random() % 12);
      const auto [bytes, status] = encoded(page, text, 800);
      ASSERT_EQ(status, 0);
      ASSERT_EQ(decoded(page, bytes), Outcome(toUtf8(decodedByIcu(c[1], bytes)), 0));
    }
  }
}

TEST(CpUnicodeConverter, SubstitutesWhatHasNoCounterpart) {
  const auto written = [](int ccsid, const KelWstring& text) {
    return encoded(CPUnicodeConverter(ccsid, eEndianBig), text, 10);
  };
  EXPECT_EQ(written(37, u"A\u4E2D"_k), Outcome("\xC1\x3F", 0));
  EXPECT_EQ(written(1252, u"A\u4E2D"_k), Outcome("A\x1A", 0));
  EXPECT_EQ(written(1208, u"\xD83D"_k), Outcome("\uFFFD", 0));
  EXPECT_EQ(written(850, u"\uFF21"_k), Outcome("A", 0));  // a fallback: a full-width letter
}

TEST(CpUnicodeConverter, ReportsACharacterCutOffByTheEndAndSubstitutesTheRest) {
  // CCSID, bytes, text, status.
  for (const Row& c : rows("1208 41E2 A 11; 1208 41E282 A 11; 1208 F09F98 '' 11; 1208 E282AC \u20AC 0; "
                           "1208 FF41 \uFFFDA 0; 1208 E28241 \uFFFDA 0; "  // cut off inside the text: no end
                           "943 4188 A 11; 943 889F \u4E9C 0; 943 8820 \032_ 0; 424 70 \uFFFD 0; "
                           "1200 004100 A 11; 1200 41 '' 11; "                            // half a unit
                           "1200 0041D83D A 11; 1200 D83DDE00D8 \U0001F600 11; "          // half a pair
                           "1200 DE000041 \uFFFDA 0; 930 C10E45 A 11; "                   // inside shifted text
                           "1232 000000410000 A 11; 1232 7F00000000000041 \uFFFDA 0")) {  // half of 32 bits; too much
    SCOPED_TRACE(shown(c));
    const CPUnicodeConverter page(std::stoi(c[0]), eEndianBig);
    EXPECT_EQ(decoded(page, fromHex(c[1])), Outcome(c[2], std::stoi(c[3])));
    // Nothing of it is left, a shift neither.
    EXPECT_EQ(decoded(page, encoded(page, u"A"_k, 4).first), Outcome("A", 0));
  }
}

TEST(CpUnicodeConverter, GoesOnUntilAllUnitsAreOut) {
  const CPUnicodeConverter utf32(1232, eEndianBig);  // four bytes give up to two units
  EXPECT_EQ(decoded(utf32, "\0\x01\xF6\0\0\x01\xF6\0"sv), Outcome("\U0001F600\U0001F600", 0));

  // The second half of a pair that found no room comes out first; an unpaired half shows as U+FFFD.
  const auto holdingBack = [](int ccsid, std::string_view bytes) {
    auto page = std::make_unique<CPUnicodeConverter>(ccsid, eEndianBig);
    unsigned short unit = 0, *target = &unit;
    const char* source = bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    EXPECT_EQ(page->toUnicode(target, &unit + 1, source, source + bytes.size(), nullptr, true, status), kOverflow);
    EXPECT_EQ(unit, 0xD83D);
    return page;
  };
  // Less than a character, which gives no room by itself: must not go on for ever.
  EXPECT_EQ(decoded(*holdingBack(1200, "\xD8\x3D\xDE\0"sv), "A"), Outcome("\uFFFD", kTruncated));
  EXPECT_EQ(decoded(*holdingBack(1208, "\U0001F600"), "A"), Outcome("\uFFFDA", 0));
  const auto reset = holdingBack(1208, "\U0001F600");
  reset->resetToUnicode();
  EXPECT_EQ(decoded(*reset, "A"), Outcome("A", 0));
}

TEST(CpUnicodeConverter, StringsWithoutLengthOrRoomAreIllegalArguments) {
  const CPUnicodeConverter page(37, eEndianBig);
  EXPECT_EQ(decoded(page, ""sv), Outcome("old", kIllegal));
  EXPECT_EQ(decoded(page, {nullptr, 3}), Outcome("old", kIllegal));
  char byte = '#';
  const struct {
    int room, roomLeft;
    UErrorCode before, after;
  } cases[] = {{0, 0, U_ZERO_ERROR, U_ILLEGAL_ARGUMENT_ERROR},
               {-1, -1, U_ZERO_ERROR, U_ILLEGAL_ARGUMENT_ERROR},
               {1, 0, U_MEMORY_ALLOCATION_ERROR, U_MEMORY_ALLOCATION_ERROR}};  // an error from before stays
  for (auto row : cases) {
    page.fromUnicodeString(&byte, row.room, u"A"_k, row.before);
    EXPECT_EQ(row.before, row.after);
    EXPECT_EQ(row.room, row.roomLeft);
    EXPECT_EQ(byte, '#');
  }
}

TEST(CpUnicodeConverter, ATextCutForWantOfRoomLeavesNothingBehind) {
  for (const int ccsid : {37, 1208, 1200, 930}) {
    SCOPED_TRACE(ccsid);
    CPUnicodeConverter page(ccsid, eEndianBig);
    const auto letter = encoded(page, u"A"_k, 4);
    const KelWstring text = u"\u3042\u3042A"_k;  // three bytes each, two, or shifted
    for (int room = 1; room < 3; ++room) {
      EXPECT_EQ(encoded(page, text, room).second, kOverflow);
      EXPECT_EQ(encoded(page, u"A"_k, 4), letter);
      std::string target(4, '#');
      EXPECT_EQ(raisedBy([&] { page.fromUnicode(target.data(), &room, text.characters(), 3); }),
                conversionFailure(5502, {"Error converting to text to codepage", "15"}));
      EXPECT_EQ(encoded(page, u"A"_k, 4), letter);
    }
  }
}

TEST(CpUnicodeConverter, ConvertsWholeTextsOrRaises) {
  CPUnicodeConverter page(37, eEndianBig);  // the local code page is UTF-8 all the same
  char bytes[8] = {};
  unsigned short units[8] = {};
  const auto written = [](const char* begin, int size) { return std::string(begin, static_cast<std::size_t>(size)); };
  int size = 8;
  page.fromUnicode(bytes, &size, u"AB"_k.characters(), 2);
  EXPECT_EQ(written(bytes, size), "\xC1\xC2");
  size = 8;
  page.fromUnicodeToLocal(bytes, &size, u"A\u20AC"_k.characters(), 2);
  EXPECT_EQ(written(bytes, size), "A\u20AC");
  size = 8;
  page.fromLocalToUnicode(units, &size, "A\u20AC", 4);
  EXPECT_EQ(toUtf8(UnitView(units, static_cast<std::size_t>(size))), "A\u20AC");

  const auto refused = [](const char* text, const char* status) { return conversionFailure(5502, {text, status}); };
  for (int room : {1, -1}) {
    const char* const status = room == 1 ? "15" : "1";
    EXPECT_EQ(raisedBy([&] { page.fromUnicodeToLocal(bytes, &room, u"\u20AC"_k.characters(), 1); }),
              refused("Error converting to text to local codepage", status));
    EXPECT_EQ(raisedBy([&] { page.fromLocalToUnicode(units, &room, "AB", 2); }),
              refused("Error converting from local codepage to unicode", status));
    EXPECT_EQ(std::abs(room), 1);
  }
  size = 8;
  EXPECT_EQ(raisedBy([&] { page.fromLocalToUnicode(units, &size, "\xE2\x82", 2); }),
            refused("Error converting from local codepage to unicode", "11"));
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
  const auto work = [] {
    for (int i = 0; i < 50; ++i)
      for (const int ccsid : {37, 1208, 943, 1200, 1047}) {
        const CPUnicodeConverter page(ccsid, eEndianBig);
        EXPECT_EQ(decoded(page, encoded(page, u"Threads"_k, 40).first), Outcome("Threads", 0));
      }
  };
  std::thread first(work), second(work), third(work);
  first.join();
  second.join();
  third.join();
}

}  // namespace
}  // namespace oxr::test
