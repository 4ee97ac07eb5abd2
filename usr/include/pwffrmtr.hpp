#pragma once

#include <unicode/utypes.h>

#include <memory>

#include "kelheader.hpp"
#include "kellogsource.hpp"
#include "keltime.hpp"
#include "oxrexport.hpp"
#include "pwfdata.hpp"
#include "pwftypes.hpp"

namespace oxr {
class DateTimeMemory;
}

// Reads and writes date-times: as text by a pattern, as a block of binary fields, or as a count from an epoch.
//
// The letters of text patterns are those of KelTimeStampPattern. A pattern that begins with "I" or "T" stands for ISO
// 8601 as XML Schema has it: the text tells which form it is in, the type of the element in which form it is written. A
// "U" after that ("IU") adds the modifier that writes and reads UTC as "Z".
//
// A date-time points at its time zone and does not own it. The zones that this class gives live to the end of the
// process; one that a caller puts into a date-time must live as long as that is used.
//
// An object serves one thread at a time. It keeps the patterns that it has compiled, so that one object should serve
// many fields. It is the log source of its failures: a KelConversionException unless a member says otherwise; the first
// insert is the text that is quoted here. "Unset" is 0x80000000 in a numeric field of a date-time.
//
// Example:
//   PWFDateTimeFormatter formatter(false, nullptr, 53, nullptr, 0, true);
//   PWFDateTime value = formatter.parse(text, 20, pattern, 1);     // "2001-02-03T04:05:06Z" by "I"
//   PWFData again = formatter.format(value, pattern, 1, nullptr);  // "2001-02-03T04:05:06.000Z"
class OXR_EXPORT PWFDateTimeFormatter : public KelOwnedLogSource {
 public:
  // How a date-time's zone is to be written, in its `iTimeZoneFormatControl`. The numbers go outside: they never
  // change.
  enum EUtcForm : PWFInt32 {
    UTC_AS_FORMAT = 0,  // as the pattern says
    UTC_AS_ZULU = 1,    // it came in as "Z": UTC is written as "Z"
    UTC_AS_ZEROES = 2,  // it came in as UTC in digits: it is written in digits
  };

  // `lenient`: fields out of range carry over into the next larger one, instead of failing. `timeZoneName`: the zone of
  // a date-time that comes without one; null, or a text that begins with "0", for that of the process; an offset such
  // as "+05:30" or "-8", see EvaluateTimeZone; or the ID of a zone, which is looked up when it is first needed.
  // `centuryWindow`: two digits, in which the hundred years begin that years of two digits lie in. `dateTimeText`: the
  // English name of the first day of the week, null for that of the locale. `firstWeekOfYear`: how many days the first
  // week of a year has at least, 1 to 7, other values for what the locale has. `dateTimeFlag`: remember in date-times
  // how UTC was written. The texts are zero-terminated and copied.
  // Raises 0xC0001599 (OXR5529) "Invalid timezone", `timeZoneName`: an offset that is none.
  PWFDateTimeFormatter(bool lenient, const unsigned short* timeZoneName, int centuryWindow,
                       const unsigned short* dateTimeText, int firstWeekOfYear, bool dateTimeFlag);
  ~PWFDateTimeFormatter() override;

  // ---- Text

