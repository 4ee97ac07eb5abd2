#include "kelwstring.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "harness/text.hpp"

namespace oxr::test {
namespace {

using Model = std::basic_string<unsigned short>;
using Buffered = KelBufferedWstring<16u>;

Model modelOf(const KelWstring& text) {
  return Model(text.view());
}

// Random edits of strings that share blocks, each held against the standard string: contents, terminator, and that no
// other string changes with it. The lengths lie around the inline capacity of 16 and the first block's 37.
TEST(KelWstring, EditsAsTheStandardStringDoes) {
  std::mt19937 random(20260301);
  const auto below = [&](unsigned limit) { return random() % limit; };
  KelWstring plain[3];
  Buffered buffered[3];
  KelWstring* const strings[] = {&plain[0], &plain[1], &plain[2], &buffered[0], &buffered[1], &buffered[2]};
  Model models[6];
  for (int step = 0; step < 40'000; ++step) {
    const unsigned which = below(6), other = below(6);
    KelWstring& text = *strings[which];
    Model& model = models[which];
    Model fresh(below(4) == 0 ? below(60) : below(18), 0);
    for (auto& unit : fresh)
      unit = static_cast<unsigned short>('a' + below(26));
    const auto count = static_cast<unsigned>(fresh.size());
    const unsigned position = below(static_cast<unsigned>(model.size()) + 1), length = below(20);
    const unsigned operation = below(14);
    SCOPED_TRACE(testing::Message() << "step " << step << ", operation " << operation);
    if (operation == 0) text.assignInternal(fresh.data(), count, 0), model = fresh;
    if (operation == 1) text.appendInternal(fresh.data(), count, 0), model += fresh;
    if (operation == 2) text.insertInternal(position, fresh.data(), count, 0), model.insert(position, fresh);
    if (operation == 3)
      text.replaceInternal(position, length, fresh.data(), count, 0), model.replace(position, length, fresh);
    if (operation == 4) text.eraseInternal(position, length), model.erase(position, length);
    if (operation == 5) text.reserve(count);
    if (operation == 6) text.assign(*strings[other]), model = Model(models[other]);
    if (operation == 7) {  // a piece of the string itself is the text
      const unsigned start = below(static_cast<unsigned>(model.size()) + 1);
      const Model piece = model.substr(start, length);
      text.replaceInternal(position, 3, text.characters() + start, static_cast<unsigned>(piece.size()), 0);
      model.replace(position, 3, piece);
    }
    if (operation == 8 && position < model.size()) text.at(position) = model[position] = 'X';
    if (operation == 9) std::copy(fresh.begin(), fresh.end(), text.resizeForOverwrite(count)), model = fresh;
    if (operation == 10) text = text.substr(position, length), model = model.substr(position, length);
    if (operation == 11 && which != other) {
      text = std::move(*strings[other]), model = models[other];
      *strings[other] = text;  // whatever was left behind
    }
    if (operation == 12) text = Buffered(*strings[other]) + text, model = models[other] + model;
    if (operation == 13) std::copy(fresh.begin(), fresh.end(), text.appendForOverwrite(count)), model += fresh;
    for (unsigned i = 0; i < 6; ++i) {
      ASSERT_EQ(modelOf(*strings[i]), models[i]) << "string " << i;
      ASSERT_EQ(strings[i]->characters()[strings[i]->length()], 0);
    }
    ASSERT_TRUE(text == model.c_str());
  }
}

TEST(KelWstring, EmptiesAndClampsAtTheEdges) {
  KelWstring text = u"0123456789"_k;
  text.eraseInternal(8, 0xFFFFFFFF);
  EXPECT_EQ(text, u"01234567"_k);
  text.insertInternal(99, u"ab"_k.characters(), 2, 0);  // past the end: appends
  EXPECT_EQ(text, u"01234567ab"_k);
  EXPECT_EQ(text.substr(8, 99), u"ab"_k);
  EXPECT_EQ(text.substr(99, 1), KelWstring());
  text.insert(0, nullptr);
  text.insert(1, u"--"_k.characters());
  EXPECT_EQ(text, u"0--1234567ab"_k);
  const KelWstring& constant = text;
  EXPECT_EQ(constant[0], u'0');
  EXPECT_EQ(constant.at(12), 0);
  EXPECT_EQ(&constant.at(4'000'000'000u), text.characters() + 12);  // the terminator, no failure
  text.eraseInternal(0, 0xFFFFFFFF);
  EXPECT_EQ(text.length(), 0u);
  EXPECT_EQ(text.characters()[0], 0);
  EXPECT_THROW(text.reserve(0xFFFFFFFFu), std::exception);
}

TEST(KelWstring, FindsAndComparesByCodeUnit) {
  const KelWstring text = u"banana"_k;
  const struct {
    const char* what;
    unsigned found, expected;
  } finds[] = {
      {"first of a pattern", text.find(u"an"_k, 0), 1},
      {"next of a pattern", text.find(u"an"_k, 2), 3},
      {"from past the last candidate", text.find(u"an"_k, 5), KelWstring::npos},
      {"from past the end", text.find(u"a"_k, 7), KelWstring::npos},
      {"empty pattern, at from", text.find(KelWstring(), 4), 4},
      {"empty pattern, at the end", text.find(KelWstring(), 6), 6},
      {"empty pattern, past the end", text.find(KelWstring(), 7), KelWstring::npos},
      {"a unit", text.find(u'n', 3), 4},
      {"a unit that is not there", text.find(u'z', 0), KelWstring::npos},
      {"a unit in an empty string", KelWstring().find(u'a', 0), KelWstring::npos},
      {"a pattern in an empty string", KelWstring().find(u"a"_k, 0), KelWstring::npos},
      {"a pattern longer than the text", u"ba"_k.find(text, 0), KelWstring::npos},
  };
  for (const auto& row : finds)
    EXPECT_EQ(row.found, row.expected) << row.what;

  const KelWstring shared = u"a text too long for the inline buffer"_k, sharing(shared);
  EXPECT_EQ(sharing.characters(), shared.characters());
  EXPECT_EQ(sharing.compare(shared), 0);
  EXPECT_LT(u"ban"_k.compare(text), 0);  // a prefix sorts first
  EXPECT_GT(text.compare(u"ban"_k), 0);
  EXPECT_EQ(u"bat"_k.compare(text), 1);
  EXPECT_EQ(text.compare(u"bat"_k), -1);
  EXPECT_GT(u"\uFFFD"_k.compare(u"\xD83D\xDE00"_k), 0);  // by code unit, not by character
  EXPECT_LT(KelWstring().compare(text), 0);

  const unsigned short* const null = nullptr;
  EXPECT_TRUE(KelWstring() == null);
  EXPECT_FALSE(text == null);
  EXPECT_TRUE(text == u"banana"_k.characters());
  EXPECT_FALSE(text == u"banan"_k.characters());
  EXPECT_FALSE(u"banana\0x"_k == u"banana"_k.characters());  // the length counts, not the first zero
  const std::map<KelWstring, int> ordered{{u"b"_k, 1}, {u"a"_k, 2}, {u"ab"_k, 3}};
  EXPECT_EQ(ordered.begin()->second, 2);
}

TEST(KelWstring, KeepsShortTextsInsideAndSharesLongOnes) {
  const auto isInside = [](const Buffered& text) {
    const auto* const address = reinterpret_cast<const char*>(text.characters());
    const auto* const object = reinterpret_cast<const char*>(&text);
    return address >= object && address < object + sizeof text;
  };
  const KelWstring sixteen = u"0123456789abcdef"_k, seventeen = u"0123456789abcdefg"_k;
  EXPECT_TRUE(isInside(Buffered(sixteen)));
  Buffered text(seventeen), copy(text);
  EXPECT_EQ(copy.characters(), seventeen.characters());
  copy.eraseInternal(1, 0xFFFFFFFF);  // leaves the block to the others
  EXPECT_TRUE(isInside(copy));
  EXPECT_EQ(text, seventeen);
  const unsigned short* const before = text.characters();
  const KelWstring moved(std::move(text));
  EXPECT_EQ(moved.characters(), before);
  EXPECT_TRUE(isInside(text) && text.length() == 0);  // NOLINT: a moved-from string is empty
}

TEST(KelWstringThreads, StringsSharingABlockChangeApart) {
  const KelWstring shared = u"one block for all of these strings"_k;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&shared, i] {
      for (int round = 0; round < 2'000; ++round) {
        KelWstring mine(shared), again(mine);
        mine.at(static_cast<unsigned>(i)) = u'#';
        again.appendInternal(mine.characters(), 3, 0);
        ASSERT_EQ(mine[static_cast<unsigned>(i)], u'#');
        ASSERT_EQ(again.length(), shared.length() + 3);
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(shared, u"one block for all of these strings"_k);
}

TEST(KelWstringConvertor, TurnsWideLiteralsIntoCodeUnits) {
  EXPECT_EQ(KelWstringConvertor::toKelWstring(L"a\u20AC\U0001F600"), u"a\u20AC\U0001F600"_k);
  EXPECT_EQ(KelWstringConvertor::toKelWstring(nullptr), KelWstring());
  EXPECT_EQ(convertString(L"a\u00E9\u20AC"), u"a\u00E9\u00AC"_k);  // the low 8 bits of each
  EXPECT_EQ(convertString(L""), KelWstring());
  EXPECT_EQ(convertChar(0x20AC), 0xAC);
  EXPECT_EQ(convertChar(0), 0);
  EXPECT_EQ(toUtf8(u"\xD800x"_k), "\xEF\xBF\xBDx");  // a lone surrogate
  EXPECT_EQ(fromUtf8("\xFFz"), u"\uFFFDz"_k);
}

}  // namespace
}  // namespace oxr::test
