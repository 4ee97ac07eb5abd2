#include "messageinfo.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr PWFInt64 kAbsent = std::numeric_limits<PWFInt64>::min();

std::string shown(const unsigned short* value) {
  return value == nullptr ? "absent" : '"' + toUtf8(UnitView(value)) + '"';
}

// Built while the statics of this file are, after the library's own: the keys must be there even then.
const std::string kKeysAtLoad = toUtf8(MI_MSG_SET_STR + MI_MSG_TYPE_STR + MI_MSG_FORMAT_STR + MI_CCSID_STR +
                                       MI_ENCODING_STR + MI_ENCODINGFLAGS_STR + MI_SUBTREEBITSTREAM_STR);

TEST(MessageInfo, KeysAndHeader) {
  EXPECT_EQ(kKeysAtLoad, "messagesetmessagetypemessageformatccsidencodingencoding flagssubTreeBitStream");
  EXPECT_EQ(headerOfA<MessageInfo>("QVDI"), "QVDI 0 64 / 0OXR QVDI 0 64");
}

TEST(MessageInfo, EmptyTextIsAValueByPointerOnly) {
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
  EXPECT_EQ(after(u"new"_k), "\"new\"");
  EXPECT_EQ(after(text.characters() + 2), "\"xt\"");
  EXPECT_EQ(after(empty), "absent");
  EXPECT_EQ(after(none), "absent");
  EXPECT_EQ(after(empty.characters()), "\"\"");
  other.setProperty(key, u"other"_k.characters());
  info.setProperties(other);  // merges
  info.setProperties(info);
  EXPECT_EQ(shown(info.getProperty(key)) + shown(info.getProperty(empty)), "\"other\"\"\"");
  info.clear();
  EXPECT_EQ(info.getProperty(empty), nullptr);
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

// The object writes nothing of its own; its converter shows the form of the conversion, here that for a buffer, which
// asks the one for a string.
TEST(MessageInfo, TracesTheConversionItMakes) {
  MessageInfo info;
  EXPECT_EQ(tracedAt(4, [&] { info.setPropertyFromInteger(u"key"_k, 12); }),
            "> DataCnv::DataCnv\n< DataCnv::DataCnv\n> DataCnv::StrFromInt64\n> DataCnv::StrFromInt64\n"
            "> DataCnv::Int64ToUString\n< DataCnv::Int64ToUString\n> DataCnv::CheckSign\n< DataCnv::CheckSign\n"
            "< DataCnv::StrFromInt64\n< DataCnv::StrFromInt64\n> DataCnv::~DataCnv\n< DataCnv::~DataCnv\n");
  EXPECT_EQ(tracedAt(4, [&] { info.setPropertyFromInteger(u"key"_k, kAbsent); }), "");
}

}  // namespace
}  // namespace oxr::test
