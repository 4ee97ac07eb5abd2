#pragma once

#include <memory>

#include "kelexport.hpp"
#include "kellogsource.hpp"
#include "kelthreadcontext.hpp"
#include "keltime.hpp"
#include "kelunits.hpp"
#include "kelwstring.hpp"

namespace oxr {
struct TimeProgram;
}

// A date-time pattern, compiled. It never changes: keep one and use it from any number of threads; a copy costs next to
// nothing.
//
// A pattern is a row of fields and literals. A field is one letter, repeated; the count says how it is written:
//
//   letter  field                          1         2       3            4           5
//   y       year                           2001      01      2001         2001        02001
//   M       month                          2         02      Feb          February    F
//   d D F   day of month, of year; week day's turn in the month: the digits, with zeros up to the count
//   E       day of the week                Sat       Sat     Sat          Saturday    S           (6: Sa)
//   e       the same as a number           7         07      Sat          Saturday    S           (6: Sa)
//   w W     week of year, of month         digits, with zeros up to the count
//   H k     hour 0 to 23, 1 to 24          digits; K h: hour 0 to 11, 1 to 12
//   m s     minute, second                 digits
//   S       fraction of the second: a digit a letter; there are microseconds, further digits are zeros
//   a G     half of the day, era           PM, AD    (G 4: Anno Domini, 5: A; a 5: p)
//   z       name of the zone               GMT+1     up to 3; 4: Central European Standard Time
//   Z       offset of the zone             +0530     +05:30 or +05   +05:30   GMT+05:30   +05:30, Z for UTC
//   U       only as the last letter: every Z field of the pattern writes UTC as "Z", and reads that
//
// Text between single quotes stands for itself, '' for a quote, and so does everything that is not a letter A to Z or a
// to z. Names are those of the process's locale, and so are the digits of z and ZZZZ; all other digits are 0 to 9. An
// offset with seconds, as old local times have, loses them but for ZZZZ and ZZZZZ: "+00:09:21".
//
// Where several fields tell the same, the last one counts: "kk HH" reads the hour by HH. An hour of 24 needs no half of
// the day and leaves it out of account; a day of the month or year does so with the day of the week.
//
// Example:
//   const KelTimeStampPattern iso(text);  // "yyyy-MM-dd'T'HH:mm:ss.SSSZZZ"
class KELHOST_EXPORT KelTimeStampPattern {
 public:
  // Compiles a pattern. A letter without a meaning, too many of one, a U that is not the last, or a quote that is not
  // closed raises a KelRecoverableException, host message 2142.
  KelTimeStampPattern(oxr::UnitView pattern);
  KelTimeStampPattern(const KelWstring& pattern) : KelTimeStampPattern(pattern.view()) {}

  // Gives what the pattern was compiled to, for the formatter alone.
  const oxr::TimeProgram& program() const { return *program_; }

 private:
  std::shared_ptr<const oxr::TimeProgram> program_;
};

// Reads a time stamp from text, or writes one, by a pattern.
//
// An object is made for one text or one stamp and converted once. It points at its arguments, which must outlive it.
//
// Example:
//   const KelTimeStamp stamp = KelTimeStampFormatter(nullptr, nullptr, text, iso, midnight, 53);
class KELHOST_EXPORT KelTimeStampFormatter {
 public:
  // To read `text`. Fields that the pattern has not got come from `defaultStamp`, which must be on the calendar; its
  // day is cut to the length of the month. The stamp has the zone that the text names, else that of `defaultStamp`.
  // `centuryWindow`: two digits; years of two digits lie in the hundred years that begin in a year ending with these
  // and hold the default stamp's year. `dateTimeText`: English name of the first day of the week; `firstWeekOfYear`:
  // how many days the first week of a year or month has at least, 1 to 7; other values stand for what the locale has.
  // `lenient`: fields out of their range carry over into the next larger one, numbers may have more or fewer digits,
  // white space may stand before a field, and what is left of the text does not count; else all of these fail.
  KelTimeStampFormatter(const KelLogSource* source, KelThreadContext* context, oxr::UnitView text,
                        const KelTimeStampPattern& pattern, const KelTimeStamp& defaultStamp, int centuryWindow,
                        oxr::UnitView dateTimeText = {}, int firstWeekOfYear = 0, bool lenient = false)
      : pattern_(pattern),
        stamp_(defaultStamp),
        text_(text),
        weekBegin_(dateTimeText),
        source_(source),
        centuryWindow_(centuryWindow),
        firstWeekDays_(firstWeekOfYear),
        lenient_(lenient) {
    static_cast<void>(context);
  }
  // To write `stamp`, whose zone, where the pattern asks for one and it has none, is that of the process. `lenient`
  // writes a stamp that is not on the calendar as the one that its fields carry over to.
  KelTimeStampFormatter(const KelLogSource* source, KelThreadContext* context, const KelTimeStamp& stamp,
                        const KelTimeStampPattern& pattern, int centuryWindow, oxr::UnitView dateTimeText,
                        int firstWeekOfYear, bool lenient)
      : KelTimeStampFormatter(source, context, oxr::UnitView(), pattern, stamp, centuryWindow, dateTimeText,
                              firstWeekOfYear, lenient) {}

  // Reads. A text that does not fit the pattern, or a stamp outside the years 1 to 9999, raises a
  // KelRecoverableException, host message 2141.
  operator KelTimeStamp() const;
  // Writes. A stamp that is not on the calendar raises a KelRecoverableException, host message 2140.
  operator KelWstring() const;
  // Does the same into a string of the caller, which allocates nothing where the text fits its buffer.
  void write(KelWstring& target) const;

 private:
  const KelTimeStampPattern& pattern_;
  const KelTimeStamp& stamp_;
  oxr::UnitView text_;
  oxr::UnitView weekBegin_;
  const KelLogSource* source_;
  int centuryWindow_;
  int firstWeekDays_;
  bool lenient_;
};
