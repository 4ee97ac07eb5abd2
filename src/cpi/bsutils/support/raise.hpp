#pragma once

#include <new>

#include "kelexception.hpp"
#include "support/failures.hpp"
#include "support/trace.hpp"

namespace oxr {

// Raises a failure with just the given inserts: the trace record first, if trace is on, then the exception. The name of
// the failure is an insert of the trace record only; of the exception, only toString() shows it. Nothing else in the
// library throws an exception of the host. Only few failures go without their own text; all others use raise().
template <class Exception, class... Inserts>
[[noreturn, gnu::cold, gnu::noinline]] void raiseBare(const FailureSite& site, const Failure& failure,
                                                      const Inserts&... inserts) {
  const auto add = [&](KelLog::Item& item) { static_cast<void>((item << ... << inserts)); };
  if (KelLog::iEffectiveLogFilter > 2) {
    try {
      KelLog::TraceItem item(site.source, site.function, site.handle);
      item << "Throwing exception" << site.file << site.line << failure.identifier;
      add(item);
    } catch (const std::bad_alloc&) {
      // The failure is raised all the same: a trace changes nothing.
    }
  }
  Exception exception(site.source, site.file, site.line, site.function, KelLog::iDefaultLogSource, failure.number,
                      site.handle);
  add(exception);
  exception.setIdentifier(failure.identifier);
  exception.throwThis();
}

// Raises a failure: its own text is the first insert, the given ones follow.
template <class Exception, class... Inserts>
[[noreturn, gnu::cold]] inline void raise(const FailureSite& site, const Failure& failure, const Inserts&... inserts) {
  raiseBare<Exception>(site, failure, failure.text, inserts...);
}

// Raises an internal error: a misuse by the caller, or a state that should not come about.
template <class... Details>
[[noreturn, gnu::cold]] inline void raiseInternalError(const FailureSite& site, const Details&... details) {
  raise<KelConversionException>(site, failures::kInternalError, details...);
}

// A detail text that ends in a number is one insert: numbered("Invalid integer size: ", 3).
inline std::string numbered(const char* words, long number) {
  return words + std::to_string(number);
}

}  // namespace oxr
