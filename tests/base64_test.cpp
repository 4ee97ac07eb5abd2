#include "base64.hpp"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/base64.hpp"
#include "support/failures.hpp"
#include "support/rows.hpp"
#include "support/text.hpp"
#include "support/tracing.hpp"

namespace oxr::test {
namespace {

using Units = std::vector<unsigned short>;
using core::Base64Fault;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// What is to come out, unit by unit and bit by bit.
std::string encodedByModel(const std::string& bytes) {
  std::string bits, text;
  for (const char byte : bytes)
    for (int bit = 7; bit >= 0; --bit)
      bits += (byte >> bit & 1) != 0 ? '1' : '0';
  for (; bits.size() % 6 != 0;)
    bits += '0';
  for (std::size_t i = 0; i < bits.size(); i += 6)
    text += kAlphabet[std::stoul(bits.substr(i, 6), nullptr, 2)];
  return text + std::string((4 - text.size() % 4) % 4, '=');
}

struct Outcome {
  std::string bytes;
  Base64Fault fault;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};
Outcome decodedByModel(const Units& units) {
  std::string text, bytes;
  for (const unsigned short unit : units)
    if (unit < 128 && unit != 0 && (unit == '=' || std::strchr(kAlphabet, unit) != nullptr))
      text += static_cast<char>(unit);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const std::string group = text.substr(i, 4);
    if (group.size() < 4) return {bytes, Base64Fault::incomplete};
    unsigned bits = 0;
    for (const char c : group)
      bits = bits * 64 + (c == '=' ? 0 : static_cast<unsigned>(std::strchr(kAlphabet, c) - kAlphabet));
    const char all[] = {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
    const std::size_t count = group[2] == '=' ? 1 : group[3] == '=' ? 2 : 3;
    bytes.append(all, count);
    if (count < 3) break;
  }
  return {bytes, Base64Fault::none};
}

Outcome decoded(const Units& units) {
  constexpr std::size_t kGuard = 64;
  const std::size_t room = units.size() * 3 / 4;
  std::vector<unsigned char> target(room + kGuard, 0xEE);
  const auto [size, fault] = core::decodeBase64({units.data(), units.size()}, {target.data(), room});
  EXPECT_EQ(std::count(target.begin() + static_cast<std::ptrdiff_t>(room), target.end(), 0xEE), kGuard);
  return {std::string(target.begin(), target.begin() + static_cast<std::ptrdiff_t>(size)), fault};
}

std::string encoded(const std::string& bytes) {
  const std::vector<unsigned char> data(bytes.begin(), bytes.end());
  Units units(core::base64Length(data.size()) + 8, 0xEEEE);
  core::encodeBase64(data, units.data());
  EXPECT_EQ(std::count(units.end() - 8, units.end(), 0xEEEE), 8);
  return std::string(units.begin(), units.end() - 8);
}

// Runs `call` once on each kind of vector that this processor has, plain loops included.
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

TEST(Base64Core, EncodesAsTheModelDoes) {
  std::mt19937 random(20261121);
  onEachTarget([&] {
    for (std::size_t size = 0; size < 300; ++size) {
      std::string bytes(size, 0);
      std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
      ASSERT_EQ(encoded(bytes), encodedByModel(bytes));
    }
  });
}

// A text of 80 units with each unit there is in one place: foreign ones at every place of a vector, and in none.
TEST(Base64Core, KnowsEveryUnit) {
  Units clean;
  for (std::size_t i = 0; i < 80; ++i)
    clean.push_back(static_cast<unsigned char>(kAlphabet[i * 37 % 64]));
  onEachTarget([&] {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      const unsigned step = unit < 0x100 ? 1 : 79;  // above, one place each
      for (std::size_t place = unit % step; place < clean.size(); place += step) {
        Units text = clean;
        text[place] = static_cast<unsigned short>(unit);
        ASSERT_EQ(decoded(text), decodedByModel(text)) << "unit " << unit << " at " << place;
      }
    }
  });
}

// Clean stretches of any length with anything between them, so that vectors stop and start at every place.
TEST(Base64Core, DecodesDirtyTextAsTheModelDoes) {
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
      ASSERT_EQ(decoded(text), decodedByModel(text)) << oxr::toUtf8(UnitView(text.data(), text.size()));
    }
  });
}

TEST(Base64Core, PadsInTheLastTwoPlacesOnly) {
  const Units units = {'B', '/', '=', '\n', 0x141};  // the last is an "A" in its low byte
  for (std::size_t length = 0; length <= 7; ++length) {
    std::size_t texts = 1;
    for (std::size_t i = 0; i < length; ++i)
      texts *= units.size();
    for (std::size_t number = 0; number < texts; ++number) {
      Units text;
      for (std::size_t i = 0, rest = number; i < length; ++i, rest /= units.size())
        text.push_back(units[rest % units.size()]);
      ASSERT_EQ(decoded(text), decodedByModel(text)) << oxr::toUtf8(UnitView(text.data(), text.size()));
    }
  }
}

