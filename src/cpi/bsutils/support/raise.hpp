#pragma once

#include "kelexception.hpp"
#include "support/failures.hpp"
#include "support/trace.hpp"

namespace oxr {

// Raises a failure: the trace record first, if trace is on, then the exception with the same inserts. The name of the
// failure is an insert of the trace record only; of the exception, only toString() shows it. Nothing else in the
// library throws an exception of the host.
template <class Exception, class... Inserts>
[[noreturn, gnu::cold, gnu::noinline]] void raise(const FailureSite& site, const Failure& failure,
                                                  const Inserts&... inserts) {
  const auto add = [&](KelLog::Item& item) { static_cast<void>((item << ... << inserts)); };
  if (KelLog::iEffectiveLogFilter > 2) {
    KelLog::TraceItem item(site.source, site.function, site.handle);
    item << "Throwing exception" << site.file << site.line << failure.identifier;
    add(item);
    item.writeToFile();
  }
  Exception exception(site.source, site.file, site.line, site.function, KelLog::iDefaultLogSource, failure.number,
                      site.handle);
  add(exception);
  exception.setIdentifier(failure.identifier);
  exception.throwThis();
}

// An internal error of the usual form: its own text first, then the detail.
template <class Detail>
[[noreturn, gnu::cold, gnu::noinline]] void raiseInternalError(const FailureSite& site, const Detail& detail) {
  raise<KelConversionException>(site, failures::kInternalError, failures::kInternalError.text, detail);
}

// A detail text that ends in a number is one insert: numbered("Invalid integer size: ", 3).
inline std::string numbered(const char* words, long number) {
  return words + std::to_string(number);
}

}  // namespace oxr
