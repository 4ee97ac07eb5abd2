// A map of texts. The integer views go through a converter that each call makes for itself, so that they read and write
// a number as the fields of messages do.

#include "messageinfo.hpp"

#include <array>

#include "datacnv/plainconverter.hpp"
#include "kelwstringconvertor.hpp"

using namespace oxr;

// Statics of other source files may ask for these keys while they are built: hence the priority, before all of them.
[[gnu::init_priority(101)]] const KelWstring MI_MSG_SET_STR = convertString(L"messageset");
[[gnu::init_priority(101)]] const KelWstring MI_MSG_TYPE_STR = convertString(L"messagetype");
[[gnu::init_priority(101)]] const KelWstring MI_MSG_FORMAT_STR = convertString(L"messageformat");
[[gnu::init_priority(101)]] const KelWstring MI_CCSID_STR = convertString(L"ccsid");
[[gnu::init_priority(101)]] const KelWstring MI_ENCODING_STR = convertString(L"encoding");
[[gnu::init_priority(101)]] const KelWstring MI_ENCODINGFLAGS_STR = convertString(L"encoding flags");
[[gnu::init_priority(101)]] const KelWstring MI_SUBTREEBITSTREAM_STR = convertString(L"subTreeBitStream");

namespace {

// A key that is a null pointer is the empty key.
KelWstring keyOf(const unsigned short* key) {
  return key == nullptr ? KelWstring() : KelWstring(UnitView(key));
}

}  // namespace

const unsigned short* MessageInfo::getProperty(const unsigned short* key) const {
  return getProperty(keyOf(key));
}

const unsigned short* MessageInfo::getProperty(const KelWstring& key) const {
  const auto found = properties.find(key);
  return found == properties.end() ? nullptr : found->second.characters();
}

void MessageInfo::setProperty(const unsigned short* key, const unsigned short* value) {
  setProperty(keyOf(key), value);
}

void MessageInfo::setProperty(const unsigned short* key, const KelWstring& value) {
  setProperty(keyOf(key), value);
}

void MessageInfo::setProperty(const KelWstring& key, const unsigned short* value) {
  if (value == nullptr)
    properties.erase(key);
  else
    properties.insert_or_assign(key, KelWstring(UnitView(value)));
}

// An empty text is no value here, while one given by a pointer is: MessageInfo.EmptyTextIsAValueByPointerOnly.
void MessageInfo::setProperty(const KelWstring& key, const KelWstring& value) {
  if (value.length() == 0)
    properties.erase(key);
  else
    properties.insert_or_assign(key, value);
}

void MessageInfo::setProperties(const MessageInfo& other) {
  if (this == &other) return;
  for (const auto& [key, value] : other.properties)
    properties.insert_or_assign(key, value);
}

PWFInt64 MessageInfo::getPropertyAsInteger(const unsigned short* key) const {
  return getPropertyAsInteger(keyOf(key));
}

PWFInt64 MessageInfo::getPropertyAsInteger(const KelWstring& key) const {
  const unsigned short* const text = getProperty(key);
  if (text == nullptr) return kAbsent;
  return plainConverter().StrToInt64(text, static_cast<int>(UnitView(text).size()), eSignLeadingSeparate,
                                     DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), eTrimNone,
                                     eJustifyLeft, '0', true);
}

void MessageInfo::setPropertyFromInteger(const unsigned short* key, PWFInt64 value) {
  setPropertyFromInteger(keyOf(key), value);
}

void MessageInfo::setPropertyFromInteger(const KelWstring& key, PWFInt64 value) {
  if (value == kAbsent) {
    properties.erase(key);
    return;
  }
  // The form of the conversion that fills a buffer: its entry shows in the trace. It writes no terminator.
  std::array<unsigned short, 101> text;
  int length = static_cast<int>(text.size()) - 1;  // units, more than any integer has
  plainConverter().StrFromInt64(value, text.data(), length, eSignLeadingSeparate, DataCnv::US_MINUS.characters(),
                                DataCnv::US_PLUS.characters(), false, eJustifyLeft, '0', true);
  text[static_cast<std::size_t>(length)] = 0;
  setProperty(key, text.data());
}
