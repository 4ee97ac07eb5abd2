#include "kelwstring.hpp"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "harness/text.hpp"

namespace oxr::test {
namespace {

using Buffered = KelBufferedWstring<16u>;

// What edits do otherwise is held against the standard string: fuzz/host/kelwstring_check.hpp.
TEST(KelWstring, EmptiesAndClampsAtTheEdges) {
  KelWstring text = u"0123456789"_k;
  text.eraseInternal(8, 0xFFFFFFFF);
  text.insertInternal(99, u"ab"_k.characters(), 2, 0);  // past the end: appends
  text.insert(0, nullptr);
  text.insert(1, u"--"_k.characters());
  EXPECT_EQ(text, u"0--1234567ab"_k);
  EXPECT_TRUE(text.substr(10, 99) == u"ab"_k && text.substr(99, 1) == KelWstring());
  const KelWstring& constant = text;
  EXPECT_TRUE(constant[0] == u'0' && constant.at(12) == 0);
  EXPECT_EQ(&constant.at(4'000'000'000u), text.characters() + 12);  // the terminator, no failure
  text.eraseInternal(0, 0xFFFFFFFF);
  EXPECT_TRUE(text.length() == 0 && text.characters()[0] == 0);
  EXPECT_THROW(text.reserve(0xFFFFFFFFu), std::exception);
}

TEST(KelWstring, ComparesAndFindsByCodeUnit) {
  const KelWstring text = u"banana"_k, shared = u"a text too long for the inline buffer"_k, sharing(shared);
  EXPECT_TRUE(sharing.characters() == shared.characters() && sharing.compare(shared) == 0);
  EXPECT_GT(u"\uFFFD"_k.compare(u"\xD83D\xDE00"_k), 0);  // by code unit, not by character
  const unsigned short* const null = nullptr;
  EXPECT_TRUE(KelWstring() == null && !(text == null) && !(text == u"banan"_k.characters()));
  EXPECT_FALSE(u"banana\0x"_k == u"banana"_k.characters());  // the length counts, not the first zero
  EXPECT_EQ((std::map<KelWstring, int>{{u"b"_k, 1}, {u"a"_k, 2}, {u"ab"_k, 3}}.begin()->second), 2);
  EXPECT_TRUE(text.find(u'n', 3) == 4 && text.find(u'z', 0) == KelWstring::npos);
  EXPECT_TRUE(text.find(KelWstring(), 6) == 6 && text.find(KelWstring(), 7) == KelWstring::npos);
}

TEST(KelWstring, KeepsShortTextsInsideAndSharesLongOnes) {
  const auto isInside = [](const Buffered& text) {
    const auto* const object = reinterpret_cast<const unsigned short*>(&text);
    return text.characters() >= object && text.characters() < object + sizeof text / sizeof *object;
  };
  const KelWstring seventeen = u"0123456789abcdefg"_k;
  EXPECT_TRUE(isInside(Buffered(u"0123456789abcdef"_k)));
  Buffered text(seventeen), copy(text);
  EXPECT_EQ(copy.characters(), seventeen.characters());
  copy.eraseInternal(1, 0xFFFFFFFF);  // leaves the block to the others
  EXPECT_TRUE(isInside(copy) && text == seventeen);
  const unsigned short* const before = text.characters();
  const KelWstring moved(std::move(text));
  EXPECT_EQ(moved.characters(), before);
  EXPECT_TRUE(isInside(text) && text.length() == 0);  // NOLINT: a moved-from string is empty
}

TEST(KelWstringThreads, StringsSharingABlockChangeApart) {
  const KelWstring shared = u"one block for all of these strings"_k;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 4; ++i)
    threads.emplace_back([&shared, i] {
      for (int round = 0; round < 2'000; ++round) {
        KelWstring mine(shared), again(mine);
        mine.at(i) = u'#';
        again.appendInternal(mine.characters(), 3, 0);
        ASSERT_TRUE(mine[i] == u'#' && again.length() == shared.length() + 3);
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(shared, u"one block for all of these strings"_k);
}

TEST(KelWstringConvertor, TurnsWideLiteralsIntoCodeUnits) {
  const wchar_t wide[] = {L'a', 0x20AC, 0x1F600, 0x110000, 0};  // the last is no character
  EXPECT_EQ(KelWstringConvertor::toKelWstring(wide), u"a\u20AC\U0001F600\uFFFD"_k);
  EXPECT_EQ(convertString(L"a\u00E9\u20AC"), u"a\u00E9\u00AC"_k);  // the low 8 bits of each
  EXPECT_EQ(KelWstringConvertor::toKelWstring(nullptr) + convertString(L""), KelWstring());
  EXPECT_TRUE(convertChar(0x20AC) == 0xAC && convertChar(0) == 0);
  EXPECT_EQ(toUtf8(u"\xD800x"_k), "\xEF\xBF\xBDx");  // a lone surrogate
  EXPECT_EQ(fromUtf8("\xFFz"), u"\uFFFDz"_k);
}

}  // namespace
}  // namespace oxr::test
