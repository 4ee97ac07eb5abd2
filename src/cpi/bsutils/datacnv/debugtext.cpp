// A value as text for a trace: its standard string, or a word where it has none.

#include <string_view>

#include "datacnv/plainconverter.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"
#include "pwfdata.hpp"

PWFData PWFData::getDebugString() const {
  static const PWFData invalidString(oxr::fromUtf8("INVALID"));
  static const PWFData nullString(oxr::fromUtf8("NULL"));
  static const PWFData nothingString(oxr::fromUtf8("NOTHING"));
  if (isNothing()) return nothingString;
  if (isNull()) return nullString;
  try {
    return oxr::plainConverter().StandardStrFromData(*this);
  } catch (const KelRecoverableException&) {
    return invalidString;
  }
}
