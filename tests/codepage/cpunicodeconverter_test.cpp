#include "cpunicodeconverter.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

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

TEST(CpUnicodeConverter, StringsTakeWhatOthersLeft) {
  // Less than a character gives no room by itself, and a half is held back: must not go on for ever.
  CPUnicodeConverter page(1200, eEndianBig);
  unsigned short unit = 0, *target = &unit;
  const char* source = "\xD8\x3D\xDE\0";
  UErrorCode status = U_ZERO_ERROR;
  EXPECT_EQ(page.toUnicode(target, &unit + 1, source, source + 4, nullptr, true, status), U_BUFFER_OVERFLOW_ERROR);
  EXPECT_EQ(decoded(page, "A"), Outcome("\uFFFD", U_TRUNCATED_CHAR_FOUND));
  EXPECT_EQ(decoded(page, ""), Outcome("old", U_ILLEGAL_ARGUMENT_ERROR));
  EXPECT_EQ(decoded(page, {nullptr, 3}), Outcome("old", U_ILLEGAL_ARGUMENT_ERROR));
  // The room, the status before, the status afterwards: an error from before stays.
  for (const auto& [room, before, after] : {std::array{0, 0, 1}, {-1, 0, 1}, {1, 7, 7}}) {
    char byte = '#';
    int size = room;
    status = static_cast<UErrorCode>(before);
    CPUnicodeConverter(37, eEndianBig).fromUnicodeString(&byte, size, u"A"_k, status);
    EXPECT_TRUE(size == (after == 7 ? 0 : room) && status == after && byte == '#') << room;
  }
}

// Where a range of so many ends, also one that no memory has.
template <class T>
T* endOf(T* begin, long count) {
  return reinterpret_cast<T*>(reinterpret_cast<std::intptr_t>(begin) + count * static_cast<long>(sizeof(T)));
}

// The bytes, the room for them and the status before; the status afterwards. Nothing moves.
TEST(CpUnicodeConverter, LeavesBadRangesAlone) {
  for (const auto& [length, room, before, after] :
       {std::array<long, 4>{1, 1, 7, 7}, {1, -1, 0, 1}, {0x40000000, 1, 0, 1}, {1, 0x80000000, 0, 1}}) {
    CPUnicodeConverter page(37, eEndianBig);
    const unsigned short units[] = {'A', 'B'}, *source = units;
    char byte = '#', *target = &byte;
    auto status = static_cast<UErrorCode>(before);
    page.fromUnicode(target, endOf(&byte, room), source, endOf(units, length), nullptr, true, status);
    EXPECT_TRUE(status == after && byte == '#' && target == &byte && source == units) << length << '/' << room;
  }
}

// What stands behind the offsets of the bytes stays: halves of pairs would make ICU go beyond.
TEST(CpUnicodeConverter, WritesAnOffsetForEachByte) {
  struct Case {
    std::vector<unsigned short> text;
    std::ptrdiff_t room;
    std::vector<int> offsets;
    UErrorCode status;
  };
  for (auto [text, room, offsets, after] :
       {Case{{0xDE00, 'B'}, 1, {0}, U_BUFFER_OVERFLOW_ERROR}, Case{{0xD83D, 'A'}, 1, {0}, U_BUFFER_OVERFLOW_ERROR},
        Case{{'A', 0xDE00, 'B', 0xDE00, 0xDE01}, 5, {0, 1, 2, 3, 4}, U_ZERO_ERROR},
        Case{{0xD83D, 0xDE00, 'A'}, 3, {0, 2}, U_ZERO_ERROR}}) {
    CPUnicodeConverter page(37, eEndianUnset);
    char bytes[8];
    std::vector<int> found(8, -7);
    char* target = bytes;
    const unsigned short* source = text.data();
    UErrorCode status = U_ZERO_ERROR;
    page.fromUnicode(target, bytes + room, source, source + text.size(), found.data(), true, status);
    EXPECT_EQ(status, after);
    EXPECT_EQ(static_cast<std::size_t>(target - bytes), offsets.size());
    offsets.resize(found.size(), -7);
    EXPECT_EQ(found, offsets);
  }
}

