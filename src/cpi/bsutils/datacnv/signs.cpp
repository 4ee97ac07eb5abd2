// The members for signs in texts. To the search for signs (core/signs.hpp) they add what each form of sign means: which
// end is looked at, the edit of the text in place, the canonical "-" and "+" of the library, and the refusal of a form
// that there is not. Signs in the bytes of external decimals are a matter of their own: core/externaloverpunch.hpp.

#include "core/signs.hpp"

#include "core/decimaltext.hpp"
#include "datacnv/signform.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr unsigned short kFold = 0x40;  // added to the character of a digit that carries a minus: "p" to "y"

// Where the digit is that carries the sign. REQUIRES: the text isn't empty.
unsigned signPosition(const KelWstring& text, ESign sign) {
  return sign == eSignLeadingIncluded ? 0 : text.length() - 1;
}
// A sign text or table that a caller leaves out has no characters.
UnitView orEmpty(const unsigned short* table) {
  return table == nullptr ? UnitView() : UnitView(table);
}

[[noreturn]] void raiseSignType(const FailureSite& site, ESign sign) {
  raiseInternalError(site, numbered("Invalid sign type: ", sign));
}

// Takes the fold off the digit that may carry a minus; the result says whether it did. Any unit but a digit counts as
// folded: whether a digit comes out is for later checks to see. An empty text carries no sign.
bool unfold(KelWstring& text, ESign sign) {
  if (text.length() == 0) return false;
  const unsigned position = signPosition(text, sign);
  if (core::isAsciiDigit(text[position])) return false;
  text.at(position) = static_cast<unsigned short>(text[position] - kFold);
  return true;
}

}  // namespace

bool DataCnv::CheckSign(KelWstring& text, ESign sign, const unsigned short* minus, const unsigned short* plus) {
  const FunctionTrace trace(this, "DataCnv::CheckSign", kDataCnvPath);
  if (!isKnownSign(sign)) raiseSignType(trace.site(), sign);
  if (sign == eSignNone) return false;
  if (isIncluded(sign)) return unfold(text, sign);
  const core::SignText minusText = core::signText(minus);
  const core::SignText plusText = core::signText(plus);
  if (sign == eSignLeadingSeparate) {
    const core::FoundSign found = core::leadingSign(text.view(), minusText, plusText);
    text.eraseInternal(0, found.units);
    return found.negative;
  }
  const core::FoundSign found = core::trailingSign(text.view(), minusText, plusText);
  text.eraseInternal(text.length() - found.units, found.units);
  return found.negative;
}

void DataCnv::ReplaceExponentialSign(KelWstring& text, const unsigned short* minus, const unsigned short* plus) {
  // Traced under a name that is not the member's: Signs.TracesUnderTheirNames.
  const FunctionTrace trace(this, "DataCnv::CheckExponentialSign", kDataCnvPath);
  const auto found = core::exponentSign(text.view(), core::signText(minus), core::signText(plus));
  if (!found) return;
  const KelWstring& canonical = found->negative ? US_MINUS : US_PLUS;
  text.replaceInternal(found->position, found->units, canonical.characters(), canonical.length(), 0);
}

void DataCnv::ExtDecAddSign(KelWstring& text, ESign sign, const unsigned short* positiveSignTable,
                            const unsigned short* negativeSignTable, bool& negative) {
  if (sign == eSignLeadingSeparate || sign == eSignTrailingSeparate) {
    const KelWstring& character = negative ? US_MINUS : US_PLUS;
    text.insertInternal(sign == eSignLeadingSeparate ? 0 : text.length(), character.characters(), 1, 0);
  }
  if (!isIncluded(sign) || text.length() == 0) return;
  const unsigned position = signPosition(text, sign);
  // Any character of the positive table is a digit here, one that carries a plus as well.
  const auto found = core::signedDigit(text[position], orEmpty(positiveSignTable), UnitView());
  if (!found) return;
  const UnitView table = orEmpty(negative ? negativeSignTable : positiveSignTable);
  // A table that is too short gives its terminator: Signs.TablesFoldTheSignIn.
  text.at(position) = found->digit < table.size() ? table[found->digit] : 0;
}

void DataCnv::ExtDecRemoveSign(KelWstring& text, ESign sign, const unsigned short* positiveSignTable,
                               const unsigned short* negativeSignTable, bool& negative) {
  const FunctionTrace trace(this, "DataCnv::ExtDecRemoveSign", kDataCnvPath);
  if (!isKnownSign(sign)) raiseSignType(trace.site(), sign);
  if (!isIncluded(sign)) {
    negative = CheckSign(text, sign, US_MINUS.characters(), US_PLUS.characters());
    return;
  }
  const auto found = text.length() == 0 ? std::nullopt
                                        : core::signedDigit(text[signPosition(text, sign)], orEmpty(positiveSignTable),
                                                            orEmpty(negativeSignTable));
  // The failure speaks of the sign type though a character is at fault: Signs.TablesFoldTheSignIn.
  if (!found) raiseSignType(trace.site(), sign);
  negative = found->negative;
  text.at(signPosition(text, sign)) = static_cast<unsigned short>('0' + found->digit);
}

// Of a minus text only the first unit counts, and the form of the sign not at all: Signs.MinusesAreSeenAndReplaced.
bool DataCnv::HasALeadingMinus(const KelWstring& text, ESign /*sign*/, const unsigned short* minus,
                               const unsigned short* /*plus*/) {
  return text.length() != 0 && minus != nullptr && text[0] == minus[0];
}

bool DataCnv::HasATrailingMinus(const KelWstring& text, ESign /*sign*/, const unsigned short* minus,
                                const unsigned short* /*plus*/) {
  return text.length() != 0 && minus != nullptr && text[text.length() - 1] == minus[0];
}

void DataCnv::SubstituteMinusSign(KelWstring& text, ESign sign, const unsigned short* signText, bool nothingToRemove) {
  const FunctionTrace trace(this, "DataCnv::SubstituteMinusSign", kDataCnvPath);
  const UnitView newSign = orEmpty(signText);
  if ((sign != eSignLeadingSeparate && sign != eSignTrailingSeparate) || newSign.empty()) return;
  // What a formatter wrote at the front is a "-"; whatever stands there goes, for nobody looks at it.
  if (!nothingToRemove) text.eraseInternal(0, US_MINUS.length());
  const unsigned position = sign == eSignLeadingSeparate ? 0 : text.length();
  text.insertInternal(position, newSign.data(), static_cast<unsigned>(newSign.size()), 0);
}
