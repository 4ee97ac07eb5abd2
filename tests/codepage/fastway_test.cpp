// Conversions that go around ICU against ICU itself: the same text, the same bytes, the same status, the same pointers,
// in one piece and in many.

#include <gtest/gtest.h>
#include <unicode/ucnv_err.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "cpunicodeconverter.hpp"
#include "harness/hex.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

struct Page {
  int ccsid;
  EEndian endian;
  const char* icuName;
};
constexpr Page kPages[] = {
    {37, eEndianBig, "ibm-37"},     {500, eEndianBig, "ibm-500"},      {1047, eEndianBig, "ibm-1047"},
    {1140, eEndianBig, "ibm-1140"}, {819, eEndianBig, "ibm-819"},      {1252, eEndianBig, "ibm-1252"},
    {367, eEndianBig, "ibm-367"},   {437, eEndianBig, "ibm-437"},      {850, eEndianBig, "ibm-850"},
    {424, eEndianBig, "ibm-424"},   {874, eEndianBig, "ibm-874"},      {1208, eEndianBig, "UTF-8"},
    {1200, eEndianBig, "UTF-16BE"}, {1200, eEndianLittle, "UTF-16LE"},
};

void substitute(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes, std::int32_t length,
                UConverterCallbackReason reason, UErrorCode* status) {
  if (*status != U_TRUNCATED_CHAR_FOUND)
    UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason, status);
}

