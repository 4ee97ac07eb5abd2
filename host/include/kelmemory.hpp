#pragma once

#include <unicode/unistr.h>

#include <cstdlib>
#include <new>

#include "kelalloc.hpp"

// What to make of ICU's answers while memory may be short. ICU tells by a status where it had none, but not always: it
// also goes on with what it has by itself ("." for the decimal point of a locale), or tells of a table that is missing.
// A want of memory is to stay one for our callers, std::bad_alloc, and never to be kept as what ICU knows.
namespace oxr {

// Throws std::bad_alloc where there is no memory now. To be called where an answer is not what is expected, before ICU
// is asked for it a second time.
inline void requireMemory() {
  constexpr unsigned long kMuch = 1 << 14;  // bytes; more than ICU needs for most of its steps
  std::free(kelMalloc(kMuch));
}

// Throws std::bad_alloc where the status says so.
inline void requireMemory(UErrorCode status) {
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
}

// The same of a text: one without memory is bogus.
inline const icu::UnicodeString& requireMemory(const icu::UnicodeString& text) {
  if (text.isBogus()) throw std::bad_alloc();
  return text;
}

// Gives what `ask()` gives twice. For answers that are asked for once a process and kept: one that ICU made up without
// memory is not given a second time, and then it is std::bad_alloc.
template <class Ask>
auto askTwice(Ask ask) {
  auto answer = ask();
  requireMemory();
  if (!(ask() == answer)) throw std::bad_alloc();
  return answer;
}

}  // namespace oxr
