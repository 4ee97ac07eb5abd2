#include "cpassert.hpp"

#include "kellog.hpp"
#include "support/failures.hpp"

// An assertion that finds no memory for its event goes without one: it raises nothing.
void cpAssert(void* expression, void* file, unsigned int line) try {
  constexpr char kFunction[] = "cpAssert";
  const auto* const expressionText = static_cast<const char*>(expression);
  const auto* const fileText = static_cast<const char*>(file);
  const long lineNumber = line;
  long handle = 0;
  if (KelLog::iEffectiveLogFilter > 2)
    KelLog::FastEntryItem(kFunction, &handle, true) << expressionText << fileText << lineNumber << KelLog::endOfInserts;
  if (KelLog::iEffectiveLogFilter < 0) return;
  // The event's own place is always the same; the caller's is among the inserts.
  KelLog::ErrorItem item("src/cpi/bsutils/cpassert", 46, kFunction, KelLog::iDefaultLogSource,
                         oxr::failures::kAssertion.number, handle);
  item << oxr::failures::kAssertion.text << expressionText << fileText << lineNumber;
  item.writeToFile();
  if (KelLog::iEffectiveLogFilter > 2) KelLog::writeExit(kFunction, handle);
} catch (...) {
}
