#pragma once

#include <optional>

#include "datacnv/signform.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

// What the members that read and write numeric fields of text messages share: a field's arguments, their tests, and the
// look at a field that the fast ways begin with.
namespace oxr {

// A numeric field of a text message: the arguments of the members that read one.
struct TextField {
  const unsigned short* text;
  int length;  // in code units
  ESign sign;
  const unsigned short* minusText;
  const unsigned short* plusText;
  ETrimType trim;
  EJustification justification;
  unsigned short padChar;  // a code unit, or a byte of the code page
  bool padCharIsUnicode;

  // The field as it came, for messages. REQUIRES: the text isn't null, the length isn't below 0.
  UnitView view() const { return {text, static_cast<unsigned>(length)}; }
};

// A field of a number that may have decimal places.
struct NumberField : TextField {
  bool useVirtualDecimalPoint;
  int precision;  // the precision selector, or the places of the virtual point
  const unsigned short* decimalPoint;
};

// Argument tests of readers and writers. Each raises an internal error.
inline void requireSignTexts(const FailureSite& site, const unsigned short* minusText, const unsigned short* plusText,
                             const char* failureText = "Null sign string pointer") {
  if (minusText == nullptr || plusText == nullptr) raiseInternalError(site, failureText);
}
// No digit of a text field carries the sign.
inline void requireSeparateSign(const FailureSite& site, ESign sign) {
  if (isIncluded(sign)) raiseInternalError(site, numbered("Sign type invalid for context: ", sign));
}

// What is left of a field without padding and sign. It lies in the field.
struct BareNumber {
  UnitView text;  // not empty
  bool negative;
};
// Finds the number as TrimData and CheckSign would, without their trace and without a copy. There is no result for a
// field that those would refuse, that has its pad as a byte of the code page, or in which nothing is left.
std::optional<BareNumber> bareNumber(const TextField& field);

}  // namespace oxr
