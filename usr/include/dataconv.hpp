#pragma once

#include <unicode/unistr.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>

#include "cpunicodeconverter.hpp"
#include "kelheader.hpp"
#include "kellog.hpp"
#include "kellogsource.hpp"
#include "kelmutex.hpp"
#include "oxrexport.hpp"
#include "pwfdata.hpp"
#include "pwftypes.hpp"

U_NAMESPACE_BEGIN
class DecimalFormat;
U_NAMESPACE_END

class PWFDateTimeFormatter;

namespace oxr {
struct DataCnvParts;
}

// The enumerations of physical settings. Callers pass and store the numbers: they never change.

// The format of binary floating-point numbers.
enum EFloatFmt : std::int32_t {
  eFloatIeeeBig = 1,
  eFloatIeeeLittle = 2,
  eFloatHexadecimal = 3,  // base-16 floats, most significant byte first
};

// Where a number's sign lies. A packed decimal tells eSignNone (unsigned) from all others (signed); a binary integer is
// signed for eSignLeadingIncluded only, so that a caller passes 0 or 1 there.
enum ESign : std::int32_t {
  eSignNone = 0,
  eSignLeadingIncluded = 1,   // carried by the first digit
  eSignTrailingIncluded = 2,  // carried by the last digit
  eSignLeadingSeparate = 3,   // a sign text before the digits
  eSignTrailingSeparate = 4,  // a sign text after the digits
};

// Where the data of a field lie when it is longer than they are.
enum EJustification : std::int32_t {
  eJustifyNone = 0,
  eJustifyLeft = 1,   // data on the left, padding on the right
  eJustifyRight = 2,  // data on the right, padding on the left
};

// What is taken off a text that is read.
enum ETrimType : std::int32_t {
  eTrimNone = 0,
  eTrimSpaceLeading = 1,   // leading white space
  eTrimSpaceTrailing = 2,  // trailing white space
  eTrimSpaceBoth = 3,
  eTrimPadding = 4,  // the pad character: trailing for eJustifyLeft, leading for eJustifyRight, else none
};

// What the length of a text counts.
enum LengthUnitType : std::int32_t {
  eLengthBytes = 0,            // bytes of the code page
  eLengthChars = 1,            // code units
  eLengthBytesIfVariable = 2,  // bytes in a variable-width code page, code units in any other
};

// The family of messages, where that makes a difference.
enum EMessageStandard : std::int32_t {
  eMessageStandardDefault = 0,
  eMessageStandardLooseDecimal = 3,  // "." is let pass beside a decimal point of the message's own
};

// Turns the physical bytes of message fields into logical values and back.
//
// A worker makes one for a message: it holds what the message's physical form is, and every conversion reads those
// settings. Decimals become text and stay text (see PWFData), so a field keeps every digit, however long it is.
// An object serves one thread at a time. It is the log source of its own trace and failures.
//
// Unless a member says otherwise, a failure is a KelConversionException; in what follows "internal error" is
// 0xC000157E (OXR5502) with the insert "CPI Internal Error" first, "invalid data" 0xC0001581 (OXR5505), "out of bounds"
// 0xC0001582 (OXR5506), "too long" 0xC0001583 (OXR5507). After a failure no output is promised.
//
// Example:
//   DataCnv converter(37, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
//                     eMessageStandardDefault, nullptr);
//   const unsigned char field[] = {0x12, 0x34, 0x5D};
//   converter.PckdDecToDec(field, 3, 2, eSignLeadingIncluded);  // DECIMAL "-123.45"
class OXR_EXPORT DataCnv : public KelOwnedLogSource {
 public:
  static const KelWstring UHEX_NUMBERS;       // "0123456789abcdefABCDEF"
  static const KelWstring US_PLUS;            // "+"
  static const KelWstring US_MINUS;           // "-", the sign of every canonical decimal
  static const KelWstring US_DECIMAL;         // ".", the point of every canonical decimal
  static const KelWstring DATE_PATTERN;       // "yyyy-MM-dd"
  static const KelWstring TIME_PATTERN;       // "HH:mm:ss"
  static const KelWstring TIMESTAMP_PATTERN;  // "yyyy-MM-dd HH:mm:ss"
  static const KelWstring MILLISEC_PATTERN;   // ".SSS", for what follows the seconds

  // `ccsid`: code page of the message's text. `integerEndian`: byte order of binary integers, exactly eEndianLittle is
  // little, anything else big; and of Unicode text, where eEndianUnset is this machine's. `packedEndian`: byte order of
  // packed decimals, by the same rule. `centuryWindow`, `timeZoneName`, `dateTimeFlag`, `dateTimeText`,
  // `firstWeekOfYear`, `lenient`: see setDateTimeProperties. `positivePackedSign`: the sign of a positive packed
  // decimal, below 16, and normally 12. `owner` is ignored: a log source has no owner until setOwner.
  DataCnv(int ccsid, EEndian integerEndian, EEndian packedEndian, EFloatFmt floatFormat, int centuryWindow,
          const unsigned short* timeZoneName, bool dateTimeFlag, const unsigned short* dateTimeText,
          int firstWeekOfYear, bool lenient, char positivePackedSign, bool strictNumericChecking,
          EMessageStandard messageStandard, const KelNamedLogSource* owner);
  ~DataCnv() override;

  // Replaces the date-time properties: see the constructor of PWFDateTimeFormatter. The texts are zero-terminated or
  // null, which the empty text counts as; they stay the caller's and must outlive the object or the next call. The
  // formatter that the first date-time has made goes on with the properties of then.
  void setDateTimeProperties(int centuryWindow, const unsigned short* timeZoneName, const unsigned short* dateTimeText,
                             int firstWeekOfYear, bool lenient, bool dateTimeFlag);

  // ---- Bytes and binary integers

  // Writes `length` bytes of `source` into `target` in reverse, walking forward through the source. With target equal
  // to source the second half gets the reversed first half, and the first half stays. Internal error (without the usual
  // first insert): a null source, then a null target, then a length of 0 or less.
  static void SwapEnds(unsigned char* target, const unsigned char* source, int length);

