#include "records/fields/editedpicture.hpp"

#include <algorithm>
#include <cstdlib>

// Characters come one after the other, as the symbols do. Until a digit is shown, or the point is passed, zeros and
// what stands between them are suppressed: they show the fill. A floating symbol waits until then, and takes the place
// before what is shown first.

namespace oxr::rec {

namespace {

constexpr std::string_view kFloatable = "+-$";

char upperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

// A comma for a point, and a point for a comma.
template <class Unit>
Unit exchanged(Unit unit) {
  return unit == ',' ? Unit{'.'} : unit == '.' ? Unit{','} : unit;
}

bool isZero(std::string_view digits) {
  return digits.find_first_not_of('0') == std::string_view::npos;
}

}  // namespace

bool EditedPicture::isNumber(std::string_view picture) {
  return picture.find_first_of("XxAa") == std::string_view::npos;
}

EditedPicture::EditedPicture(std::string_view picture, const Clauses& clauses) : clauses_(clauses) {
  for (std::size_t at = 0; at < picture.size();) {
    const char given = upperCase(picture[at++]);
    const char symbol = clauses.hasDecimalComma ? exchanged(given) : given;
    if (symbol == 'C' || symbol == 'D') ++at;
    std::size_t times = 1;
    if (at < picture.size() && picture[at] == '(') {
      times = std::strtoul(picture.data() + at + 1, nullptr, 10);
      at = std::min(picture.find(')', at), picture.size() - 1) + 1;
    }
    add(symbol, times);
  }
  count();
}

// V and P have no characters of their own: they say where the point is.
void EditedPicture::add(char symbol, std::size_t count) {
  switch (symbol) {
    case 'S':
      isSigned_ = true;
      return;
    case 'V':
      pointAt_ = symbols_.size();
      return;
    case 'P':
      scale_ += static_cast<int>(count) * (symbols_.find_first_of("9Z*") == std::string::npos ? 1 : -1);
      if (scale_ > 0 && pointAt_ == std::string::npos) pointAt_ = symbols_.size();
      return;
    case 'C':
      symbols_ += "cr";
      return;
    case 'D':
      symbols_ += "db";
      return;
    default:
      symbols_.append(count, symbol);
  }
}

void EditedPicture::count() {
  for (const char symbol : kFloatable)
    if (std::count(symbols_.begin(), symbols_.end(), symbol) > 1) floating_ = symbol;
  const std::size_t point = std::min(symbols_.find('.'), pointAt_);
  bool isFloating = false;
  for (std::size_t i = 0; i < symbols_.size(); ++i) {
    const char symbol = symbols_[i];
    isSigned_ |= std::string_view("+-cd").find(symbol) != std::string_view::npos;
    hasNine_ |= symbol == '9';
    if (symbol == '*') fill_ = '*';
    const bool isDigit = symbol == '9' || symbol == 'Z' || symbol == '*' || (symbol == floating_ && isFloating);
    isFloating |= symbol == floating_;
    digits_ += isDigit ? 1 : 0;
    scale_ += isDigit && i >= point ? 1 : 0;
  }
}

namespace {

char shownAs(char symbol, bool isNegative, char plus) {
  switch (symbol) {
    case '+':
      return isNegative ? '-' : '+';
    case '-':
      return isNegative ? '-' : plus;
    case 'B':
      return ' ';
    case 'c':
    case 'r':
    case 'd':
    case 'b':
      return isNegative ? upperCase(symbol) : ' ';
    default:
      return symbol;
  }
}

}  // namespace

// What a zero is shown as if all digits may be suppressed.
std::string EditedPicture::zero() const {
  std::string text(symbols_.size(), fill_);
  if (const std::size_t point = symbols_.find('.'); fill_ == '*' && point != std::string::npos) text[point] = '.';
  return text;
}

std::string EditedPicture::edit(std::string_view digits, bool isNegative, char plus) const {
  std::string text = editWithPoint(digits, isNegative, plus);
  if (clauses_.hasDecimalComma) std::transform(text.begin(), text.end(), text.begin(), exchanged<char>);
  return text;
}

std::string EditedPicture::editWithPoint(std::string_view digits, bool isNegative, char plus) const {
  if (isZero(digits) && clauses_.isBlankWhenZero) return std::string(symbols_.size(), ' ');
  if (isZero(digits) && !hasNine_) return zero();
  std::string text(symbols_.size(), fill_);
  bool isShown = false;        // nothing is suppressed any more
  bool isSuppressing = false;  // the first symbol that may be suppressed is passed
  bool isFloating = false;
  const auto show = [&](std::size_t at) {
    if (!isShown && isFloating) text[at - 1] = shownAs(floating_, isNegative, plus);
    isShown = true;
  };
  for (std::size_t i = 0; i < symbols_.size(); ++i) {
    const char symbol = symbols_[i];
    if (i == pointAt_ || symbol == '.') show(i);
    if (symbol == '9' || symbol == 'Z' || symbol == '*' || (symbol == floating_ && isFloating)) {
      const char digit = digits.front();
      digits.remove_prefix(1);
      if (symbol == '9' || digit != '0') show(i);
      if (isShown) text[i] = digit;
      isSuppressing = true;
    } else if (symbol == floating_) {
      isFloating = isSuppressing = true;
    } else if (isShown || !isSuppressing) {
      text[i] = shownAs(symbol, isNegative, plus);
    }
  }
  return text;
}

// Whether a symbol may show a unit. Suppressed digits come before all others, and with them what stands between digits.
bool EditedPicture::mayShow(std::size_t at, unsigned short unit, bool isDigitShown) const {
  constexpr std::string_view kCurrencies = "$\xA3\xA4\xA5";
  const char symbol = symbols_[at];
  const auto isOne = [unit](std::string_view units) {
    return unit < 0x100 && units.find(static_cast<char>(unit)) != std::string_view::npos;
  };
  const auto isOf = [&](char sign) {
    if (sign == '$') return isOne(kCurrencies) || unit == 0x20AC || unit == ' ';
    return sign != 0 && isOne("+- ");
  };
  const bool isDigit = unit >= '0' && unit <= '9';
  const bool isFill = !isDigitShown && (unit == static_cast<unsigned char>(fill_) || isOf(floating_));
  switch (symbol) {
    case '9':
      return isDigit;
    case 'Z':
    case '*':
      return isDigit || isFill;
    case '+':
    case '-':
    case '$':
      return symbol == floating_ ? isDigit || isFill : isOf(symbol) || isFill;
    case 'c':
    case 'r':
    case 'd':
    case 'b':
      return unit == ' ' || unit == static_cast<unsigned char>(upperCase(symbol));
    default:
      return unit == static_cast<unsigned char>(symbol == 'B' ? ' ' : symbol) || isFill;
  }
}

std::optional<EditedNumber> EditedPicture::read(UnitView given, std::size_t* badAt) const {
  std::basic_string<unsigned short> text(given);
  if (clauses_.hasDecimalComma) std::transform(text.begin(), text.end(), text.begin(), exchanged<unsigned short>);
  const std::string none = hasNine_ ? std::string() : zero();
  const bool isBlank = std::all_of(text.begin(), text.end(), [](auto unit) { return unit == ' '; });
  if (isBlank ? showsZeroAsBlanks() : std::equal(text.begin(), text.end(), none.begin(), none.end()))
    return EditedNumber{false, "0", std::nullopt};
  std::basic_string<unsigned short> shown = text;
  shown.resize(std::max(shown.size(), symbols_.size()), ' ');
  const bool hasDigit = std::any_of(text.begin(), text.end(), [](auto unit) { return unit >= '0' && unit <= '9'; });
  bool isDigitShown = false;
  for (std::size_t at = 0; at < shown.size(); ++at) {
    if (at >= symbols_.size() || !mayShow(at, shown[at], isDigitShown)) {
      if (badAt != nullptr) *badAt = shown[at] == ' ' && !hasDigit ? std::string::npos : at;
      return std::nullopt;
    }
    if (symbols_[at] == '0')
      shown[at] = ' ';
    else
      isDigitShown |= shown[at] >= '0' && shown[at] <= '9';
  }
  return readEditedNumber(shown, badAt);
}

}  // namespace oxr::rec
