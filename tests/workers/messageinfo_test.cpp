#include "messageinfo.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

constexpr PWFInt64 kAbsent = std::numeric_limits<PWFInt64>::min();

std::string shown(const unsigned short* value) {
  return value == nullptr ? "absent" : '"' + toUtf8(UnitView(value)) + '"';
}

// Built while the statics of this file are, behind the library's own: the keys must be there even then.
const std::string kKeysAtLoad = toUtf8(MI_MSG_SET_STR + MI_MSG_TYPE_STR + MI_MSG_FORMAT_STR + MI_CCSID_STR +
                                       MI_ENCODING_STR + MI_ENCODINGFLAGS_STR + MI_SUBTREEBITSTREAM_STR);

TEST(MessageInfo, KeysAndHeader) {
  EXPECT_EQ(kKeysAtLoad, "messagesetmessagetypemessageformatccsidencodingencoding flagssubTreeBitStream");
  EXPECT_EQ(headerOfA<MessageInfo>("QVDI"), "QVDI 0 64 / 0OXR QVDI 0 64");
}

TEST(MessageInfo, EmptyTextIsAValueBehindAPointerOnly) {
  MessageInfo info;
  const KelWstring key = u"key"_k, full = u"text"_k, empty;
  const unsigned short* const unitKey = key.characters();
  const unsigned short* const none = nullptr;
  const auto after = [&](const auto& stored) {
    info.setProperty(key, full);
    info.setProperty(unitKey, stored);
    const std::string first = shown(info.getProperty(unitKey));
    info.setProperty(unitKey, full.characters());
    info.setProperty(key, stored);
    EXPECT_EQ(shown(info.getProperty(key)), first);
    return first;
  };
  EXPECT_EQ(after(u"new"_k), "\"new\"");
  EXPECT_EQ(after(full.characters() + 2), "\"xt\"");
  EXPECT_EQ(after(empty), "absent");
  EXPECT_EQ(after(empty.characters()), "\"\"");
  EXPECT_EQ(after(none), "absent");
  info.setProperty(none, full);
  EXPECT_EQ(shown(info.getProperty(empty)) + shown(info.getProperty(none)), "\"text\"\"text\"");
  info.setProperty(key, info.getProperty(none));
  info.setProperty(key, info.getProperty(key) + 1);
  EXPECT_EQ(shown(info.getProperty(key)), "\"ext\"");
  info.clear();
  EXPECT_EQ(info.getProperty(empty), nullptr);
}

TEST(MessageInfo, Merges) {
  MessageInfo info, other;
  for (const char* const key : {"a", "b"})
    info.setProperty(k(key), u"1"_k);
  for (const char* const key : {"b", "c"})
    other.setProperty(k(key), u""_k.characters());
  info.setProperties(other);
  info.setProperties(MessageInfo());
  info.setProperties(info);
  EXPECT_EQ(shown(info.getProperty(u"a"_k)) + shown(info.getProperty(u"b"_k)) + shown(info.getProperty(u"c"_k)),
            "\"1\"\"\"\"\"");
}

TEST(MessageInfo, Integers) {
  MessageInfo info;
  const KelWstring key = u"key"_k;
  EXPECT_EQ(info.getPropertyAsInteger(key), kAbsent);
  for (const PWFInt64 value : {PWFInt64{0}, PWFInt64{-12}, kAbsent + 1, std::numeric_limits<PWFInt64>::max()}) {
    info.setPropertyFromInteger(key, value);
    EXPECT_EQ(shown(info.getProperty(key)), '"' + std::to_string(value) + '"');
    EXPECT_EQ(info.getPropertyAsInteger(key.characters()), value);
    info.setPropertyFromInteger(key.characters(), kAbsent);
    EXPECT_EQ(info.getProperty(key), nullptr);
  }
  for (const auto& [text, value] : {std::pair("", PWFInt64{0}), {"+007", 7}, {"-9223372036854775808", kAbsent}}) {
    info.setProperty(key, k(text).characters());
    EXPECT_EQ(info.getPropertyAsInteger(key), value);
  }
  info.setProperty(key, u"-1x"_k);
  EXPECT_EQ(raisedBy([&] { info.getPropertyAsInteger(key); }),
            conversionFailure(5505, {"CPI Converter Input Data Invalid", "string", "1x"}));
}

}  // namespace
}  // namespace oxr::test
