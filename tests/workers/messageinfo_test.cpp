#include "messageinfo.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "harness/headers.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr PWFInt64 kAbsent = INT64_MIN;

std::string shown(const unsigned short* value) {
  return value == nullptr ? "absent" : '"' + toUtf8(UnitView(value)) + '"';
}

// Built while the statics of this file are, after the library's own: the keys must be there even then.
const std::string kKeysAtLoad = toUtf8(MI_MSG_SET_STR + MI_MSG_TYPE_STR + MI_MSG_FORMAT_STR + MI_CCSID_STR +
                                       MI_ENCODING_STR + MI_ENCODINGFLAGS_STR + MI_SUBTREEBITSTREAM_STR);

TEST(MessageInfo, EmptyTextIsAValueByPointerOnly) {
  EXPECT_EQ(kKeysAtLoad, "messagesetmessagetypemessageformatccsidencodingencoding flagssubTreeBitStream");
  EXPECT_EQ(headerOfA<MessageInfo>("QVDI"), "QVDI 0 64 / 0OXR QVDI 0 64");
  MessageInfo info, other;
  const KelWstring key = u"key"_k, text = u"text"_k, empty;
  const unsigned short* const none = nullptr;
  // What is left of a text when `stored` is set, by a key of either form; a null pointer is the empty key.
  const auto after = [&](const auto& stored) {
    info.setProperty(key, text);
    info.setProperty(none, text);
    info.setProperty(key, stored);
    info.setProperty(none, stored);
    EXPECT_EQ(shown(info.getProperty(key.characters())), shown(info.getProperty(empty)));
    return shown(info.getProperty(key));
  };
  const std::string results[] = {after(u"new"_k), after(text.characters() + 2), after(empty), after(none),
                                 after(u""_k.characters())};
  EXPECT_THAT(results, testing::ElementsAre("\"new\"", "\"xt\"", "absent", "absent", "\"\""));
  other.setProperty(key, u"other"_k.characters());
  info.setProperties(other);  // merges
  info.setProperties(info);
  EXPECT_EQ(shown(info.getProperty(key)) + shown(info.getProperty(empty)), "\"other\"\"\"");
}

TEST(MessageInfo, Integers) {
  MessageInfo info;
  const KelWstring key = u"key"_k;
  EXPECT_EQ(info.getPropertyAsInteger(key), kAbsent);
  for (const PWFInt64 value : {0L, kAbsent + 1}) {
    info.setPropertyFromInteger(key, value);
    EXPECT_EQ(shown(info.getProperty(key)), '"' + std::to_string(value) + '"');
    EXPECT_EQ(info.getPropertyAsInteger(key.characters()), value);
    info.setPropertyFromInteger(key.characters(), kAbsent);
    EXPECT_EQ(info.getProperty(key), nullptr);
  }
  for (const auto& [text, value] : {std::pair("", 0L), {"+007", 7}, {"-9223372036854775808", kAbsent}}) {
    info.setProperty(key, k(text).characters());
    EXPECT_EQ(info.getPropertyAsInteger(key), value);
  }
}

// The object writes nothing of its own; its converter shows the form of the conversion, here that for a buffer, which
// asks the one for a string.
TEST(MessageInfo, TracesTheConversionItMakes) {
  MessageInfo info;
  EXPECT_EQ(tracedAt(4, [&] { info.setPropertyFromInteger(u"key"_k, 12); }),
            "> DataCnv::DataCnv\n< DataCnv::DataCnv\n> DataCnv::StrFromInt64\n> DataCnv::StrFromInt64\n"
            "> DataCnv::Int64ToUString\n< DataCnv::Int64ToUString\n> DataCnv::CheckSign\n< DataCnv::CheckSign\n"
            "< DataCnv::StrFromInt64\n< DataCnv::StrFromInt64\n> DataCnv::~DataCnv\n< DataCnv::~DataCnv\n");
}

}  // namespace
}  // namespace oxr::test