TEST(CpUnicodeConverter, ConvertsWholeTextsOrRaises) {
  CPUnicodeConverter page(37, eEndianBig), mixed(930, eEndianBig);  // the local code page is UTF-8 all the same
  using Encode = void (CPUnicodeConverter::*)(char*, int*, const unsigned short*, int);
  const auto written = [](CPUnicodeConverter& from, Encode encode, int size, const KelWstring& text) {
    char bytes[8] = {};
    const Raised raised =
        raisedBy([&] { (from.*encode)(bytes, &size, text.characters(), static_cast<int>(text.length())); });
    return raised.kind.empty() ? std::string(bytes, static_cast<std::size_t>(size))
                               : std::to_string(raised.number & 0xFFFF) + shown(raised.inserts);
  };
  const auto read = [&](int size, const std::string& text) {
    unsigned short units[8] = {};
    const Raised raised =
        raisedBy([&] { page.fromLocalToUnicode(units, &size, text.data(), static_cast<int>(text.size())); });
    return raised.kind.empty() ? toUtf8(UnitView(units, static_cast<std::size_t>(size)))
                               : std::to_string(raised.number & 0xFFFF) + shown(raised.inserts);
  };
  const Encode encode = &CPUnicodeConverter::fromUnicode, toLocal = &CPUnicodeConverter::fromUnicodeToLocal;
  EXPECT_EQ(written(page, encode, 8, u"AB"_k), "\xC1\xC2");
  EXPECT_EQ(written(page, toLocal, 8, u"A\u20AC"_k), "A\u20AC");
  EXPECT_EQ(written(page, toLocal, 1, u"\u20AC"_k), "5502[Error converting to text to local codepage][15]");
  EXPECT_EQ(written(page, toLocal, -1, u"\u20AC"_k), "5502[Error converting to text to local codepage][1]");
  EXPECT_EQ(read(8, "A\u20AC"), "A\u20AC");
  EXPECT_EQ(read(1, "AB"), "5502[Error converting from local codepage to unicode][15]");
  EXPECT_EQ(read(-1, "AB"), "5502[Error converting from local codepage to unicode][1]");
  EXPECT_EQ(read(8, "\xE2\x82"), "5502[Error converting from local codepage to unicode][11]");
  for (int room = 0; room < 3; ++room) {
    EXPECT_EQ(written(mixed, encode, room, u"\u3042A"_k), "5502[Error converting to text to codepage][15]");
    EXPECT_EQ(encoded(mixed, u"A"_k, 4), Outcome("\xC1", 0));  // nothing is left of it, a shift neither
  }
}

TEST(CpUnicodeConverter, TracesForwardersAndFailures) {
  const auto traced = [] {
    CPUnicodeConverter page(37, eEndianBig);
    decoded(page, "\xC1");
    encoded(page, u"A"_k, 1);
    page.resetToUnicode();
  };
  EXPECT_EQ(tracedAt(4, traced),
            "> CPUnicodeConverter::CPUnicodeConverter\n< CPUnicodeConverter::CPUnicodeConverter\n"
            "> CPUnicodeConverter::resetToUnicode\n< CPUnicodeConverter::resetToUnicode\n");
  EXPECT_EQ(tracedAt(2, [] { CPUnicodeConverter(37, eEndianBig).getMinBytesPerChar(); }), "");
  const std::string failure = tracedAt(3, [] { raisedBy([] { CPUnicodeConverter page(1, eEndianBig); }); });
  EXPECT_TRUE(failure.starts_with("CPUnicodeConverter::CPUnicodeConverter: Throwing exception|src/cpi/bsutils/cp") &&
              failure.ends_with("|OXR2132|Invalid codepage (or missing table)|1|ibm-1\n"))
      << failure;
}

TEST(CpUnicodeConverterThreads, ObjectsShareNothing) {
  const auto work = [] {
    for (const int ccsid : {37, 1208, 943, 1200, 1047}) {
      const CPUnicodeConverter page(ccsid, eEndianBig);
      EXPECT_EQ(decoded(page, encoded(page, u"Threads"_k, 40).first), Outcome("Threads", 0));
    }
  };
  std::thread first(work), second(work), third(work);
  for (std::thread* const thread : {&first, &second, &third})
    thread->join();
}

}  // namespace
}  // namespace oxr::test
