#pragma once

#include <new>

#include "cpunicodeconverter.hpp"

namespace oxr {

// Keeps what a converter holds on its way to Unicode (shift state, byte order, half characters) over an operation that
// must not change it.
//
// Example:
//   ConverterState kept(converter, isPeek);
//   ... convert ...
//   // the converter is as before
class ConverterState {
 public:
  // Keeps the state if `keep`. Keeping costs a clone: ask for it only where there may be a state.
  ConverterState(CPUnicodeConverter& owner, bool keep) : owner_(owner), heldUnitsBack_(owner.holdsUnitsBack) {
    if (!keep) return;
    UErrorCode status = U_ZERO_ERROR;
    saved_.adoptInstead(ucnv_clone(owner.converter.getAlias(), &status));
    if (saved_.isNull()) throw std::bad_alloc();
  }
  ConverterState(const ConverterState&) = delete;
  ConverterState& operator=(const ConverterState&) = delete;
  // Puts the kept state back.
  ~ConverterState() {
    if (saved_.isNull()) return;
    owner_.converter.adoptInstead(saved_.orphan());
    owner_.holdsUnitsBack = heldUnitsBack_;
  }
  // Gives up the kept state: the present one stays.
  void drop() { saved_.adoptInstead(nullptr); }

 private:
  CPUnicodeConverter& owner_;
  bool heldUnitsBack_;
  icu::LocalUConverterPointer saved_;
};

}  // namespace oxr
