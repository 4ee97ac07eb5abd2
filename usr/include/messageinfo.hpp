#pragma once

#include <map>

#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwftypes.hpp"

// The keys that brokers and workers agree on. They are entries like any other. There is one definition for the process,
// which stands before any other static of the library is built and until exit.
OXR_EXPORT extern const KelWstring MI_MSG_SET_STR;           // "messageset"
OXR_EXPORT extern const KelWstring MI_MSG_TYPE_STR;          // "messagetype"
OXR_EXPORT extern const KelWstring MI_MSG_FORMAT_STR;        // "messageformat"
OXR_EXPORT extern const KelWstring MI_CCSID_STR;             // "ccsid"
OXR_EXPORT extern const KelWstring MI_ENCODING_STR;          // "encoding"
OXR_EXPORT extern const KelWstring MI_ENCODINGFLAGS_STR;     // "encoding flags"
OXR_EXPORT extern const KelWstring MI_SUBTREEBITSTREAM_STR;  // "subTreeBitStream"

// The properties of a message as a whole, from the broker to a worker: text values under text keys, in ascending order
// of the keys, and views of the values as integers.
//
// Pointers to text are zero-terminated; a key that is a null pointer is the empty key. An object belongs to the message
// in hand and serves one thread at a time.
//
// Example:
//   MessageInfo info;
//   info.setPropertyFromInteger(MI_CCSID_STR, 1208);
//   info.getProperty(MI_CCSID_STR);              // "1208"
//   info.getPropertyAsInteger(MI_ENCODING_STR);  // 0x8000000000000000: not there
class OXR_EXPORT MessageInfo {
 public:
  // The integer of an absent property: the smallest PWFInt64. As a value to set it removes the property.
  static constexpr PWFInt64 kAbsent = -0x7FFFFFFFFFFFFFFF - 1;

  // Removes all entries.
  void clear() { properties.clear(); }

  // The stored value, or null where there is none. It stays the object's and is valid until the entry changes.
  const unsigned short* getProperty(const unsigned short* key) const;
  const unsigned short* getProperty(const KelWstring& key) const;

  // Stores a value, replacing an old one. A null pointer removes the entry; so does an empty KelWstring, while an empty
  // text given by a pointer is stored.
  void setProperty(const unsigned short* key, const unsigned short* value);
  void setProperty(const unsigned short* key, const KelWstring& value);
  void setProperty(const KelWstring& key, const unsigned short* value);
  void setProperty(const KelWstring& key, const KelWstring& value);
  // Stores every entry of `other`, empty ones too. Entries that only this object has remain.
  void setProperties(const MessageInfo& other);

  // The value as an integer: an optional sign and digits; an empty value is 0. 0x8000000000000000 for an absent one.
  // KelConversionException as from DataCnv::StrToInt64 for any other text. Each call makes a converter: in a loop, keep
  // the text instead.
  PWFInt64 getPropertyAsInteger(const unsigned short* key) const;
  PWFInt64 getPropertyAsInteger(const KelWstring& key) const;
  // Stores the digits, with "-" where it is negative. 0x8000000000000000 removes the entry.
  void setPropertyFromInteger(const unsigned short* key, PWFInt64 value);
  void setPropertyFromInteger(const KelWstring& key, PWFInt64 value);

 private:
  objectHeader header{"QVDI", 0, 64};
  std::map<KelWstring, KelWstring> properties;
};
