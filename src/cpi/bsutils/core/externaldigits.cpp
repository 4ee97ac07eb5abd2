// Reads an external decimal the way it is laid out: the bytes become units by the table of the code page, the sign goes
// first, an included one still as a byte, then the pads; digits must remain.
#include "core/externaldigits.hpp"

#include "core/decimaltext.hpp"

namespace oxr::core {

namespace {

constexpr unsigned short kZero = '0';

// Takes a separate sign off a text that is not empty; the result says whether it was negative. At the end a plus may
// precede the minus, and comes off as well: ExternalDecimal.Reads.
bool takeSign(UnitView& text, SignPlace place) {
  bool negative = false;
  if (place == SignPlace::leading) {
    negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
  }
  if (place == SignPlace::trailing) {
    negative = text.ends_with(u'-');
    if (negative) text.remove_suffix(1);
    if (text.ends_with(u'+')) text.remove_suffix(1);
  }
  return negative;
}

UnitView withoutPads(UnitView text, PadPlace place, unsigned short pad) {
  if (place == PadPlace::leading)
    while (!text.empty() && text.front() == pad)
      text.remove_prefix(1);
  if (place == PadPlace::trailing)
    while (!text.empty() && text.back() == pad)
      text.remove_suffix(1);
  return text;
}

// Without an early end, so that the loop becomes vector instructions.
bool areDigits(UnitView text) {
  bool all = true;
  for (const unsigned short unit : text)
    all &= isAsciiDigit(unit);
  return all;
}

}  // namespace

ExternalDigits readExternal(std::span<const unsigned char> field, const ExternalLayout& layout, ExternalUnits& units) {
  decodeSingleBytes(field, layout.page, units.data());
  UnitView text(units.data(), field.size());
  ExternalDigits number;
  if (isIncluded(layout.sign)) {
    const std::size_t position = isInFront(layout.sign) ? 0 : field.size() - 1;
    const SignByte read = readOverpunch(layout.code, field[position]);
    if (!read.valid) return {};
    units[position] = layout.page[read.digit];
    number.negative = read.negative;
  } else {
    number.negative = takeSign(text, layout.sign);
  }
  text = withoutPads(text, layout.pads, layout.pad);
  if (text.empty())
    number.digits = UnitView(&kZero, 1);
  else if (areDigits(text))
    number.digits = text;
  return number;
}

}  // namespace oxr::core