  // Reads `textLength` units by a pattern of `patternLength` units; -1 for a pattern that is zero-terminated. Fields
  // that the pattern has not got come from midnight of getCurrentDate(). A pattern with a "Z" or "z" anywhere, in a
  // quoted text too, has a zone: `_hasLocalTimezone` is 1, and `iTimeZone` the zone read. Else it is 0, and `iTimeZone`
  // the default zone, null where that is the process's. `iTimeZoneFormatControl` is UTC_AS_ZULU or UTC_AS_ZEROES where
  // `dateTimeFlag` is set and the text has a zone whose ID is "GMT" or "Etc/GMT-0". `_scale` is 6.
  // Raises 0xC000157E (OXR5502) with the one insert "Null pattern pointer."; KelParserException 0xC00015A4 (OXR5540)
  // "CPI Unable to parse datetime internally", the text, the pattern gone by, 1 (0 when lenient): a bad pattern, a text
  // that does not fit it, a default zone that does not exist; and what IdentifyIFormatPattern raises.
  PWFDateTime parse(const unsigned short* text, int textLength, const unsigned short* pattern, int patternLength);
  // Writes a STRING. Unset fields count as convertDateTime says. The value is shifted into the zone that it is written
  // in: its own where `_hasLocalTimezone` is not 0, else the default zone; one without a zone keeps its fields.
  // `_subsecond` counts microseconds, whatever `_scale` says. `typeName`: zero-terminated name of the schema type, for
  // the patterns "I" and "T"; see EstablishIFormat. With `dateTimeFlag`, `iTimeZoneFormatControl` adds the modifier "U"
  // to a pattern that ends in "Z", or takes it off.
  // Raises 0xC000157E (OXR5502) as parse() does; KelParserException 0xC00015A3 (OXR5539) "CPI Unable to format datetime
  // internally", the fields as "1970-01-01 00:00:00.000000", the pattern gone by: a bad pattern, a date-time that is
  // not on the calendar or outside the years 1 to 9999. The host's own failure for a default zone that does not exist
  // passes through.
  PWFData format(const PWFDateTime& value, const unsigned short* pattern, int patternLength,
                 const unsigned short* typeName);

  // Gives the date-time with its unset fields replaced: 1970-01-01, midnight, a `_scale` of 6.
  PWFDateTime convertDateTime(const PWFDateTime& value);
  // Gives the day of the first call, in UTC: a long-lived object goes on with it.
  const KelDate& getCurrentDate();
  // Fills a date-time, without a zone, with a scale of 6.
  void createDateTimeFromTimeStamp(const KelTimeStamp& stamp, PWFDateTime& target);

  // ---- ISO 8601

  // Gives the pattern of a text: of a date, a time, "T" and a time, or a date that ends in a day, "T" and a time. Only
  // the shape counts, so "ab:cd" is "HH:mm". Raises 0xC00015A8 (OXR5544) "CPI String invalid format for pattern 'I'.".
  KelWstring IdentifyIFormatPattern(const KelWstring& text);
  // Give the index, from 0, in the tables of date and time patterns; -1 where there is none.
  static int IdentifyIDatePattern(const KelWstring& text);
  static int IdentifyITimePattern(const KelWstring& text);
  // Gives the pattern of "date", "time", "gYear", "gMonth", "gDay", "gYearMonth" or "gMonthDay"; for any other name, or
  // null, "yyyy-MM-dd'T'HH:mm:ss.SSSZZZ".
  static void EstablishIFormat(const unsigned short* typeName, KelWstring& pattern);

  // ---- Time zones

  // Gives the ID of the zone of an offset (a sign, hours up to 14, minutes after a ":" or none); empty for what is
  // none. "+5", "+05" and "+05:00" are "Etc/GMT-5", whose sign is the reverse; "+05:30" is "Asia/Calcutta", "+01:20"
  // "GMT+01:20". Only some characters are looked at: "x5" counts as "-5", and "+05:ab" is "GMT+05:ab". Whether the zone
  // exists shows when it is first needed; there is none for "-13".
  static KelBufferedWstring<16u> EvaluateTimeZone(const unsigned short* text);
  // Tells whether the two units after the sign are hours from "00" to "14", and sets `suffix` to what follows "Etc/GMT"
  // in the zone's ID; for "00" `suffix` stays.
  static bool timeZoneAllowed(const KelWstring& offset, KelWstring& suffix);
  // Gives the zone that stands for an offset such as "+05:30"; "GMT" and the offset where none does.
  static KelWstring specialCaseTimezones(const KelWstring& offset);

