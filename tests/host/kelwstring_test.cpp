#include "kelwstring.hpp"

#include <gtest/gtest.h>

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
  text.insertInternal(99, u"ab"_k.characters(), 2, 0);  // beyond the end: appends
  text.insert(0, nullptr);
  EXPECT_EQ(text, u"01234567ab"_k);
  EXPECT_EQ(text.substr(8, 99).length() + text.substr(99, 1).length(), 2u);
  EXPECT_EQ(&std::as_const(text).at(4'000'000'000u), text.characters() + 10);  // the terminator, no failure
  EXPECT_THROW(text.reserve(0xFFFFFFFFu), std::exception);
}

TEST(KelWstring, ComparesAndFindsByCodeUnit) {
  EXPECT_GT(u"\uFFFD"_k.compare(u"\xD83D\xDE00"_k), 0);  // by code unit, not by character
  EXPECT_FALSE(u"banana"_k == static_cast<const unsigned short*>(nullptr));
  EXPECT_FALSE(u"banana\0x"_k == u"banana"_k.characters());  // the length counts, not the first zero
}

TEST(KelWstring, KeepsShortTextsInsideAndSharesLongOnes) {
  const auto isInside = [](const Buffered& text) {
    return text.characters() == reinterpret_cast<const unsigned short*>(&text) + sizeof(KelWstring) / 2;
  };
  const KelWstring seventeen = u"0123456789abcdefg"_k;
  EXPECT_TRUE(isInside(Buffered(u"0123456789abcdef"_k)));
  Buffered text(seventeen), copy(text);
  EXPECT_EQ(copy.characters(), seventeen.characters());
  const KelWstring moved(std::move(text));
  EXPECT_EQ(moved.characters(), seventeen.characters());
  EXPECT_TRUE(isInside(text) && text.length() == 0);  // NOLINT: a moved-from string is empty
}

TEST(KelWstringConvertor, TurnsWideLiteralsIntoCodeUnits) {
  const wchar_t wide[] = {L'a', 0x20AC, 0x1F600, 0x110000, 0};  // the last is no character
  EXPECT_EQ(KelWstringConvertor::toKelWstring(wide), u"a\u20AC\U0001F600\uFFFD"_k);
  EXPECT_EQ(convertString(L"a\u00E9\u20AC"), u"a\u00E9\u00AC"_k);  // the low 8 bits of each
  EXPECT_EQ(KelWstringConvertor::toKelWstring(nullptr) + convertString(L""), KelWstring());
  EXPECT_EQ(toUtf8(u"\xD800x"_k), "\xEF\xBF\xBDx");  // a lone surrogate
  EXPECT_EQ(fromUtf8("\xFFz"), u"\uFFFDz"_k);
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

}  // namespace
}  // namespace oxr::test
