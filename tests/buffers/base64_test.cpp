#include "base64.hpp"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/base64.hpp"
#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

using Bytes = std::vector<unsigned char>;
using Units = std::vector<unsigned short>;
using core::Base64Fault;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Outcome {
  Bytes bytes;
  Base64Fault fault;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};

// What is to come out: the alphabet's characters alone first, then group by group.
Outcome modelOf(const Units& units) {
  std::string text;
  for (const unsigned short unit : units)
    if (unit < 128 && unit != 0 && (unit == '=' || std::strchr(kAlphabet, unit) != nullptr))
      text += static_cast<char>(unit);
  Bytes bytes;
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const std::string group = text.substr(i, 4);
    if (group.size() < 4) return {bytes, Base64Fault::incomplete};
    long bits = 0;
    for (const char c : group)
      bits = bits * 64 + (c == '=' ? 0 : std::strchr(kAlphabet, c) - kAlphabet);
    const int count = group[2] == '=' ? 1 : group[3] == '=' ? 2 : 3;
    for (int byte = 0; byte < count; ++byte)
      bytes.push_back(static_cast<unsigned char>(bits >> (16 - 8 * byte)));
    if (count < 3) break;
  }
  return {bytes, Base64Fault::none};
}

// With guards behind a target of `room` bytes, which holds any text unless it is given.
Outcome decoded(const Units& units, std::size_t room = Units().max_size()) {
  room = std::min(room, units.size() * 3 / 4);
  Bytes target(room + 64, 0xEE);
  const auto [size, fault] = core::decodeBase64({units.data(), units.size()}, {target.data(), room});
  EXPECT_EQ(std::count(target.end() - 64, target.end(), 0xEE), 64);
  target.resize(size);
  return {target, fault};
}

// Runs `call` on each kind of vector that this processor has, and on the plain loops.
template <class F>
void onEachTarget(F call) {
  const auto choose = [](std::int64_t targets) {
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  };
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    choose(target);
    call();
  }
  choose(0);
}

TEST(Base64Core, WritesWhatReadsBack) {
  std::mt19937 random(20261121);
  onEachTarget([&] {
    for (std::size_t size = 0; size < 300; ++size) {
      Bytes bytes(size);
      std::generate(bytes.begin(), bytes.end(), std::ref(random));
      Units text(core::base64Length(size) + 1, 0xEEEE);
      core::encodeBase64(bytes, text.data());
      ASSERT_EQ(text.back(), 0xEEEE);
      text.pop_back();
      ASSERT_EQ(modelOf(text), (Outcome{bytes, Base64Fault::none}));
      ASSERT_EQ(decoded(text).bytes, bytes);
      ASSERT_TRUE(std::all_of(text.begin(), text.end(), [](unsigned unit) { return unit > ' ' && unit < 128; }));
    }
  });
}

// A text of 80 units with each unit there is in one place: the low ones in every place, the others in one.
TEST(Base64Core, KnowsEveryUnit) {
  Units clean;
  for (std::size_t i = 0; i < 80; ++i)
    clean.push_back(static_cast<unsigned char>(kAlphabet[i * 37 % 64]));
  onEachTarget([&] {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      const unsigned step = unit < 0x100 ? 1 : 80;
      for (std::size_t place = unit % step; place < clean.size(); place += step) {
        Units text = clean;
        text[place] = static_cast<unsigned short>(unit);
        ASSERT_EQ(decoded(text), modelOf(text)) << "unit " << unit << " at " << place;
      }
    }
  });
}

// Clean stretches of any length with anything between them, so that the vectors stop and start at every place.
TEST(Base64Core, ReadsDirtyText) {
  std::mt19937 random(20261122);
  onEachTarget([&] {
    for (int i = 0; i < 5'000; ++i) {
      Units text;
      for (unsigned stretches = random() % 8; stretches > 0; --stretches) {
        for (unsigned n = random() % (random() % 2 != 0 ? 200 : 5); n > 0; --n)
          text.push_back(static_cast<unsigned char>(kAlphabet[random() % 64]));
        for (unsigned n = random() % 4; n > 0; --n)
          text.push_back(random() % 16 == 0 ? '=' : static_cast<unsigned short>(random() >> random() % 16));
      }
      const Outcome expected = modelOf(text);
      ASSERT_EQ(decoded(text), expected) << oxr::toUtf8(UnitView(text.data(), text.size()));
      if (expected.bytes.empty()) continue;
      // A target that is too short takes whole groups.
      const std::size_t room = random() % expected.bytes.size();
      ASSERT_EQ(decoded(text, room), (Outcome{Bytes(expected.bytes.begin(), expected.bytes.begin() + room / 3 * 3),
                                              Base64Fault::targetFull}));
    }
  });
}

