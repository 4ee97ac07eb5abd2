#pragma once

#include "kellog.hpp"
#include "oxrexport.hpp"
#include "pwftypes.hpp"

namespace oxr {
struct TextInPlace;
}  // namespace oxr

// The one value that parsers, writers and converters exchange: nothing, null, or one value of a logical type.
//
// Scalars, date-times and texts of up to 16 code units lie inside the object, so that making and dropping one allocates
// nothing; only BINARY with COPY does. A value is set when it is made and replaced whole by assignment.
//
// Reading a value as the wrong type raises KelConversionException 0xC0001592 (OXR5522) with the inserts "CPI Internal
// error from invalid operation on PWFData" and what was wrong; so does reading the number in a null. The type is tested
// before the null.
//
// A value may be read by several threads while none assigns it.
//
// Example:
//   PWFData price(units, DECIMAL);       // units: zero-terminated "12.50"
//   price.getDecimalLength();            // 5
//   PWFData(NOTHING).isNothing();        // true, and isNull() is false
//   PWFData(STRING).isNull();            // true
class OXR_EXPORT PWFData {
 public:
  // Makes a null of `type`. NOTHING makes what is nothing and not null; an INTEGER null is 8 bytes wide.
  explicit PWFData(ELogicalType type) : logicalType(type), nullFlag(type >= 1) {
    if (type == INTEGER) valueArea.integer.width = 8;
    traceMade("PWFData::PWFData");
  }
  // Makes a STRING. A long text shares its block with `text`.
  explicit PWFData(const PWFString& text) : logicalType(STRING), nullFlag(false), stringValue(text) {
    traceMade("PWFData::PWFData(PWFString&)");
  }
  // Makes an INTEGER of 4 bytes, which a null is, too.
  PWFData(PWFInt32 value, bool isNull)
      : logicalType(INTEGER), nullFlag(isNull), valueArea(Integer{4, isNull ? 0 : value, 0}) {
    traceMade("PWFData::PWFData(PWFInt32,bool)");
  }
  // Makes an INTEGER of 8 bytes.
  PWFData(PWFInt64 value, bool isNull)
      : logicalType(INTEGER), nullFlag(isNull), valueArea(Integer{8, 0, isNull ? 0 : value}) {
    traceInit(isNull ? nullptr : &valueArea.integer.value64, 8, INTEGER);
  }
  // Makes an INTEGER of 4 bytes, or a BOOLEAN. Any other type raises 0xC0001592.
  PWFData(PWFInt32 value, ELogicalType type);
  // Makes a FLOAT.
  explicit PWFData(double value) : logicalType(FLOAT), valueArea(value) { traceInit(&valueArea.doubleValue, 0, FLOAT); }
  // Makes a BOOLEAN.
  explicit PWFData(bool value);
  // Makes a DATETIME. Its zone stays where it is and must outlive the value.
  explicit PWFData(const PWFDateTime& value);
  // Makes an INTERVAL.
  explicit PWFData(const PWFInterval& value);
  // Makes a value of `type`, as a rule STRING or DECIMAL, from zero-terminated text. Null text gives a null.
  PWFData(const unsigned short* text, ELogicalType type);
  // Makes a STRING of `characters` code units. Null text gives a null.
  PWFData(const unsigned short* text, int characters) : logicalType(STRING), nullFlag(text == nullptr) {
    if (text != nullptr && characters > 0) stringValue.assignInternal(text, static_cast<unsigned>(characters), 0);
    traceInit(text, static_cast<int>(2u * static_cast<unsigned>(characters)), STRING);
  }
  // Makes a value of `type` from `length` bytes at `data`; null data gives a null. A text has its length in bytes, or
  // -1 when it is zero-terminated; INTEGER is 4 or 8 bytes; FLOAT, BOOLEAN, INTERVAL and DATETIME take what they need
  // and ignore `length`. BINARY keeps the ownership; any other type copies, and with ADOPT then frees `data`. Raises
  // KelParserException 0xC000157E when data comes with a type of 0 or below, KelConversionException 0xC0001592 for an
  // INTEGER of another length; `data` is then still the caller's.
  PWFData(void* data, int length, ELogicalType type, EOwnership own);
  // Does the same, but ADOPT raises 0xC0001592.
  PWFData(const void* data, int length, ELogicalType type, EOwnership own);
  // A copy owns a block of its own where the source owns one; a copy of a REFERENCE refers to the same bytes.
  PWFData(const PWFData& other);
  // The block that the target owned before stays allocated: callers may still hold a pointer into it.
  PWFData& operator=(const PWFData& other);
  ~PWFData() {
    if (logicalType == BINARY) [[unlikely]]
      releaseBinary();
    traceMade("PWFData::~PWFData");
  }

  // The type, that of a null too.
  ELogicalType getDataLogicalType() const { return logicalType; }
  // Whether there is a type but no value.
  bool isNull() const { return nullFlag; }
  // Whether there is no value at all, not even a null.
  bool isNothing() const { return logicalType == NOTHING; }
  // The value's bytes: UTF-16 text, the integer, the double, the record, or the binary bytes. Both are 0 for a null.
  int getDataLength() const;
  const void* getDataValue() const;

