#include "records/fields/numbers.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

namespace oxr::rec {

namespace {

__extension__ using Wide = unsigned __int128;

std::string decimalDigits(Wide value) {
  std::string digits;
  do
    digits += static_cast<char>('0' + static_cast<int>(value % 10));
  while ((value /= 10) != 0);
  std::reverse(digits.begin(), digits.end());
  return digits;
}

// What stands in an edited picture beside digits, point and sign.
bool isFilling(unsigned short unit) {
  constexpr unsigned short kFilling[] = {' ', '*', ',', '/', '+', '$', 0xA3, 0xA4, 0xA5, 0x20AC};
  return std::find(std::begin(kFilling), std::end(kFilling), unit) != std::end(kFilling);
}

// The units of a sign at the start of the text, 0 if there is none.
std::size_t minusAt(UnitView text) {
  if (text[0] == '-') return 1;
  const bool isCredit = text.size() > 1 && text[0] == 'C' && text[1] == 'R';
  const bool isDebit = text.size() > 1 && text[0] == 'D' && text[1] == 'B';
  return isCredit || isDebit ? 2 : 0;
}

}  // namespace

WideInteger readWideInteger(std::span<const unsigned char> bytes, EEndian endian, bool isSigned) {
  const std::size_t size = bytes.size();
  const auto at = [&](std::size_t i) { return endian == eEndianLittle ? bytes[size - 1 - i] : bytes[i]; };
  WideInteger result;
  result.isNegative = isSigned && at(0) >= 0x80;
  Wide value = result.isNegative ? ~Wide{0} : Wide{0};
  for (std::size_t i = 0; i < size; ++i)
    value = value << 8 | at(i);
  result.digits = decimalDigits(result.isNegative ? Wide{0} - value : value);
  return result;
}

std::optional<EditedNumber> readEditedNumber(UnitView text, std::size_t* badAt) {
  EditedNumber number;
  bool hasSign = false;
  const std::size_t size = text.size();
  while (!text.empty()) {
    const unsigned short unit = text[0];
    std::size_t taken = 1;
    if (unit >= '0' && unit <= '9') {
      number.digits += static_cast<char>(unit);
      if (number.places) ++*number.places;
    } else if (unit == '.' && !number.places) {
      number.places = 0;
    } else if (!isFilling(unit)) {
      taken = minusAt(text);
      if (taken == 0 || hasSign) {
        if (badAt != nullptr) *badAt = size - text.size();
        return std::nullopt;
      }
      hasSign = number.isNegative = true;
    }
    text.remove_prefix(taken);
  }
  if (number.digits.empty()) return std::nullopt;
  return number;
}

double withDigitsOfFloat(double value) {
  // Beyond a float's range the cast has no meaning.
  if (!(value >= -std::numeric_limits<float>::max() && value <= std::numeric_limits<float>::max())) return value;
  const auto narrow = static_cast<float>(value);
  if (static_cast<double>(narrow) < value || static_cast<double>(narrow) > value) return value;
  char digits[32];
  const char* const end = std::to_chars(digits, digits + sizeof digits, narrow).ptr;
  double shown = value;
  std::from_chars(digits, end, shown);
  return shown;
}

}  // namespace oxr::rec