TEST(Base64Core, StopsBeforeAFullTarget) {
  const Units text(400, 'A');
  onEachTarget([&] {
    for (std::size_t room = 0; room < 300; ++room) {
      std::vector<unsigned char> target(room + 1, 0xEE);
      const auto [size, fault] = core::decodeBase64({text.data(), text.size()}, {target.data(), room});
      ASSERT_EQ(size, room / 3 * 3);
      ASSERT_EQ(fault, Base64Fault::targetFull);
      ASSERT_EQ(target.back(), 0xEE);
    }
  });
}

PWFData read(const KelWstring& text) {
  return CPBase64Converter::binFromBase64(text.characters(), static_cast<int>(text.length()));
}

TEST(CPBase64Converter, ReadsAndWritesText) {
  // The bytes, their text, and what else reads as the same.
  for (const Row& row :
       rows("'' '' _ \r\n_-.; A QQ== Q_Q_=_= QQ=A QQ==QUJD QQ==Q; AB QUI= QUI=QQ QU\nI=;"
            "ABC QUJD Q\r\nU_J.D QUJD-; ABCA QUJDQQ== QUJD\r\nQQ==\r\n; Hello_World_12 SGVsbG8gV29ybGQgMTI=")) {
    KelWstring text = u"[]"_k;
    CPBase64Converter::binToBase64(reinterpret_cast<const unsigned char*>(row[0].data()),
                                   static_cast<int>(row[0].size()), text);
    EXPECT_EQ(text, k("[]" + row[1]));
    for (std::size_t form = 1; form < row.size(); ++form) {
      const PWFData value = read(k(row[form]));
      int length = -1;
      const auto* const bytes = static_cast<const char*>(value.getBinaryValue(length));
      EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(length)), row[0]) << row[form];
      EXPECT_FALSE(value.isNull());
    }
  }
  EXPECT_EQ(read(u"Q=QQ"_k).getDataLength(), 3);
  EXPECT_EQ(CPBase64Converter::binFromBase64(nullptr, 0).getDataLength(), 0);
  EXPECT_EQ(CPBase64Converter::binFromBase64(u"QUJD"_k.characters(), -4).getDataLength(), 0);
}

TEST(CPBase64Converter, AppendsWithoutTouchingSharedText) {
  const std::string bytes(1000, '\x5A');
  KelWstring text = u"a text of more than sixteen units: "_k;
  const KelWstring copy = text;
  const auto append = [&](int length) {
    CPBase64Converter::binToBase64(reinterpret_cast<const unsigned char*>(bytes.data()), length, text);
  };
  append(0);
  append(-1);
  EXPECT_EQ(text.characters(), copy.characters());
  append(1000);
  append(1);
  EXPECT_EQ(oxr::toUtf8(text), oxr::toUtf8(copy) + encodedByModel(bytes) + "Wg==");
  EXPECT_EQ(copy, u"a text of more than sixteen units: "_k);
}

TEST(CPBase64Converter, RefusesACutGroup) {
  for (const char* text : {"Q", "QU", "QUJ", "QUJDQ", "QUJD Q=\n", "=", "Q=Q"})
    EXPECT_EQ(raisedBy([&] { read(k(text)); }), conversionFailure(5502, {"Input data incomplete"})) << text;
  std::string traced = tracedAt(3, [] { EXPECT_NE(raisedBy([] { read(u"QUJ"_k); }), Raised()); });
  traced.replace(traced.find("base64|") + 7, traced.find("|CP_") - traced.find("base64|") - 7, "LINE");
  EXPECT_EQ(traced,
            "CPBase64Converter::binFromBase64: Throwing exception|src/cpi/bsutils/base64|LINE|CP_INTERNAL_ERROR|"
            "Input data incomplete\n");
}

TEST(CPBase64Converter, ShowsItsTables) {
  CPBase64Converter::initEncodeTable();
  CPBase64Converter::initDecodeTable();
  for (unsigned value = 0; value < 64; ++value) {
    EXPECT_EQ(CPBase64Converter::encodeTable[value], static_cast<unsigned char>(kAlphabet[value]));
    EXPECT_EQ(CPBase64Converter::decodeTable[static_cast<unsigned char>(kAlphabet[value])], value);
  }
  const auto& values = CPBase64Converter::decodeTable;
  EXPECT_EQ(values['='], 0);
  EXPECT_EQ(std::count_if(values.begin(), values.end(), [](unsigned char v) { return v < 128; }), 65);
}

}  // namespace
}  // namespace oxr::test