  // The text of a DECIMAL, and its length in code units. A null has the empty text.
  int getDecimalLength() const {
    requireText(DECIMAL, "PWFData::getDecimalLength");
    return static_cast<int>(stringValue.length());
  }
  const unsigned short* getDecimalValue() const {
    requireText(DECIMAL, "PWFData::getDecimalValue");
    return stringValue.characters();
  }
  // The fields of an INTERVAL, all 0 for a null.
  PWFInterval getIntervalValue() const;
  int getBooleanValue() const;  // raises for a null
  bool getBoolValue() const;    // raises for a null
  // The bytes of a BINARY, and how many they are; a null pointer and 0 for a null. They stay the value's.
  const void* getBinaryValue(int& length) const;
  const void* getBinaryValue() const;
  double getDoubleValue() const;    // raises for a null
  PWFInt64 getInt64Value() const {  // raises for a null
    if (logicalType != INTEGER || nullFlag || KelLog::iEffectiveLogFilter > 3) [[unlikely]]
      checkInt64();
    return valueArea.integer.width == 8 ? valueArea.integer.value64 : valueArea.integer.value32;
  }
  // Raises for a null, and 0xC0001583 (OXR5507) for an 8-byte value beyond 32 bits: "Overflow converting a PWFInt64 to
  // PWFInt32", "integer", "4-byte integer", the value.
  PWFInt32 getInt32Value() const;
  int getStringLength() const;  // of a STRING or, unlike its siblings, of a DECIMAL; in code units
  // The text of a STRING, zero-terminated, and its length in code units; empty for a null. It stays the value's.
  const unsigned short* getStringValue() const {
    requireText(STRING, "PWFData::getStringValue");
    return stringValue.characters();
  }
  const unsigned short* getStringValue(PWFInt32& length) const {
    requireText(STRING, "PWFData::getStringValue(PWFInt32&)");
    length = static_cast<PWFInt32>(stringValue.length());
    return stringValue.characters();
  }
  const PWFString& getPWFStringValue() const {
    requireText(STRING, "PWFData::getPWFStringValue");
    return stringValue;
  }
  // The fields of a DATETIME, all 0 for a null.
  PWFDateTime getDateTimeValue() const;

  // Whether type, null flag and value are the same. Texts and bytes are compared as they are, integers without regard
  // to their width, booleans as ints, doubles as doubles (a NaN equals nothing), date-times by all of their bytes, the
  // pointer to the zone too. Decimals are compared as DataCnv::StrFromDec writes them ("1.50" is "1.5"); one that is
  // none raises that member's failure. Two nulls are equal, but INTEGER, FLOAT and BOOLEAN raise as their getters do.
  // Durations of nothing are equal; otherwise their signs must be, and then, where both have microseconds, these alone;
  // else their months, twelve a year, if both have any.
  bool operator==(const PWFData& other) const;
  bool operator!=(const PWFData& other) const;
  // A STRING for people: the value as DataCnv::StandardStrFromData writes it, "NOTHING", "NULL", or "INVALID" for what
  // that refuses.
  PWFData getDebugString() const;

 private:
  friend struct oxr::TextInPlace;  // makes a text value and lets its units be written in place

  struct Integer {
    PWFInt32 width;  // bytes: 4 or 8
    PWFInt32 value32;
    PWFInt64 value64;
  };
  struct Binary {
    EOwnership ownership;
    PWFInt32 length;  // bytes
    void* pointer;
  };
  // All bytes that the type has no use for are 0.
  union ValueArea {
    ValueArea() : bytes{} {}
    explicit ValueArea(const Integer& value) : bytes{} { integer = value; }
    explicit ValueArea(double value) : bytes{} { doubleValue = value; }

    unsigned char bytes[48];
    Integer integer;
    double doubleValue;
    PWFInt32 booleanValue;
    PWFInterval interval;
    PWFDateTime dateTime;
    Binary binary;
  };

  // Makes a text of `length` units that are still to be written.
  PWFData(ELogicalType type, unsigned length) : logicalType(type), nullFlag(false) {
    stringValue.resizeForOverwrite(length);
  }

  // The getters of texts are traced, and raise for another type; inline for those that do neither.
  void requireText(ELogicalType type, const char* function, int line = __builtin_LINE()) const {
    if (logicalType != type || KelLog::iEffectiveLogFilter > 3) [[unlikely]]
      checkText(type, function, line);
  }
  void checkText(ELogicalType type, const char* function, int line) const;
  void checkInt64() const;
  void init(const void* data, int length, ELogicalType type, EOwnership own);
  bool store(const void* data, int length, EOwnership own);
  void storeBinary(const void* data, int length, EOwnership own);
  bool ownsBinary() const;
  ValueArea copiedArea() const;
  void releaseBinary();
  static void traceMade(const char* function) {
    if (KelLog::iEffectiveLogFilter > 3) [[unlikely]]
      writeMade(function);
  }
  void traceInit(const void* data, int length, ELogicalType type) const {
    if (KelLog::iEffectiveLogFilter > 3) [[unlikely]]
      writeInit(data, length, type);
  }
  static void writeMade(const char* function);
  void writeInit(const void* data, int length, ELogicalType type) const;

  ELogicalType logicalType = NOTHING;
  bool nullFlag = false;
  KelBufferedWstring<16u> stringValue;  // empty unless STRING or DECIMAL
  ValueArea valueArea;
};
