#include "cpunicodeconverter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

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

TEST(CpUnicodeConverter, GoesOnUntilAllUnitsAreOut) {
  const CPUnicodeConverter utf32(1232, eEndianBig);  // four bytes give up to two units
  EXPECT_EQ(decoded(utf32, "\0\x01\xF6\0\0\x01\xF6\0"sv), Outcome("\U0001F600\U0001F600", 0));
  // Less than a character gives no room by itself, and a half is held back: must not go on for ever.
  CPUnicodeConverter page(1200, eEndianBig);
  unsigned short unit = 0, *target = &unit;
  const char* source = "\xD8\x3D\xDE\0";
  UErrorCode status = U_ZERO_ERROR;
  EXPECT_EQ(page.toUnicode(target, &unit + 1, source, source + 4, nullptr, true, status), kOverflow);
  EXPECT_EQ(decoded(page, "A"), Outcome("\uFFFD", kTruncated));
}

TEST(CpUnicodeConverter, StringsWithoutLengthOrRoomAreIllegalArguments) {
  const CPUnicodeConverter page(37, eEndianBig);
  EXPECT_EQ(decoded(page, ""sv), Outcome("old", kIllegal));
  EXPECT_EQ(decoded(page, {nullptr, 3}), Outcome("old", kIllegal));
  // The room, the status before, both afterwards: an error from before stays.
  for (const auto& [room, before, left, after] : {std::array{0, 0, 0, kIllegal}, {-1, 0, -1, kIllegal}, {1, 7, 0, 7}}) {
    char byte = '#';
    int size = room;
    auto status = static_cast<UErrorCode>(before);
    page.fromUnicodeString(&byte, size, u"A"_k, status);
    EXPECT_TRUE(size == left && status == after && byte == '#') << room;
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
  CPUnicodeConverter mixed(930, eEndianBig);
  for (int room = 0; room < 3; ++room) {
    EXPECT_EQ(raisedBy([&] { mixed.fromUnicode(bytes, &room, u"\u3042A"_k.characters(), 2); }),
              refused("Error converting to text to codepage", "15"));
    EXPECT_EQ(encoded(mixed, u"A"_k, 4), Outcome("\xC1", 0));  // nothing is left of it, a shift neither
  }
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
