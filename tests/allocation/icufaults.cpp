#include "allocation/icufaults.hpp"

#include <algorithm>
#include <iterator>

namespace oxr::test {
namespace {

// Found with ICU 72. Its steps look at some allocations and not at others.
constexpr IcuFault kFaults[] = {
    {IcuFault::crashes, "Locale::getDefault", "leaves a mutex locked and waits for it"},
    {IcuFault::crashes, "Locale::Locale", "copies a default locale that is null"},
    {IcuFault::crashes, "UnicodeString::toLower", "uses a case map iterator that is null", true},
    {IcuFault::crashes, "NumberFormat::createInstance", "uses parts of a formatter, or of the cache, that are null"},
    {IcuFault::crashes, "NumberFormat::parse", "fills sets of characters that are null, or digits without room"},
    {IcuFault::crashes, "DecimalFormat::touch", "looks at symbols that are null"},
    {IcuFault::crashes, "DecimalFormat::touchNoError", "asks symbols that are null for their locale"},
    {IcuFault::crashes, "DecimalFormat::setDecimalFormatSymbols", "looks at symbols that are null"},
    {IcuFault::crashes, "DecimalFormat::format", "writes digits without room"},
    {IcuFault::crashes, "TimeZone::createTimeZone", "reads an offset by a number format that is half made"},
    {IcuFault::crashes, "OlsonTimeZone::getNextTransition", "uses transitions and rules that are null"},
    {IcuFault::crashes, "SimpleDateFormat::SimpleDateFormat", "uses number formats, symbols and calendars half made"},
    {IcuFault::crashes, "DateFormatSymbols::DateFormatSymbols", "reads the names of a bundle that is null"},
    {IcuFault::leaks, "DateFormatSymbols::DateFormatSymbols", "what was half made stays"},
    {IcuFault::remembers, "DateFormatSymbols::DateFormatSymbols", "names are cached with their failure"},
    {IcuFault::crashes, "DateFormat::format", "uses a copy of the calendar that has no zone"},
    {IcuFault::crashes, "SimpleDateFormat::format", "uses a copy of the calendar that has no zone"},
    {IcuFault::crashes, "TimeZoneFormat::createInstance", "reads patterns and names that are null"},
    {IcuFault::crashes, "GregorianCalendar::GregorianCalendar", "uses a zone that is null"},
    {IcuFault::remembers, "ucnv_createConverter", "the list of the names of code pages is loaded once"},
    {IcuFault::remembers, "NumberFormat::createInstance", "the list of numbering systems is made once"},
    {IcuFault::remembers, "NumberFormat::parse", "the sets of characters in numbers are made once"},
    {IcuFault::remembers, "DecimalFormatSymbols::DecimalFormatSymbols", "the list of currencies is made once"},
    {IcuFault::remembers, "TimeZone::createTimeZone", "the list of zones is loaded once"},
    {IcuFault::remembers, "TimeZone::createDefault", "the list of zones is loaded once"},
    {IcuFault::remembers, "SimpleDateFormat::SimpleDateFormat", "names and patterns are cached with their failure"},
    {IcuFault::remembers, "TimeZoneFormat::createInstance", "the names of zones are cached with their failure"},
    {IcuFault::remembers, "GregorianCalendar::GregorianCalendar",
     "the weeks of a locale are cached with their failure"},
    {IcuFault::loses, "TimeZoneFormat::format", "writes the offset where it had no memory for the zone's name"},
    {IcuFault::loses, "TimeZoneFormat::createInstance", "goes on without the names of zones, and writes offsets"},
    {IcuFault::loses, "TimeZoneFormat::parse", "finds another zone of the same offset, which is kept beside"},
    {IcuFault::loses, "TimeZone::createDefault", "takes a zone without rules for the process's, which is kept beside"},
    {IcuFault::loses, "TimeZone::createTimeZone", "goes on without what a zone's ID stands for"},
    {IcuFault::leaks, "DecimalFormatSymbols::DecimalFormatSymbols", "what was half made stays"},
    {IcuFault::leaks, "DecimalFormat::format", "what was half made stays"},
    {IcuFault::leaks, "TimeZone::createTimeZone", "what was half made stays"},
    {IcuFault::leaks, "TimeZone::createDefault", "what was half made stays"},
    {IcuFault::leaks, "OlsonTimeZone::getNextTransition", "what was half made stays"},
    {IcuFault::leaks, "SimpleDateFormat::SimpleDateFormat", "what was half made stays"},
    {IcuFault::leaks, "GregorianCalendar::GregorianCalendar", "what was half made stays"},
    {IcuFault::leaks, "GregorianCalendar::setGregorianChange", "what was half made stays"},
    {IcuFault::leaks, "TimeZoneFormat::createInstance", "what was half made stays"},
    {IcuFault::leaks, "TimeZoneFormat::format", "what was half made stays"},
};

}  // namespace

bool isKnown(IcuFault::Kind kind, const CallSite& site) {
  return site.isIcu && std::any_of(std::begin(kFaults), std::end(kFaults), [&](const IcuFault& fault) {
           return fault.kind == kind && fault.entry == site.entry &&
                  (kind != IcuFault::crashes || fault.isInItself || site.innermost != site.entry);
         });
}

}  // namespace oxr::test