  // ---- Binary fields
  //
  // A pattern names fields by letter ("y" year, "M" month, "d" day, "H" hour, "m" minute, "s" second, "S" microsecond,
  // "X" filler), a letter for each of its bytes: 1, 2 or 4, any number for filler. A number with a sign after it is
  // what to add to the field that is read, and to subtract where it is written: "yyyy+1900" stores 2001 as 101.
  // Numbers wrap in 32 bits. The fields are signed integers in the machine's byte order, one after the other. Patterns
  // are zero-terminated, not null.
  //
  // "From binary" is 0xC0001597 (OXR5527) "CPI Datetime From Binary Error", 3; "to binary" 0xC0001598 (OXR5528) "CPI
  // Datetime To Binary Error", 3.

  // Reads. Fields that the pattern has not got, or that do not lie within the `length` bytes, are those of 1970-01-01,
  // midnight; there is no zone. A lenient formatter carries over what is out of range: seconds, minutes and hours
  // upwards only, days and months both ways. Any other formatter gives the fields as they are. Raises "from binary"
  // for another number of bytes or an unknown letter.
  PWFDateTime parseBinary(const void* data, int length, const unsigned short* pattern);
  // Writes, with zeros in what is left of the `length` bytes. Values are cut to the bytes that a field has. Raises
  // "from binary", although it writes, for an unknown letter; "to binary" for another number of bytes; 0xC0001598 with
  // the status 3, the date-time's dump, the pattern and the offset instead of the 3 for a field beyond `length`.
  void formatBinary(const PWFDateTime& value, void* target, int length, const unsigned short* pattern);
  // Gives the place of a letter in "yMdHmsSX", from 0; -1 for what is none.
  int EstablishBinaryField(unsigned short letter) const;
  // Read and write one field of `count` bytes, and move `offset`, 0 or above, past it. A field to be written that does
  // not lie within `length` sets `status` to U_INVALID_FORMAT_ERROR and moves nothing.
  void subParse(const void* data, int length, int& offset, int count, unsigned short letter, int adjustment,
                PWFDateTime& target);
  void subFormat(void* target, int length, int& offset, int count, unsigned short letter, int adjustment,
                 const PWFDateTime& value, UErrorCode& status) const;

  // ---- Counts from an epoch
  //
  // An epoch is text of the form "1970-01-01T00:00+00:00" or "1970-01-01T00:00 +00:00", zero-terminated, not null; the
  // empty text is 1970-01-01, midnight. Zones play no part: fields count as they stand. A date-time that is not on the
  // calendar, or leaves the years 1 to 9999, raises the host's own failure, KelRecoverableException 0xC000085C
  // (OXR2140).

  // Raises 0xC000158C (OXR5516) "CPI Datetime invalid Epoch", `text`: a text of another length or form.
  void convertEpoch(const unsigned short* text, KelTimeStamp& target);
  // Give the date-time so long after the epoch, or before it. Raises 0xC00015B9 (OXR5561) "CPI Unable to convert to
  // datetime. Milliseconds outside possible range", the epoch, the count: more than 9223372036854775 milliseconds.
  PWFDateTime parseMilliSeconds(long count, const unsigned short* epoch);
  PWFDateTime parseSeconds(int count, const unsigned short* epoch);
  // Give the time since the epoch, fractions cut towards 0, unset fields as convertDateTime has them. formatSeconds
  // raises 0xC00015B7 (OXR5559) "CPI Unable to convert datetime. Datetime outside possible range", the epoch: beyond 32
  // bits. In these two failures an empty epoch shows as "1970-01-01 00:00:00.000000".
  long formatMilliSeconds(const PWFDateTime& value, const unsigned short* epoch);
  int formatSeconds(const PWFDateTime& value, const unsigned short* epoch);

 private:
  const KelTimeZone* defaultZone();
  PWFInt32 utcFormOf(const PWFDateTime& value, bool endsInZulu) const;

  objectHeader header{"QVDF", 32, 224};
  KelBufferedWstring<16u> defaultTimeZone;  // a zone's ID, or "0" for that of the process
  bool dateTimeFlag;
  bool lenient;
  KelBufferedWstring<16u> dateTimeText;
  int firstWeekOfYear;
  int centuryWindow;
  KelDate currentDate;
  bool haveCurrentDate = false;
  std::unique_ptr<oxr::DateTimeMemory> memory;  // patterns, zone and epoch, so that none is made twice
};