  // Reads a binary integer of `size` bytes in the byte order `integerEndian`: 1, 2, 4 or 8, for IntToInt32 at most 4.
  // It is signed for eSignLeadingIncluded only. Internal error: a null source, then another size. Too long: an unsigned
  // value beyond the signed result.
  PWFInt64 IntToInt64(const unsigned char* source, int size, ESign sign) {
    if (source != nullptr && KelLog::iEffectiveLogFilter <= 3) [[likely]] {
      if (size == sizeof(PWFInt64)) {
        const auto value = static_cast<PWFInt64>(loaded<PWFUInt64>(source));
        if (sign == eSignLeadingIncluded || value >= 0) [[likely]]
          return value;
      } else if (size == sizeof(PWFInt32)) {
        const auto value = loaded<PWFUInt32>(source);
        return sign == eSignLeadingIncluded ? PWFInt64{static_cast<PWFInt32>(value)} : PWFInt64{value};
      }
    }
    return readInt64(source, size, sign);
  }
  PWFInt32 IntToInt32(const unsigned char* source, int size, ESign sign);
  PWFUInt64 UIntToUInt64(const unsigned char* source, int size);

  // ---- Binary integers: written, and with a decimal scale

  // Writes the integer into a field of 1, 2, 4 or (IntFromInt64 only) 8 bytes, in the byte order `integerEndian`. It is
  // signed for eSignLeadingIncluded only. Internal error: a null target, then another size. Too long: a value that the
  // field cannot hold, with the inserts "Overflow converting a PWFInt64 to PWFInt8" (the types as they are), "integer",
  // "1-byte integer" (for UIntFromUInt32 "1-byte unsigned integer"), `size`, the value. `size` stays as it is.
  void IntFromInt64(PWFInt64 value, unsigned char* target, int size, ESign sign);
  void IntFromInt32(PWFInt32 value, unsigned char* target, int size, ESign sign);
  void UIntFromUInt32(PWFUInt32 value, unsigned char* target, int& size);
  // Writes `value` times 10 to the `virtualDecimalPoint`, multiplied (or divided) one power at a time, the fraction
  // cut. The field is signed for every ESign but eSignNone. Internal error: a null target, then a size other than 1, 2,
  // 4 and 8. Out of bounds: a value that is too great while it still has its fraction, so that 126.9 goes into a signed
  // byte, 127.9 and a NaN do not. 2^63 into a signed and 2^64 into an unsigned field of 8 bytes, the bounds as doubles,
  // become the largest integer.
  void IntFromDbl(double value, unsigned char* target, int size, ESign sign, int virtualDecimalPoint);
  // Writes a canonical decimal (zero-terminated) times 10 to the `virtualDecimalPoint`, the fraction cut, as a signed
  // integer. Internal error: a null text, a null target, then a size of 0 or less. It fails as UStringToInt64 does for
  // text that is no number or beyond 64 bits, and then as IntFromInt64 does.
  void IntFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint);
  // Reads a signed integer as DECIMAL, with `virtualDecimalPoint` of its digits after the point (below 0, so many zeros
  // are appended). A minus counts as a position when the point is placed, as in PckdDecToDec: -5 with 1 place gives
  // "-.5". Internal error: a null source, then a size of 0 or less; then it fails as IntToInt64 does.
  PWFData IntToDec(const unsigned char* source, int size, int virtualDecimalPoint);
  // Reads an integer, signed for eSignLeadingIncluded only, and divides (below 0: multiplies) it by 10,
  // `virtualDecimalPoint` times. Unsigned values reach up to 2^64. It fails as IntToDec does.
  double IntToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign);

  // ---- Floats of 4 or 8 bytes, in the format `floatFormat`
  //
  // A hexadecimal float has a sign, 7 bits of exponent (a power of 16, excess 64) and a fraction of 24 or 56 bits below
  // 1: 0x41100000 is 1.0. It has no infinity and no NaN. Nothing is refused for its value: what does not fit is clamped
  // to the largest number, or to a zero of its sign.

  // Internal error: a null pointer, then a size of 0 or less, then a size other than 4 and 8. A double is rounded to a
  // float first where 4 bytes are written; out of a float's range it becomes an infinity.
  double FltToDbl(const unsigned char* source, int size);
  void FltFromDbl(double value, unsigned char* target, int size);
  // The same as DECIMAL: the text of doubleToUString with its point moved by `virtualDecimalPoint`, as
  // adjustDecimalForString moves it. 15.0 without a scale is "15.", with one place "1.5". A text is read by
  // PWFStringTodouble.
  PWFData FltToDec(const unsigned char* source, int size, int virtualDecimalPoint);
  void FltFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint);
  // Between the bit patterns of the formats (HFP: hexadecimal). What a pointer calls a float or double is 4 or 8 bytes
  // of either, in this machine's order; `target` may be `source`. `order` is that of the two 32-bit words of a double:
  // the high one first for exactly eEndianBig, else the low one. Bits without a place are dropped; an IEEE infinity,
  // NaN or denormal is read as an ordinary number with a hidden bit; a hexadecimal fraction of 0 under an exponent
  // counts as a 1 just above the fraction. Never fails.
  static void ConvertFloatHFPtoIEEE(float* source, float* target);
  static void ConvertDoubleHFPtoIEEE(double* source, double* target, EEndian order);
  static void ConvertFloatIEEEtoHFP(float* source, float* target);
  static void ConvertDoubleIEEEtoHFP(double* source, double* target, EEndian order);

  // ---- Packed decimals: two digits a byte, most significant first, the sign in the last half byte

  // Give the two half bytes of a byte, 0 to 15: the more significant one, and the other.
  unsigned char LeftNibble(unsigned char byte) { return byte >> 4; }
  unsigned char RightNibble(unsigned char byte) { return byte & 0x0F; }
  // The half byte to write for the sign, which is also stored in `*sign`: 0xF for an unsigned field, 0xD for a negative
  // value, else `positivePackedSign`.
  char GetPackedDecimalSign(short isSigned, int isNegative, char* sign);
  // Checks a field split into `count` half bytes in normal order. `rawField`, count / 2 bytes as they came, goes into
  // the message as a dump. Invalid data: "packed decimal, no sign found " for a sign of 9 or less; "packed decimal,
  // negative sign found on unsigned data " for 0xB and 0xD with eSignNone; "packed decimal, non-numeric data found".
  void ValidatePackedDecimal(const unsigned char* nibbles, int count, ESign sign, const unsigned char* rawField);
  // Reads a field of `size` bytes as DECIMAL; all its digits stay, leading zeros too. `virtualDecimalPoint`: how many
  // of the digits come after the point; below 0, so many zeros are appended. 0xD alone reads as negative. A minus
  // counts as a position when the point is placed: 0x123D with 3 places gives "-.123". Internal error: a null source,
  // then a size of 0 or less. Invalid data: see ValidatePackedDecimal.
  PWFData PckdDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign);
  // Writes a canonical decimal (zero-terminated; null counts as empty, which is zero) into all `size` bytes of a field.
  // Of the places after the point, `virtualDecimalPoint` are kept and the rest are cut. An unsigned field (eSignNone)
  // drops a minus. Internal error: a null target. Too long: more digits than the field holds; the target is then
  // untouched. The inserts are "CPI InputData Too Long", "decimal", "packed decimal", `size`, the text.
  void PckdDecFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint, ESign sign);

  // ---- Packed decimals as numbers: what PckdDecToDec gives, turned into a number, and numbers as PckdDecFromDec
  // writes them. The failures of both pass through, and those of the members named. Most fields need neither a text nor
  // the heap.

  // The nearest double, as PWFStringTodouble reads the decimal's text.
  double PckdDecToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign);
  // The places after the point are cut. Out of bounds: a value beyond 64 bits. Too long, "Overflow converting a
  // PWFInt64 to PWFInt32": a value within 64 bits that is too great for an Int32, as IntFromDec has it.
  PWFInt64 PckdDecToPWFInt64(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign);
  PWFInt32 PckdDecToInt32(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign);
  // Writes the digits that doubleToUString gives. Of their places, `virtualDecimalPoint` are kept and the rest are cut.
  void PckdDecFromDbl(double value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign);
  void PckdDecFromPWFInt64(PWFInt64 value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign);
  void PckdDecFromInt32(PWFInt32 value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign);
  // The digits of a date-time's text, by a pattern (zero-terminated). A field with fewer digits than the pattern has
  // units is read with zeros before them, one with more without the leading zeros that are too many; a sign and a point
  // count as digits. They fail as StrToDateTime and StrFromDateTime do, too.
  PWFDateTime PckdDecToDateTime(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                                const unsigned short* pattern);
  void PckdDecFromDateTime(const PWFDateTime& value, unsigned char* target, int size, const unsigned short* pattern,
                           int virtualDecimalPoint, ESign sign);

  // ---- External decimals: a digit a character of the code page, the sign where ESign says

  // Puts the sign on digits: "+" or "-" before them (eSignLeadingSeparate) or after them; for the included forms the
  // digit is found in `positiveSignTable` (its index modulo 10 is its value) and replaced from the table of the sign,
  // by U+0000 where that is too short. A digit that stands in no table, and any other ESign, changes nothing. The
  // tables are zero-terminated; null counts as empty.
  void ExtDecAddSign(KelWstring& text, ESign sign, const unsigned short* positiveSignTable,
                     const unsigned short* negativeSignTable, bool& negative);
  // Takes the sign off and sets `negative`: a separate one as CheckSign does with "-" and "+", an included one by the
  // tables, its place taken by "0" plus the digit. Internal error "Invalid sign type: " for an unknown ESign, and for a
  // character in neither table; the text is then as it was.
  void ExtDecRemoveSign(KelWstring& text, ESign sign, const unsigned short* positiveSignTable,
                        const unsigned short* negativeSignTable, bool& negative);
  // Takes the pad characters off a field that came in, and leaves "0" where nothing remains. A pad in the code page is
  // one byte; it comes off the end for eJustifyLeft, else off the beginning.
  void ExtDecTrimData(KelWstring& text, EJustification justification, unsigned short padChar, bool padCharIsUnicode);
  // Pads to `targetLength` characters; `paddingBytes` is what the field has left. A pad in the code page is one byte a
  // character and needs eJustifyLeft or eJustifyRight; with any other value the text stays. KelParserException
  // 0xC0001591 (OXR5521) when `paddingBytes` is no multiple of what GetPadCharLen gives; its inserts are the text, the
  // pad character as a dump, its bytes, `targetLength`, the CCSID. GetPadCharLen's failures pass through.
  void ExtDecPadData(KelWstring& text, int targetLength, int paddingBytes, EJustification justification,
                     unsigned short padChar, bool padCharIsUnicode);
  // Whether the first, or last, unit is the first unit of `minus`. `sign` and `plus` are ignored.
  static bool HasALeadingMinus(const KelWstring& text, ESign sign, const unsigned short* minus,
                               const unsigned short* plus);
  static bool HasATrailingMinus(const KelWstring& text, ESign sign, const unsigned short* minus,
                                const unsigned short* plus);
  // Puts a message's own sign text where a separate sign belongs. Unless `nothingToRemove`, the leading "-" is taken
  // off first. An empty sign text changes nothing.
  void SubstituteMinusSign(KelWstring& text, ESign sign, const unsigned short* signText, bool nothingToRemove);
  // Reads a field of `size` bytes as DECIMAL; `virtualDecimalPoint` as for packed decimals, but the sign is put on
  // after the scale, so that -5 with 2 places is "-0.05". Leading zeros stay unless they are the padding. An included
  // sign takes the first or last byte: a zone of F or C for plus and D for minus in EBCDIC; else "p" to "y" for minus,
  // or, with `customSign`, "{" and "A" to "I" for plus, "}" and "J" to "R" for minus. The tables go to
  // ExtDecRemoveSign. Internal error: a null source, then a size of 0 or less. Invalid data: "External decimal -
  // Invalid Positive sign code" (EBCDIC) or "External decimal - Custom Sign EBCDIC" (`customSign`) and the byte for a
  // sign byte that is none; see validateDecimal for characters that are no digits.
  //
  // Example (CCSID 37):
  //   const unsigned char field[] = {0xF1, 0xF2, 0xD3};
  //   ExtDecToDec(field, 3, 2, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr, nullptr);  // "-1.23"
  PWFData ExtDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                      EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                      const unsigned short* positiveSignTable, const unsigned short* negativeSignTable);

  // The same field as a double, as text with its "-", and as an integer; members without a scale leave it out.
  // ExtDecToStr tests neither null nor size: both are toUnicodeString's internal error. ExtDecToInt64 says "Invalid
  // extended decimal size: "; its out of bounds is that of StrToInt64.
  double ExtDecToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                     EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                     const unsigned short* positiveSignTable, const unsigned short* negativeSignTable);
  KelWstring ExtDecToStr(const unsigned char* source, int size, ESign sign, EJustification justification, int padChar,
                         bool padCharIsUnicode, bool customSign, const unsigned short* positiveSignTable,
                         const unsigned short* negativeSignTable);
  PWFInt64 ExtDecToInt64(const unsigned char* source, int size, ESign sign, EJustification justification, int padChar,
                         bool padCharIsUnicode, bool customSign, const unsigned short* positiveSignTable,
                         const unsigned short* negativeSignTable);
  // Writes canonical text into all `size` bytes of a field, its point moved by `places` to the left (below 0, to the
  // right); what then comes after the point is cut. The first "-", wherever it is, makes the number negative; zero has
  // a sign, too. Pads stand between a separate sign and the digits. An included sign goes into the first or last byte
  // even where that is a pad; with NVRA_POSITIVE_EBCDIC_OVERPUNCH in the environment when the library was loaded, an
  // EBCDIC plus is the zone C instead of F. `size` stays. Too long: "string", "external decimal", `size`, the text. Out
  // of bounds, "signed number", "unsigned external decimal", the text: a number below zero with eSignNone. Internal
  // error: whatever else the conversion reports. ExtDecPadData's failures pass through.
  //
  // Example (CCSID 37):
  //   unsigned char field[4];
  //   int size = 4;
  //   converter.UStringToExtDec(text, field, size, -1, eSignTrailingIncluded, eJustifyRight, '0', true, false, nullptr,
  //                             nullptr);  // text "-1.25": F0 F0 F1 D2
  void UStringToExtDec(const KelWstring& text, unsigned char* target, int& size, int places, ESign sign,
                       EJustification justification, unsigned short padChar, bool padCharIsUnicode, bool customSign,
                       const unsigned short* positiveSignTable, const unsigned short* negativeSignTable);
  // The same for a decimal (zero-terminated; a "+" and white space are let pass), a double and an integer, with
  // `virtualDecimalPoint` digits after the point. Internal error, tested first: a null text, a null target, a size
  // below 1.
  void ExtDecFromDec(const unsigned short* text, unsigned char* target, int& size, int virtualDecimalPoint, ESign sign,
                     EJustification justification, unsigned short padChar, bool padCharIsUnicode, bool customSign,
                     const unsigned short* positiveSignTable, const unsigned short* negativeSignTable);
  void ExtDecFromDbl(double value, unsigned char* target, int& size, int virtualDecimalPoint, ESign sign,
                     EJustification justification, unsigned short padChar, bool padCharIsUnicode, bool customSign,
                     const unsigned short* positiveSignTable, const unsigned short* negativeSignTable);
  void ExtDecFromInt64(long value, unsigned char* target, int& size, ESign sign, EJustification justification,
                       unsigned short padChar, bool padCharIsUnicode, bool customSign,
                       const unsigned short* positiveSignTable, const unsigned short* negativeSignTable);

  // ---- Numbers to strings

  // The plain text of a number replaces what `out` holds. The text of a double is the shortest that reads back as the
  // same double. It always has the point: "1500.", or with `exponential` "1.5E+3". Negative zero keeps its "-".
  // Infinity is "INF", a NaN "NaN".
  void Int64ToUString(long value, KelWstring& out);
  void doubleToUString(double value, KelWstring& out, bool exponential);
  // The same as STRING: a double in exponential form, a decimal without zeros that mean nothing. The buffer form puts a
  // terminating zero after the text. Out of bounds: `length` units are too few for both. It is set to the length of the
  // text.
  PWFData StrFromInt64(long value);
  PWFData StrFromDbl(double value);
  void StrFromDbl(double value, unsigned short* out, int& length);
  PWFData StrFromDec(const unsigned short* value);

  // The text of a number in a field of a message. `length`: the length of the field on the way in and of the text on
  // the way out, in code units; a buffer gets so many units, and no terminating zero. `sign`: eSignNone, or where
  // `minusText` and `plusText` go, both zero-terminated; with `showPlus` a decimal that isn't negative gets `plusText`.
  // `padField`: fill the field, see PadData; a pad that is a digit goes between sign and digits, any other around both.
  // `decimalPoint`: the message's point, zero-terminated. `precision`: see adjustPrecisionForString, -3 is the
  // exponential form of a double. With `useVirtualDecimalPoint`, the digits are written without a point, `precision` of
  // them being places; with 0 places nothing is cut. Places are cut, never rounded. A decimal is canonical text,
  // zero-terminated.
  //
  // Internal error, in this order: a null buffer, a null decimal, a length below 1, a null sign text, an included sign.
  // Invalid data: see validateDecimal. Out of bounds: a number below zero with eSignNone ("string (no sign)"), an
  // integer or double too long for the field. Too long: a decimal too long for it. After a failure `length` is as it
  // was.
  //
  // Example:
  //   int length = 6;
  //   converter.StrFromInt64(-12, text, length, eSignTrailingSeparate, u"CR", u"", true, eJustifyRight, '0', true);
  //   // "0012CR"
  void StrFromInt64(long value, KelWstring& out, int& length, ESign sign, const unsigned short* minusText,
                    const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                    bool padCharIsUnicode);
  void StrFromInt64(long value, unsigned short* out, int& length, ESign sign, const unsigned short* minusText,
                    const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                    bool padCharIsUnicode);
  void StrFromInt32(int value, unsigned short* out, int& length, ESign sign, const unsigned short* minusText,
                    const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                    bool padCharIsUnicode);
  void StrFromDbl(double value, KelWstring& out, int& length, bool useVirtualDecimalPoint, int precision,
                  const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                  const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                  bool padCharIsUnicode);
  void StrFromDbl(double value, unsigned short* out, int& length, bool useVirtualDecimalPoint, int precision,
                  const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                  const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                  bool padCharIsUnicode);
  void StrFromDec(const unsigned short* value, KelWstring& out, int& length, bool useVirtualDecimalPoint, int precision,
                  const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                  const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                  bool padCharIsUnicode, bool showPlus);
  void StrFromDec(const unsigned short* value, unsigned short* out, int& length, bool useVirtualDecimalPoint,
                  int precision, const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                  const unsigned short* plusText, bool padField, EJustification justification, unsigned short padChar,
                  bool padCharIsUnicode, bool showPlus);
  // Writes a canonical decimal as text in the code page, its point moved `scale` positions to the right. `size`: the
  // room on the way in, the bytes written on the way out. Internal error: a null text, a null target, a size below 1.
  // Too long: "decimal", "string", "<size> bytes", the text.
  void StrFromDec(const unsigned short* value, unsigned char* bytes, int& size, int scale);

  // ---- Numbers from text
  //
  // A field is `length` units with the settings of its message. `trim`, `justification`, `padChar`, `padCharIsUnicode`:
  // see TrimData; but a pad in the code page is not checked, and only its low byte counts. `sign`, `minusText`,
  // `plusText`: see CheckSign. `decimalPoint`: the message's point, zero-terminated like the sign texts, found as
  // UpdateDecimal finds it. `precision`: how the places are defined, see adjustPrecisionForString; with
  // `useVirtualDecimalPoint` the text has no point, and so many of its digits count as places.
  //
  // Internal error, in this order: a null text; then, after the test for a length below 0 (invalid data "Tried to
  // convert a zero length string to ..."), a null sign text, a null decimal point, an included sign (which StrToInt32
  // alone takes). Invalid data: a text that is no number. What a field's settings refuse quotes the whole field as it
  // came.
  //
  // With `strictNumericChecking` decimals and doubles must come as their settings declare them. 0xC00015AE to
  // 0xC00015B6 (OXR5550 to OXR5558) tell what is amiss: nothing but padding, another decimal point than the message's,
  // no digit right before the point, no point with precision -2, a point at the end with any other precision, an
  // exponent where none belongs, none where precision -3 asks for one (doubles), another number of places than
  // `precision` (a further insert), a point in spite of a virtual one.

  // Reads an integer; a field of padding is 0. Out of bounds, "4-byte integer" or "8-byte integer": the text decides,
  // so that one digit more than the limit has is too many, even if it is a leading zero. Digits are ICU's, but only "0"
  // to "9" give their value.
  PWFInt32 StrToInt32(const unsigned short* text, int length, ESign sign, const unsigned short* minusText,
                      const unsigned short* plusText, ETrimType trim, EJustification justification,
                      unsigned short padChar, bool padCharIsUnicode);
  PWFInt64 StrToInt64(const unsigned short* text, int length, ESign sign, const unsigned short* minusText,
                      const unsigned short* plusText, ETrimType trim, EJustification justification,
                      unsigned short padChar, bool padCharIsUnicode);
  // Reads a decimal with every digit it came with, except leading zeros; an exponent stays. A length of 0 gives the
  // empty text.
  //
  // Example:
  //   StrToDecimal(u"0012,50CR", 9, false, 2, u",", eSignTrailingSeparate, u"CR", u"", eTrimNone, ...);  // "-12.50"
  KelWstring StrToDecimal(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                          const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                          const unsigned short* plusText, ETrimType trim, EJustification justification,
                          unsigned short padChar, bool padCharIsUnicode);
  // Reads a double; a field of padding is 0. The exponent may have the message's sign texts. "-0" is negative zero.
  double StrToDbl(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                  const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                  const unsigned short* plusText, ETrimType trim, EJustification justification, unsigned short padChar,
                  bool padCharIsUnicode);
  // Reads all that strtod takes in the C locale, whatever the process's locale is: leading white space, hexadecimal
  // numbers, the words for infinity. An empty text is 0. Invalid data: a negative length, and a text that is no number
  // or goes on after one. Internal error: a text that has no UTF-8 form.
  double StrToDbl(const unsigned short* text, int length);
  // Reads digits "0" to "9" after an optional sign; without digits it is 0. Any number of leading zeros is taken.
  PWFInt64 UStringToInt64(const KelWstring& digits);
  // Reads canonical text as far as ICU does: "1.5x" is 1.5. Invalid data: a text with which no number begins; but one
  // that begins with a point is 0 then.
  double PWFStringTodouble(const KelWstring& text);
  // `length` bytes of text in the code page as DECIMAL: "-1234" with a `scale` of 2 is "-12.34"; see
  // adjustDecimalForString and validateDecimal. An empty field gives toUnicodeString's internal error.
  PWFData StrToDec(const unsigned char* bytes, int& length, int scale);
  // StrToDecimal as DECIMAL; the short form is for canonical text with trailing zeros as its padding.
  PWFData StrToDec(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                   const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                   const unsigned short* plusText, ETrimType trim, EJustification justification, unsigned short padChar,
                   bool padCharIsUnicode);
  PWFData StrToDec(const unsigned short* text, int& length, ETrimType trim);

  // ---- Transaction-log fields: half bytes, the high one of a byte first, without a sign after the digits

  // Common to all: `endian` is of the field alone, eEndianLittle for one that is stored last byte first, anything else
  // for the normal order. Readers put their text before what `target` holds, which is meant to be empty. A null source
  // gives an empty text, and so does a `size` of 0 or below. Writers give `target` back and write nothing to a null
  // one; with eEndianLittle the field becomes its first half and that half's mirror image, since SwapEnds goes over it
  // in place, which raises its failure for a field of no bytes.

  // The half bytes of a field, each in a byte, 2 * size of them; the caller deletes them as an array. A null source
  // gives null.
  unsigned char* getUnpackedBuffer(const unsigned char* source, int size, EEndian endian);
  // Reads each half byte as a hexadecimal digit: 0x12AF is "12AF".
  void TLOGPckdStrToStr(const unsigned char* source, KelWstring& target, int size, EEndian endian);
  PWFData TLOGPckdStrToStr(const unsigned char* source, int size, EEndian endian);  // as STRING
  // The same; with eTrimPadding and a `padChar` of 0 to 15 the padding comes off with TrimData, the pad being the ASCII
  // code of the half byte's digit as a value in the code page. Nothing comes off with `padCharIsUnicode`.
  void TLOGFLPckdStrToStr(const unsigned char* source, KelWstring& target, int size, EEndian endian, ETrimType trimType,
                          EJustification justification, unsigned short padChar, bool padCharIsUnicode);
  // Reads digits, leading zeros too: 0x1234 is "1234". Before them may stand 0xD for a minus, 0xF as a filler, or both:
  // 0xD123 and 0xFD12 are negative. A field of no digits gives "" or "-". Invalid data, "TLOG packed decimal", a dump
  // of the field: any other half byte, and those in any other place.
  void TLOGPckdDecToDec(const unsigned char* source, KelWstring& target, int size, EEndian endian);
  PWFData TLOGPckdDecToDec(const unsigned char* source, int size, EEndian endian);  // as DECIMAL
  // The same; with eTrimPadding and a pad that is not Unicode the bytes that hold the low half of `padChar` twice come
  // off first: at the end of memory for eJustifyLeft, at its start for eJustifyRight, whatever `endian` says.
  void TLOGFLPckdDecToDec(const unsigned char* source, KelWstring& target, int size, EEndian endian, ETrimType trimType,
                          EJustification justification, unsigned short padChar, bool padCharIsUnicode);
  // Writes a DECIMAL: an optional sign and digits, leading zeros dropped. `fixed`: leading zeros fill the field, and
  // 0xD stands before the digits of a negative value. Otherwise `size` is to be what the digits need, and 0xF stands
  // before an odd number of digits of a positive value, 0xFD before an even number of a negative one. `written` is set
  // to the number of bytes once all is well. A value with a "+" or leading zeros in the text may come out a byte short
  // in the fixed form, without its last digits. Out of bounds, "Decimal", "TLOG Packed Decimal", the text: the field is
  // too small for the sign or the first digit. Invalid data, "decimal", the text: a character that is no digit, or none
  // left while there is room.
  unsigned char* TLOGPWFDataToPckdDecimal(PWFData& value, unsigned char* target, int size, EEndian endian, bool fixed,
                                          int& written);
  // Writes a STRING, two characters a byte as the code page has them. "A" to "F" and "a" to "f", by their ASCII codes,
  // are 10 to 15; any other character counts with its low four bits. Missing characters are 0, and characters too many
  // are dropped.
  unsigned char* TLOGPWFDataToPckdStr(const PWFData& value, unsigned char* target, int size, EEndian endian);

  // ---- Services: the code page and the formatter

  // The object's converter, made on first use for `ccsid` and `integerEndian`. It is never null and stays the object's.
  // A code page without a table raises KelRecoverableException 0xC0000854 (OXR2132).
  CPUnicodeConverter* getConverter();
  // Whether the code page writes the digit zero as 0xF0. The converter is asked once.
  bool IsCcsidEBCDIC();
  // From and to the object's code page; the result is the ICU status, for the caller to look at. toUnicodeString raises
  // an internal error for a size below the shortest character. `size`: the room on the way in, the bytes written on the
  // way out.
  UErrorCode toUnicodeString(KelWstring& out, const unsigned char* bytes, int size);
  UErrorCode fromUnicodeString(const KelWstring& text, unsigned char* bytes, int& size);
  // The bytes as STRING.
  PWFData RawCharsToPWFData(const char* bytes, int size);
  // This object's clone of the one decimal formatter of the process: it has "." and ",", whatever the locale is. It
  // stays the object's. KelRecoverableException 0xC0000840 (OXR2112) when ICU cannot make one.
  icu::DecimalFormat* getDecimalFormatter();

  // ---- Decimal text: an optional "-", digits, optional "." and digits

  // Invalid data, "decimal", the text: anything but digits and ",", one ".", and a leading sign. With
  // eSignTrailingSeparate there may be no leading sign. An empty text passes.
  void validateDecimal(const KelWstring& text, ESign sign);
  // The last word on a text without its sign: digits (ICU's), one ".", one exponent letter, a sign only right after
  // that. With `pointRequired` there must be a point, so that an empty text passes only without it.
  bool isDecimalValid(const KelWstring& text, bool pointRequired);
  // Moves the point `places` to the left (below 0: to the right): "123" by 2 is "1.23", by -2 "12300", by 4 "0.0123". A
  // point at the end is taken off, and one at the beginning gets a "0" before it; 0 places change nothing. Callers take
  // a sign off first, which would count as a digit.
  void adjustDecimalForString(KelWstring& text, int places);
  // Brings the decimal places to what `selector` says, cutting and never rounding: 0 and up is their number; -1 stands
  // for as many as the value has; -2 for the same, always with a point; -3 leaves them as they are. "12.345" by 2 is
  // "12.34", "12.300" by -1 "12.3", "12" by -2 "12.".
  void adjustPrecisionForString(KelWstring& text, int selector);
  // Finds the first unit that is one of `oldPoint`'s, and replaces as many units from there on as `oldPoint` has by
  // `newPoint`. The result is the position, or -1.
  int UpdateDecimal(KelWstring& text, const unsigned short* oldPoint, const unsigned short* newPoint);
  // Puts a "0" before a point that comes first, and takes a point off the end.
  void removeTrailingDecimal(KelWstring& text);
  // Cuts from the first point on.
  void TrimFromDecimal(KelWstring& text);
  // "007.500" becomes "7.5"; zero becomes the empty text. The result has no meaning.
  int TrimNonSignificantZeros(KelWstring& text);
  // By 10 to the `power`; the value stays as it is where that underflows to 0. The two round differently and do not
  // replace each other.
  double MultiplyDouble(double value, int power);
  double DivideDouble(double value, int power);

  // ---- Date-times: forwarded to the object's PWFDateTimeFormatter, where each is described. It is made with the
  // date-time properties on first use, and kept.

  // parse: text of `length` units, -1 for zero-terminated, by a zero-terminated pattern. KelParserException 0xC00015BB
  // (OXR5563) "CPI DateTime Format string not set", the text: a pattern that is null or empty.
  PWFDateTime StrToDateTime(const unsigned short* text, const unsigned short* pattern, int length);
  // format. Without a pattern (null or empty), by what is set: date and time "yyyy-MM-dd HH:mm:ss", with a subsecond
  // ".SSS" after that, "yyyy-MM-dd", or "HH:mm:ss". Internal error "Datetime does not match any standard template.":
  // neither the whole date nor the whole time is set.
  PWFData StrFromDateTime(const PWFDateTime& value, const unsigned short* pattern, const unsigned short* typeName);
  // parseBinary and formatBinary
  PWFDateTime BinaryToDateTime(const void* data, int length, const unsigned short* pattern);
  void BinaryFromDateTime(const PWFDateTime& value, void* target, int length, const unsigned short* pattern);
  // parseSeconds, parseMilliSeconds, formatSeconds and formatMilliSeconds
  PWFDateTime SecondsToDateTime(int count, const unsigned short* epoch);
  PWFDateTime MilliSecondsToDateTime(long count, const unsigned short* epoch);
  int SecondsFromDateTime(const PWFDateTime& value, const unsigned short* epoch);
  long MilliSecondsFromDateTime(const PWFDateTime& value, const unsigned short* epoch);

  // ---- Durations: "P1Y2M", "-P1DT2H3M4.5S"
  //
  // "P", then fields, each a number and a designator: years, months and days (Y, M, D), and after a "T" hours, minutes
  // and seconds (H, M, S), which alone may have a fraction. Years and months don't go together with the others. "-"
  // before the "P" makes all of it negative.

  // Reads `length` units, -1 for zero-terminated; the text ends at a U+0000, too. Null counts as empty. It takes more
  // than it writes: "H" and "S" without a "T"; a "T" again, after which hours, minutes and seconds may come once more
  // and add up ("PT1HT2H" is three hours); a number that is missing, and is 0 then ("PY"); a text that ends on the
  // point after its seconds. A fraction of more than six digits is cut, with the warning 0x800015AC (OXR5548) in the
  // log. One without digits is a 1 at the decimal place that the position of its "S" in the text gives, counted from 0:
  // "PT1.S" is 1.0001 seconds; beyond six places that is cut, with the warning, too. Digits are ICU's, but only "0" to
  // "9" give their value.
  //
  // All failures have the inserts "interval" and the text. Invalid data: any other text, one that ends on "T" or on a
  // digit among them. 0xC00015AB (OXR5547): a number above 2147483647, a fraction of more than nine digits, or fields
  // that come to more than 64 bits of microseconds. 0xC00015AD (OXR5549): a field of more than 99999999 days.
  // 0xC00015AA (OXR5546): years or months beside any other time.
  PWFInterval StrToInterval(const unsigned short* text, int length);
  // Writes the fields that aren't 0, "PT0S" if none is left; 90 seconds are "PT1M30S". `padField`: the text is filled
  // up to `length` units, see PadData; of a pad in the code page only the low byte counts. `length` becomes that of the
  // text. It limits nothing: a longer text comes out whole, so that a buffer must have room for 256 units, or for
  // `length` if that is more. No terminating zero follows. Out of bounds, "interval", "positive integer", the number: a
  // field below 0. Internal error: a null buffer.
  void StrFromInterval(const PWFInterval& interval, KelWstring& out, int& length, bool padField,
                       EJustification justification, unsigned short padChar, bool padCharIsUnicode);
  void StrFromInterval(const PWFInterval& interval, unsigned short* out, int& length, bool padField,
                       EJustification justification, unsigned short padChar, bool padCharIsUnicode);
  PWFData StrFromInterval(const PWFInterval& interval);  // as STRING
  // Appends a number as it stands in a duration. `fraction`: `value` is 0 to 999999 microseconds, and the digits after
  // the point are written, without trailing zeros: 50000 is "05". Fails as StrFromInterval does for a value below 0.
  void AppendIntervalField(int value, KelWstring& out, bool fraction);

  // ---- Standard strings: the one text of a value that needs no message model

  // Reads a standard string. STRING takes the text as it is, INTEGER what StrToInt64 and DECIMAL what StrToDec takes of
  // a field with a leading "-" or "+", a "." and no padding (with `strictNumericChecking` without decimal places),
  // FLOAT the plain StrToDbl, BINARY StrToBin, INTERVAL StrToInterval. BOOLEAN is "true", "false", "1" or "0" in any
  // case, and DATETIME is StrToDateTime by the pattern "I"; both must be zero-terminated, and `length` counts for
  // nothing. For INTERVAL a `length` of -1 means zero-terminated, for the others it is a bad length. KelParserException
  // 0xC000157E (OXR5502), "CPI Internal Error" first: "Should not call this method with null a null string!", then
  // "Should not call this method without a valid type". Any failure to read is 0xC0001593 (OXR5523), with the type's
  // name ("Integer"), the text, and the failure itself as a nested item.
  PWFData StandardStrToData(ELogicalType type, const unsigned short* text, int length);
  PWFData StandardStrToData(ELogicalType type, const KelWstring& text);
  // Writes a value's standard string, as STRING: a FLOAT in exponential form, a BINARY as StrFromBin does, a BOOLEAN
  // "true" or "false", the others as their plain members do. KelParserException 0xC000157E (OXR5502): "Should not call
  // this method with null data" for nothing and for a null, then "Should not call this method without a valid type".
  // What a conversion raises passes through.
  PWFData StandardStrFromData(const PWFData& value);
  // Reads hexadecimal digits of either case as BINARY, two a byte; white space is skipped wherever it stands. Internal
  // error: a null text. Invalid data: "Invalid input length: <length>", "string", "binary"; any other character
  // ("hex character string" and the text, after the usual first insert); "Odd number of hexadecimal digits is not
  // allowed".
  PWFData StrToBin(const unsigned short* text, int length);
  // Writes the bytes of a BINARY as STRING, two digits a byte, lower case. Another type raises PWFData's failure.
  PWFData StrFromBin(const PWFData& value);

  // ---- Signs and exponents

  // Takes the sign off a text and tells whether it was negative. `minus` and `plus` are zero-terminated texts of any
  // length, for the separate forms: at the beginning the first of the two that matches comes off, at the end both do
  // ("12+-"). An empty `minus` matches everywhere, null nowhere. An included sign is any first, or last, unit but a
  // digit; 0x40 less stays, so that "p23" is "023". Internal error "Invalid sign type: " for an unknown ESign.
  bool CheckSign(KelWstring& text, ESign sign, const unsigned short* minus, const unsigned short* plus);
  // Puts "-" or "+" where the message's own sign text stands right after the first "e" or "E". Either text may be null.
  // An empty `minus` ends the search, so that `plus` isn't looked at.
  void ReplaceExponentialSign(KelWstring& text, const unsigned short* minus, const unsigned short* plus);

  // ---- Padding and trimming. `padChar` is a code unit, or, with `padCharIsUnicode` false, a value in the code page.
  // Where such a value is checked, KelParserException 0xC0001590 (OXR5520) tells that the code page has none like it.

  // Adds `padLength` pad characters: after the text for eJustifyLeft, else before it. Nothing is added for 0 or less. A
  // pad in the code page is not checked, and only its low byte counts; a page without single-byte characters raises
  // toUnicodeString's internal error.
  void PadData(KelWstring& text, int padLength, EJustification justification, unsigned short padChar,
               bool padCharIsUnicode);
  // Adds `padLength` bytes of padding to `dataLength` bytes of data that end at `end`: before them for eJustifyRight,
  // else after them. Padding that comes before is zero from its first zero byte on. Internal error: a null pointer, or
  // a negative length. A pad in the code page is checked, and so is that the room is a multiple of its bytes;
  // KelParserException 0xC0001591 (OXR5521) when it is no multiple of a Unicode pad's bytes.
  void PadData(unsigned char* end, int padLength, int dataLength, EJustification justification, unsigned short padChar,
               bool padCharIsUnicode);
  // Brings the text to `contentLength` units, with U+0000 where it is shorter, and pads it to `targetLength`. Internal
  // error: a target below the content or 0, "Data padding failed" where a negative content length leads elsewhere.
  void PadString(KelWstring& text, int targetLength, int contentLength, unsigned short padChar,
                 EJustification justification, bool padCharIsUnicode);
  // Trims as `trimType` says. Checks a pad in the code page for every trim type.
  void TrimData(KelWstring& text, ETrimType trimType, EJustification justification, unsigned short padChar,
                bool padCharIsUnicode);
  // The same on a caller's `length` units, with zeros after the result, which is the length left. Internal error: a
  // null pointer, then a negative length.
  int TrimString(unsigned short* buffer, int length, unsigned short padChar, EJustification justification,
                 ETrimType trimType, bool padCharIsUnicode);
  // Cuts text that is longer than `maxLength` at a character of `converter`'s code page: the end for eJustifyLeft, the
  // beginning for eJustifyRight; eJustifyNone cuts nothing. The result tells whether anything was cut. Each code unit
  // is measured alone, so that the halves of a surrogate pair count as substitution characters. Internal error: no
  // converter where bytes count, and ICU's failure to convert.
  bool TruncateData(KelWstring& text, long maxLength, EJustification justification, LengthUnitType unit,
                    CPUnicodeConverter* converter);
  // The number of bytes of a Unicode pad character in the code page. Out of bounds: more bytes than the longest
  // character has, as where a page shifts in and out. Internal error: any other failure of ICU.
  int GetPadCharLen(unsigned short padChar);
  // Whether the text holds nothing but pad characters. Checks a pad in the code page; IsNullString takes its low byte.
  bool isAllDataPadding(KelWstring& text, unsigned short padChar, bool padCharIsUnicode);
  bool IsNullString(const KelWstring& text, unsigned short padChar, bool padCharIsUnicode);
  bool IsNullString(const PWFData& value, unsigned short padChar, bool padCharIsUnicode);
  // How many leading, or trailing, units equal `*pad`, or are white space when `pad` is null.
  int getNumLeadingPaddingChar(const KelWstring& text, const unsigned short* pad);
  int getNumTrailingPaddingChar(const KelWstring& text, const unsigned short* pad);
  // Erases `count` units: none for a count below 1, all where it reaches the length.
  void TrimFromTheLeft(KelWstring& text, int count);
  void TrimFromTheRight(KelWstring& text, int count);

 private:
  friend struct oxr::DataCnvParts;

  static KelMutex _global_decFormatterWriteMutex;
  static std::atomic<icu::DecimalFormat*> _global_decFormatter;  // made once, never deleted
  static icu::UnicodeString _exponentSymbol;                     // filled together with the shared formatter
  static icu::UnicodeString _otherCaseExponentSymbol;            // the same in the other case
  static bool _symbolsAreAscii;  // the formatter's digits, signs and exponent are "0" to "9", "-", "+", "E"; as above

  // What external decimals are written with in the code page, asked of the converter once, the pad once a change.
  struct ExternalCodes {
    bool areKnown = false;
    bool areBytes = false;       // a byte each, digits in order
    bool haveDigitZone = false;  // digits of one upper half byte, F0 to F9 or 30 to 39
    unsigned char zero = 0, plus = 0, minus = 0;
    int padChar = -1;  // as a code unit; -1 before the first one
    bool padIsByte = false;
    unsigned char pad = 0;
  };

  // The bits of an integer of 4 or 8 bytes.
  template <class T>
  T loaded(const unsigned char* bytes) const {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    if ((integerEndian == eEndianLittle) == (std::endian::native == std::endian::little)) return value;
    return sizeof value == 8 ? static_cast<T>(__builtin_bswap64(value))
                             : __builtin_bswap32(static_cast<PWFUInt32>(value));
  }
  PWFInt64 readInt64(const unsigned char* source, int size, ESign sign);

  objectHeader header{"QVDC", 32, 320};
  int ccsid;
  int centuryWindow;
  EEndian integerEndian;
  EEndian packedEndian;
  EFloatFmt floatFormat;
  EEndian floatEndian;  // little for eFloatIeeeLittle, else big: floats have no byte order of their own
  const unsigned short* timeZoneName;
  bool dateTimeFlag;
  bool lenient;
  const unsigned short* dateTimeText;
  char positivePackedSign;
  int firstWeekOfYear;
  std::unique_ptr<CPUnicodeConverter> converter;       // made on first use
  std::unique_ptr<CPUnicodeConverter> localConverter;  // UTF-8, made on first use
  std::unique_ptr<PWFDateTimeFormatter> dtFormatter;   // made on first use
  KelMutex decFormatterMutex;                          // guards the making of decFormatter
  std::unique_ptr<icu::DecimalFormat> decFormatter;
  std::unique_ptr<icu::DecimalFormat> notations[2];  // of doubles as text: plain, exponential; made on first need
  bool strictNumericChecking;
  bool hasReadByIcu = false;  // decFormatter has
  EMessageStandard messageStandard;
  int ebcdicState = -1;  // of IsCcsidEBCDIC: -1 not known, 0 no, 1 yes
  ExternalCodes externalCodes;
  const unsigned short* localeDecimal;
  bool localeDecimalDiffers;
};
