#include "core/signs.hpp"

namespace oxr::core {

namespace {

std::uint32_t lengthOf(const SignText& sign) {
  return static_cast<std::uint32_t>(sign->size());
}
bool startsWith(UnitView text, const SignText& sign) {
  return sign && text.starts_with(*sign);
}
bool endsWith(UnitView text, const SignText& sign) {
  return sign && text.ends_with(*sign);
}

}  // namespace

FoundSign leadingSign(UnitView text, SignText minus, SignText plus) {
  if (startsWith(text, minus)) return {true, lengthOf(minus)};
  if (startsWith(text, plus)) return {false, lengthOf(plus)};
  return {};
}

FoundSign trailingSign(UnitView text, SignText minus, SignText plus) {
  FoundSign found;
  if (endsWith(text, minus)) {
    found = {true, lengthOf(minus)};
    text.remove_suffix(found.units);
  }
  if (endsWith(text, plus)) found.units += lengthOf(plus);
  return found;
}

std::optional<ExponentSign> exponentSign(UnitView text, SignText minus, SignText plus) {
  constexpr unsigned short kLetters[] = {'e', 'E'};
  const std::size_t letter = text.find_first_of(UnitView(kLetters, 2));
  if (letter == UnitView::npos) return {};
  const auto position = static_cast<std::uint32_t>(letter + 1);
  const UnitView rest = text.substr(position);
  // Nothing follows a letter that is the last unit: only an empty text matches there.
  for (const bool negative : {true, false}) {
    const SignText& sign = negative ? minus : plus;
    if (!startsWith(rest, sign)) continue;
    if (sign->empty()) return {};
    return ExponentSign{negative, position, lengthOf(sign)};
  }
  return {};
}

std::optional<SignedDigit> signedDigit(unsigned short unit, UnitView positive, UnitView negative) {
  std::size_t index = positive.find(unit);
  const bool isNegative = index == UnitView::npos;
  if (isNegative) index = negative.find(unit);
  if (index == UnitView::npos) return {};
  return SignedDigit{isNegative, static_cast<unsigned>(index % 10)};
}

}  // namespace oxr::core
