// A value as text for a trace: its standard string, or a word where it has none.

#include "datacnv/plainconverter.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"
#include "pwfdata.hpp"

// Each word is made when it is first needed.
PWFData PWFData::getDebugString() const {
  if (isNothing()) {
    static const PWFData nothingString(oxr::fromUtf8("NOTHING"));
    return nothingString;
  }
  if (isNull()) {
    static const PWFData nullString(oxr::fromUtf8("NULL"));
    return nullString;
  }
  try {
    return oxr::plainConverter().StandardStrFromData(*this);
  } catch (const KelRecoverableException&) {
    static const PWFData invalidString(oxr::fromUtf8("INVALID"));
    return invalidString;
  }
}
