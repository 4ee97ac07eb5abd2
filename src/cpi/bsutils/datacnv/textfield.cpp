// The look at a field that the fast ways begin with: the same steps as the general ways, on a view of the field.

#include "datacnv/textfield.hpp"

#include "core/padding.hpp"
#include "core/signs.hpp"

namespace oxr {

namespace {

// The field without what its trim type takes off, as TrimData would leave it. An unknown type takes nothing off.
UnitView trimmed(UnitView text, const TextField& field) {
  switch (field.trim) {
    case eTrimSpaceLeading:
      return text.substr(core::leadingSpaces(text));
    case eTrimSpaceTrailing:
      return text.substr(0, text.size() - core::trailingSpaces(text));
    case eTrimSpaceBoth:
      text.remove_prefix(core::leadingSpaces(text));
      return text.substr(0, text.size() - core::trailingSpaces(text));
    case eTrimPadding:
      if (field.justification == eJustifyRight) return text.substr(core::leadingPads(text, field.padChar));
      if (field.justification == eJustifyLeft)
        return text.substr(0, text.size() - core::trailingPads(text, field.padChar));
      return text;
    default:
      return text;
  }
}

}  // namespace

std::optional<BareNumber> bareNumber(const TextField& field) {
  if (field.text == nullptr || field.length <= 0 || field.minusText == nullptr || field.plusText == nullptr) return {};
  if (!field.padCharIsUnicode) return {};
  UnitView text = trimmed(field.view(), field);
  // Padding alone is zero or a failure, which the general ways decide.
  if (text.empty()) return {};
  core::FoundSign sign;
  if (field.sign == eSignLeadingSeparate) {
    sign = core::leadingSign(text, field.minusText, field.plusText);
    text.remove_prefix(sign.units);
  } else if (field.sign == eSignTrailingSeparate) {
    sign = core::trailingSign(text, field.minusText, field.plusText);
    text.remove_suffix(sign.units);
  } else if (field.sign != eSignNone) {  // an included sign, or none of the five forms
    return {};
  }
  if (text.empty()) return {};
  return BareNumber{text, sign.negative};
}

}  // namespace oxr