// A converter of the library and one of ICU that are given the same. A step's result: what came out, with room for one
// more that must stay as it was; how far the source was passed; the status.
class Lockstep {
 public:
  explicit Lockstep(const Page& row) : page(row.ccsid, row.endian) {
    UErrorCode status = U_ZERO_ERROR;
    model_.adoptInstead(ucnv_open(row.icuName, &status));
    ucnv_setToUCallBack(model_.getAlias(), substitute, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(model_.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
    ucnv_setFallback(model_.getAlias(), true);
    EXPECT_TRUE(U_SUCCESS(status)) << row.icuName;
  }

  // The number of bytes passed; -1, and a failure of the test, when the two do not agree.
  std::ptrdiff_t decode(std::string_view bytes, std::size_t room, bool flush) {
    std::u16string ours(room + 1, u'#'), theirs = ours;
    const char *source = bytes.data(), *modelSource = source, *const limit = source + bytes.size();
    auto* const units = reinterpret_cast<unsigned short*>(ours.data());
    unsigned short* target = units;
    char16_t* modelTarget = theirs.data();
    UErrorCode status = U_ZERO_ERROR, modelStatus = U_ZERO_ERROR;
    page.toUnicode(target, units + room, source, limit, nullptr, flush, status);
    ucnv_toUnicode(model_.getAlias(), &modelTarget, modelTarget + room, &modelSource, limit, nullptr, flush,
                   &modelStatus);
    return compare(ours, static_cast<std::size_t>(target - units), theirs,
                   static_cast<std::size_t>(modelTarget - theirs.data()), source - bytes.data(),
                   modelSource - bytes.data(), status, modelStatus)
               ? source - bytes.data()
               : -1;
  }

  // The same for code units.
  std::ptrdiff_t encode(std::u16string_view units, std::size_t room, bool flush) {
    std::string ours(room + 1, '#'), theirs = ours;
    const auto* source = reinterpret_cast<const unsigned short*>(units.data());
    const auto* const begin = source;
    const char16_t* modelSource = units.data();
    char *target = ours.data(), *modelTarget = theirs.data();
    UErrorCode status = U_ZERO_ERROR, modelStatus = U_ZERO_ERROR;
    page.fromUnicode(target, ours.data() + room, source, source + units.size(), nullptr, flush, status);
    ucnv_fromUnicode(model_.getAlias(), &modelTarget, modelTarget + room, &modelSource, modelSource + units.size(),
                     nullptr, flush, &modelStatus);
    return compare(ours, static_cast<std::size_t>(target - ours.data()), theirs,
                   static_cast<std::size_t>(modelTarget - theirs.data()), source - begin, modelSource - units.data(),
                   status, modelStatus)
               ? source - begin
               : -1;
  }

  // The same with whole strings, which always pass the source and leave nothing behind when they fail.
  std::ptrdiff_t decodeString(std::string_view bytes) {
    std::u16string theirs(2 * bytes.size() + 40, u'\0');
    const char *source = bytes.data(), *const limit = source + bytes.size();
    char16_t* target = theirs.data();
    UErrorCode status = U_ZERO_ERROR, modelStatus = U_ZERO_ERROR;
    KelWstring text;
    page.toUnicodeString(text, source, static_cast<int>(bytes.size()), status);
    ucnv_toUnicode(model_.getAlias(), &target, target + theirs.size(), &source, limit, nullptr, true, &modelStatus);
    if (U_FAILURE(modelStatus)) ucnv_resetToUnicode(model_.getAlias());
    const auto count = static_cast<std::size_t>(target - theirs.data());
    return compare(std::u16string(text.characters(), text.characters() + text.length()) + u'#', text.length(), theirs,
                   count, 0, 0, status, modelStatus)
               ? limit - bytes.data()
               : -1;
  }
  std::ptrdiff_t encodeString(std::u16string_view units, std::size_t room) {
    std::string ours(room + 1, '#'), theirs = ours;
    const char16_t* source = units.data();
    char* target = theirs.data();
    int size = static_cast<int>(room);
    UErrorCode status = U_ZERO_ERROR, modelStatus = U_ZERO_ERROR;
    page.fromUnicodeString(ours.data(), size, KelWstring(std::basic_string<unsigned short>(units.begin(), units.end())),
                           status);
    ucnv_fromUnicode(model_.getAlias(), &target, target + room, &source, source + units.size(), nullptr, true,
                     &modelStatus);
    if (U_FAILURE(modelStatus)) ucnv_resetFromUnicode(model_.getAlias());
    return compare(ours, static_cast<std::size_t>(size), theirs, static_cast<std::size_t>(target - theirs.data()), 0, 0,
                   status, modelStatus)
               ? static_cast<std::ptrdiff_t>(units.size())
               : -1;
  }
  void reset() {
    page.resetToUnicode();
    ucnv_resetToUnicode(model_.getAlias());
  }

  CPUnicodeConverter page;

 private:
  template <class Text>
  static bool compare(const Text& ours, std::size_t count, const Text& theirs, std::size_t modelCount,
                      std::ptrdiff_t passed, std::ptrdiff_t modelPassed, int status, int modelStatus) {
    const bool same = std::tuple(ours.substr(0, count), passed, status) ==
                      std::tuple(theirs.substr(0, modelCount), modelPassed, modelStatus);
    EXPECT_TRUE(same) << count << " against " << modelCount << " written, " << passed << " against " << modelPassed
                      << " passed, status " << status << " against " << modelStatus;
    EXPECT_EQ(ours.back(), '#') << "written behind the room";
    return same;
  }

  icu::LocalUConverterPointer model_;
};

// Each alone and then all in one text, where each stands between two others.
TEST(DirectPath, EveryCodeUnitAndEveryByteConvertsAsIcuConvertsIt) {
  std::u16string units;
  for (unsigned unit = 0; unit < 0x10000; ++unit)
    units += static_cast<char16_t>(unit);
  std::string pairs;
  for (int i = 0; i < 0x10000; ++i)
    pairs += {static_cast<char>(i >> 8), static_cast<char>(i)};
  for (const Page& row : kPages) {
    SCOPED_TRACE(row.icuName);
    Lockstep both(row);
    for (std::size_t i = 0; i < units.size(); ++i)
      ASSERT_GE(both.encode(std::u16string_view(units).substr(i, 1), 8, true), 0) << i;
    ASSERT_GE(both.encode(units, 4 * units.size(), true), 0);
    for (std::size_t i = 0; i < pairs.size(); i += 2)
      for (const std::size_t length : {1u, 2u})
        ASSERT_GE(both.decode(std::string_view(pairs).substr(i, length), 8, true), 0) << i / 2;
    ASSERT_GE(both.decode(pairs, 2 * pairs.size(), true), 0);
  }
}

// Lead and trail bytes on both sides of each limit: overlong forms, surrogates, what lies above U+10FFFF, cut ones.
TEST(DirectPath, Utf8AtItsLimitsConvertsAsIcuConvertsIt) {
  Lockstep both({1208, eEndianBig, "UTF-8"});
  for (int lead = 0xC0; lead < 0x100; ++lead)
    for (const char second : "\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0")
      for (const char third : "\x7F\x80\xBF\xC0")
        for (const char fourth : "\x7F\x80\xBF\xC0") {
          const std::string bytes{static_cast<char>(lead), second, third, fourth, 'A'};
          for (std::size_t length = 2; length <= bytes.size(); ++length)
            ASSERT_GE(both.decode(bytes.substr(0, length), 8, true), 0) << toHex(bytes);
        }
}

class RandomText {
 public:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  // Mostly well-formed text: runs of ASCII and of each other kind, long enough for blocks, with a lone surrogate, a
  // byte-order mark or any unit at all now and then.
  std::u16string units() {
    std::u16string text;
    for (unsigned runs = below(6); runs != 0; --runs)
      for (unsigned kind = below(9), left = below(40); left != 0; --left)
        appendCharacter(text, kind == 8 ? below(8) : kind);
    return text;
  }
  // The same as bytes, with some of them spoilt.
  std::string bytes(const Page& row) {
    const std::u16string text = units();
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUConverterPointer page(ucnv_open(row.icuName, &status));
    std::string result(4 * text.size() + 4, '\0');
    const int length = ucnv_fromUChars(page.getAlias(), result.data(), static_cast<int>(result.size()), text.data(),
                                       static_cast<int>(text.size()), &status);
    result.resize(static_cast<std::size_t>(length));
    for (unsigned faults = below(4) == 0 ? below(4) : 0; faults != 0 && !result.empty(); --faults)
      result[below(static_cast<unsigned>(result.size()))] = static_cast<char>(below(256));
    return result;
  }

 private:
  void appendCharacter(std::u16string& text, unsigned kind) {
    switch (kind) {
      case 0:
      case 1:
      case 2:
        text += static_cast<char16_t>(below(0x80));
        break;
      case 3:
        text += static_cast<char16_t>(0x80 + below(0x780));
        break;
      case 4:
        text += static_cast<char16_t>(0x800 + below(0xD000));
        break;
      case 5:
        text += {static_cast<char16_t>(0xD800 + below(0x400)), static_cast<char16_t>(0xDC00 + below(0x400))};
        break;
      case 6:
        text += static_cast<char16_t>(below(40) == 0 ? 0xD800 + below(0x800) : 0xA0 + below(0x60));
        break;
      default:
        text += below(20) == 0 ? u"\xFEFF\xFFFE\uFFFD\u00AD\u200B\uFF21\0"[below(7)]
                               : static_cast<char16_t>(below(0x10000));
    }
  }
  std::mt19937 random_{20240229};
};

// In pieces of any length into any room, so that halves of characters and what finds no room are held back; now and
// then the converter starts anew or converts a whole string in between.
TEST(DirectPath, TextInPiecesConvertsAsIcuConvertsIt) {
  RandomText random;
  for (const Page& row : kPages) {
    SCOPED_TRACE(row.icuName);
    Lockstep both(row);
    const auto inPieces = [&](auto text, auto step) {
      const unsigned longest = random.below(3) == 0 ? 5 : 100;
      for (std::size_t at = 0, stuck = 0; at < text.size() && stuck < 20; ++stuck) {
        const std::size_t size = std::min<std::size_t>(1 + random.below(longest), text.size() - at);
        const bool last = at + size == text.size();
        const std::ptrdiff_t passed =
            step(text.substr(at, size), random.below(2 * longest), last && random.below(2) == 0);
        if (passed < 0) return false;
        at += static_cast<std::size_t>(passed);
        if (passed > 0) stuck = 0;
      }
      // What is still held comes out here.
      return step(text.substr(text.size()), 100, true) >= 0;
    };
    for (int i = 0; i < 3000; ++i) {
      const std::u16string units = random.units();
      const std::string bytes = random.bytes(row);
      SCOPED_TRACE(toHex(bytes));
      ASSERT_TRUE(inPieces(std::string_view(bytes), [&](auto piece, auto room, bool flush) {
        if (random.below(20) == 0) both.reset();
        return piece.empty() || random.below(8) != 0 ? both.decode(piece, room, flush) : both.decodeString(piece);
      }));
      ASSERT_TRUE(inPieces(std::u16string_view(units), [&](auto piece, auto room, bool flush) {
        return room == 0 || random.below(8) != 0 ? both.encode(piece, room, flush) : both.encodeString(piece, room);
      }));
    }
  }
}

}  // namespace
}  // namespace oxr::test