TEST(Base64Core, PadsInTheLastTwoPlacesOnly) {
  constexpr unsigned short kUnits[] = {'B', '/', '=', '\n', 0x141};  // the last is an "A" in its low byte
  std::vector<Units> texts = {{}};
  for (std::size_t i = 0; i < texts.size() && texts[i].size() <= 7; ++i) {
    ASSERT_EQ(decoded(texts[i]), modelOf(texts[i])) << "text " << i;
    for (const unsigned short unit : kUnits)
      (texts.emplace_back(texts[i])).push_back(unit);
  }
}

PWFData read(const KelWstring& text) {
  return CPBase64Converter::binFromBase64(text.characters(), static_cast<int>(text.length()));
}
std::string bytesOf(const PWFData& value) {
  int length = -1;
  const auto* const bytes = static_cast<const char*>(value.getBinaryValue(length));
  return value.isNull() ? "null" : std::string(bytes, static_cast<std::size_t>(length));
}
void append(KelWstring& text, const std::string& bytes) {
  CPBase64Converter::binToBase64(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()),
                                 text);
}

TEST(CPBase64Converter, ReadsAndWritesText) {
  // The bytes, their text, and what else reads as the same.
  for (const Row& row : rows("'' '' _ \r\n_-.; A QQ== Q_Q_=_= QQ=A QQ==QUJD QQ==Q; AB QUI= QUI=QQ QU\nI=;"
                             "ABC QUJD Q\r\nU_J.D QUJD-; ABCA QUJDQQ== QUJD\r\nQQ==\r\n; k\xC3\xBF> a8O/Pg==")) {
    KelWstring text = u"[]"_k;
    append(text, row[0]);
    EXPECT_EQ(text, k("[]" + row[1]));
    for (std::size_t form = 1; form < row.size(); ++form)
      EXPECT_EQ(bytesOf(read(k(row[form]))), row[0]) << row[form];
  }
  EXPECT_EQ(bytesOf(read(u"Q=QQ"_k)), std::string("@\x04\x10"));
  EXPECT_EQ(bytesOf(CPBase64Converter::binFromBase64(nullptr, 0)), "");
  EXPECT_EQ(bytesOf(CPBase64Converter::binFromBase64(u"QUJD"_k.characters(), -4)), "");
}

TEST(CPBase64Converter, AppendsToItsTargetAlone) {
  KelWstring text = u"a text of more than sixteen units: "_k;
  const KelWstring copy = text;
  append(text, "");
  CPBase64Converter::binToBase64(nullptr, -1, text);
  EXPECT_EQ(text.characters(), copy.characters());
  const std::string bytes(1000, '\x5A');
  append(text, bytes);
  append(text, "Z");
  EXPECT_EQ(text.substr(0, 35) + text.substr(35 + 1336, 9), copy + u"Wg=="_k);
  EXPECT_EQ(bytesOf(read(text.substr(35, 9999))), bytes);
  EXPECT_EQ(copy, u"a text of more than sixteen units: "_k);
}

TEST(CPBase64Converter, RefusesACutGroup) {
  for (const char* text : {"Q", "QU", "QUJ", "QUJDQ", "QUJD Q=\n", "=", "Q=Q"})
    EXPECT_EQ(raisedBy([&] { read(k(text)); }), conversionFailure(5502, {"Input data incomplete"})) << text;
  const std::string traced = tracedAt(3, [] { raisedBy([] { read(u"QUJ"_k); }); });
  EXPECT_EQ(traced.find("CPBase64Converter::binFromBase64: Throwing exception|src/cpi/bsutils/base64|"), 0u);
  EXPECT_TRUE(traced.ends_with("|CP_INTERNAL_ERROR|Input data incomplete\n")) << traced;
}

TEST(CPBase64Converter, ShowsItsTables) {
  CPBase64Converter::initEncodeTable();
  CPBase64Converter::initDecodeTable();
  EXPECT_TRUE(std::equal(kAlphabet, kAlphabet + 64, CPBase64Converter::encodeTable.begin()));
  const auto& values = CPBase64Converter::decodeTable;
  for (unsigned value = 0; value < 64; ++value)
    EXPECT_EQ(values[static_cast<unsigned char>(kAlphabet[value])], value);
  EXPECT_TRUE(values['='] == 0 && std::count(values.begin(), values.end(), 128) == 0x10000 - 65);
}

}  // namespace
}  // namespace oxr::test
