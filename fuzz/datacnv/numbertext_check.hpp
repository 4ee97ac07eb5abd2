#pragma once

#include <unicode/decimfmt.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/textmodel.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"
#include "support/fastway.hpp"

// Numbers from text and as text: fields against a naive model that goes step by step on plain strings, plain texts
// against ICU, strtod and the standard library, and fast ways against general ones.
namespace oxr::fuzz {

namespace numbertext {

constexpr int kInternal = 5502, kInvalid = 5505, kOutOfBounds = 5506;
constexpr int kZeroLength = 5550, kForeignPoint = 5551, kNoIntegerDigit = 5552, kNoPoint = 5553, kEndsWithPoint = 5554,
              kExponential = 5555, kNotExponential = 5556, kPlaces = 5557, kHasPoint = 5558;

constexpr std::u16string_view kPoints[] = {u".", u",", u",", u"", u"::", u".,", u"e", u"5"};
constexpr std::u16string_view kSigns[] = {u"-", u"+", u"", u"CR", u"-", u"+", u"e", u"("};

struct Settings {
  bool isStrict, hasVirtualPoint, isLoose, padIsUnicode;
  int precision, sign, trim, justification;
  unsigned short pad;
  Text point, minus, plus;
};

inline bool isDigit(char16_t unit) {
  return u_isdigit(unit) != 0;
}

inline void modelTrim(Text& text, int trim, int justification, char16_t pad) {
  const bool front = trim == 1 || trim == 3 || (trim == 4 && justification == 2);
  const bool back = trim == 2 || trim == 3 || (trim == 4 && justification == 1);
  const auto goes = [&](char16_t unit) { return trim == 4 ? unit == pad : u_isWhitespace(unit) != 0; };
  while (front && !text.empty() && goes(text.front()))
    text.erase(0, 1);
  while (back && !text.empty() && goes(text.back()))
    text.pop_back();
}

inline bool modelSign(const Settings& s, Text& text) {
  if (s.sign < 0 || s.sign > 4) throw Refused{kInternal};
  if (s.sign == 3) {
    const bool negative = text.starts_with(s.minus);
    if (negative || text.starts_with(s.plus)) text.erase(0, (negative ? s.minus : s.plus).size());
    return negative;
  }
  const bool negative = s.sign == 4 && text.ends_with(s.minus);
  if (negative) text.resize(text.size() - s.minus.size());
  if (s.sign == 4 && text.ends_with(s.plus)) text.resize(text.size() - s.plus.size());
  return negative;
}

inline bool hasExponent(const Text& text) {
  return text.find_first_of(u"eE") != Text::npos;
}

// Under strict checking, with the point brought to ".", at `point` or the first one.
inline void modelForm(const Settings& s, const Text& text, std::size_t point, bool isDouble) {
  if (point == Text::npos) point = text.find(u'.');
  const bool hasPoint = point != Text::npos;
  if (hasPoint && s.hasVirtualPoint) throw Refused{kHasPoint};
  if (!s.hasVirtualPoint) {
    if (hasPoint && (point == 0 || !isDigit(text[point - 1]))) throw Refused{kNoIntegerDigit};
    const std::size_t places = hasPoint ? text.size() - point - 1 : 0;
    const bool digitBehind = hasPoint && places > 0 && isDigit(text[point + 1]);
    if (s.precision == -2 && !hasPoint) throw Refused{kNoPoint};
    if (s.precision <= 0 && s.precision != -2 && s.precision >= -3 && hasPoint && !digitBehind)
      throw Refused{kEndsWithPoint};
    if (s.precision == 0 && hasPoint) throw Refused{kPlaces};
    const bool isNumber = s.precision > 0 || s.precision < -3;
    if (isNumber && hasPoint && static_cast<int>(places) != s.precision) throw Refused{kPlaces};
    if (isNumber && !hasPoint) throw Refused{hasExponent(text) ? kExponential : kPlaces};
  }
  const bool isWanted = isDouble && s.precision == -3;
  if (hasExponent(text) && !isWanted) throw Refused{kExponential};
  if (!hasExponent(text) && isWanted) throw Refused{kNotExponential};
}

inline void modelExponentSign(const Settings& s, Text& text) {
  const std::size_t at = text.find_first_of(u"eE");
  if (at == Text::npos) return;
  for (const bool negative : {true, false}) {
    const Text& sign = negative ? s.minus : s.plus;
    if (text.compare(at + 1, sign.size(), sign) != 0) continue;
    if (!sign.empty()) text.replace(at + 1, sign.size(), negative ? u"-" : u"+");
    return;
  }
}

inline void modelValid(const Text& text, bool pointRequired) {
  std::size_t points = 0, exponents = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isExponent = text[i] == u'e' || text[i] == u'E';
    const bool isSign = (text[i] == u'+' || text[i] == u'-') && i > 0 && (text[i - 1] == u'e' || text[i - 1] == u'E');
    points += text[i] == u'.';
    exponents += isExponent;
    if (!isDigit(text[i]) && text[i] != u'.' && !isExponent && !isSign) throw Refused{kInvalid};
  }
  if (points > 1 || exponents > 1 || (pointRequired && points == 0)) throw Refused{kInvalid};
}

// Canonical text, for a double with its sign; empty for a double's field of padding.
inline Text modelNumber(const Settings& s, Text text, bool isDouble) {
  if (s.sign == 1 || s.sign == 2) throw Refused{kInternal};
  const bool hasUnits = !text.empty(), trimsLate = s.isStrict && isDigit(s.pad);
  if (!trimsLate) modelTrim(text, s.trim, s.justification, s.pad);
  if (text.empty() && (hasUnits || isDouble)) {
    if (s.isStrict) throw Refused{kZeroLength};
    if (isDouble) return text;
    text = u"0";
  }
  const bool negative = modelSign(s, text);
  if (s.isStrict && hasUnits && text.empty()) throw Refused{kNoIntegerDigit};
  const bool isForeign = !s.point.starts_with(u'.');
  if (s.isStrict && !s.hasVirtualPoint && !s.isLoose && isForeign && text.find(u'.') != Text::npos)
    throw Refused{s.precision == 0 ? kPlaces : kForeignPoint};
  const std::size_t point = isForeign ? text.find_first_of(s.point) : Text::npos;
  if (point != Text::npos) text.replace(point, s.point.size(), u".");
  if (s.isStrict) modelForm(s, text, point, isDouble);
  if (trimsLate) modelTrim(text, s.trim, s.justification, s.pad);
  if (!isDouble) modelTrim(text, 4, 2, u'0');
  if (!isDouble && !s.isStrict) modelTrim(text, 3, s.justification, u' ');
  if (hasUnits && text.empty()) text = u"0";
  if (isDouble) modelExponentSign(s, text);
  if (s.hasVirtualPoint && !text.empty()) modelShift(s.precision, text);
  modelValid(text, !s.hasVirtualPoint && s.precision == -2);
  if (!isDouble && !s.hasVirtualPoint && !text.empty()) {
    if (text.front() == u'.') text.insert(0, 1, u'0');
    if (text.back() == u'.') text.pop_back();
  }
  return negative ? u"-" + text : text;
}

inline std::int64_t modelInteger(const Settings& s, Text text) {
  if (s.sign == 1 || s.sign == 2) throw Refused{kInternal};
  modelTrim(text, s.trim, s.justification, s.pad);
  if (text.empty()) return 0;
  const bool negative = modelSign(s, text);
  if (!std::all_of(text.begin(), text.end(), isDigit)) throw Refused{kInvalid};
  const Text limit = negative ? u"9223372036854775808" : u"9223372036854775807";
  if (text.size() > limit.size() || (text.size() == limit.size() && text > limit)) throw Refused{kOutOfBounds};
  std::uint64_t sum = 0, place = 1;
  for (auto unit = text.rbegin(); unit != text.rend(); ++unit, place *= 10)
    sum += (*unit - std::uint64_t{'0'}) * place;
  return static_cast<std::int64_t>(negative ? 0 - sum : sum);
}

inline KelWstring host(const Text& text) {
  KelWstring result;
  unsigned short* const units = result.resizeForOverwrite(static_cast<unsigned>(text.size()));
  std::copy(text.begin(), text.end(), units);
  return result;
}

// The result, or the number of the failure.
template <class T>
struct Outcome {
  std::optional<T> value;
  int refused = 0;
  bool operator==(const Outcome&) const = default;
};
template <class F>
auto outcome(F call) -> Outcome<decltype(call())> {
  try {
    return {call(), 0};
  } catch (const Refused& failure) {
    return {{}, failure.number};
  } catch (const KelConversionException& e) {
    return {{}, e.oxrMessageNumber()};
  }
}
inline std::uint64_t bits(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

// Of text that std::from_chars and ICU see alike; any other is ICU's business.
inline std::uint64_t modelValue(DataCnv& converter, const Text& text) {
  if (text.empty()) return 0;
  std::string chars;
  for (const char16_t unit : text)
    chars += unit < 0x80 ? static_cast<char>(unit) : '?';
  double value = 0;
  const auto [end, error] = std::from_chars(chars.data(), chars.data() + chars.size(), value);
  const bool isPlain = error == std::errc() && end == chars.data() + chars.size() && value != 0;
  if (isPlain && chars.size() <= 40) return bits(value);
  const bool negative = text.starts_with(u'-');
  const double magnitude = converter.PWFStringTodouble(host(text.substr(negative)));
  return bits(negative ? -magnitude : magnitude);
}

// One converter for each kind, since a converter takes longer to make than to use. In Latin-1 a pad in the code page is
// its own unit.
inline DataCnv& converterFor(const Settings& s) {
  const auto make = [](bool isStrict, EMessageStandard standard) {
    return DataCnv(819, eEndianBig, eEndianBig, eFloatIeeeBig, 53, nullptr, false, nullptr, 0, true, 12, isStrict,
                   standard, nullptr);
  };
  static DataCnv converters[] = {make(false, eMessageStandardDefault), make(false, eMessageStandardLooseDecimal),
                                 make(true, eMessageStandardDefault), make(true, eMessageStandardLooseDecimal)};
  converters[0].getDecimalFormatter();  // doubles go the fast way once the process has one
  return converters[2 * s.isStrict + s.isLoose];
}
inline DataCnv& plainConverter() {
  return converterFor(Settings{});
}

// Requires that `read` takes the fast way, where `must` says so.
template <class Read>
auto readFast(bool must, Read read) {
  const std::uint64_t before = generalWaysTaken();
  auto result = read();
  require(!must || generalWaysTaken() == before, "a fast way was not taken");
  return result;
}

// Mostly a number with all its parts, each of them perhaps missing, and now and then a unit that is out of place.
inline Text fieldText(Choices& choices, const Settings& s) {
  constexpr std::u16string_view kUnits = u"0123456789.,+-eE *CR/:(\u0663\uFF11\u2003x";
  const auto digits = [&](std::size_t most) {
    Text text;
    for (std::size_t count = choices.upTo(most); count != 0; --count)
      text += static_cast<char16_t>(u'0' + choices.upTo(9));
    return text;
  };
  const Text pads(choices.coin() ? choices.upTo(3) : 0, static_cast<char16_t>(s.pad));
  const std::size_t form = choices.upTo(7);
  Text text = form & 1 ? Text(choices.oneOf(kSigns)) : Text();
  text += digits(form == 6 ? 21 : 9);
  if (form & 2) text += s.point + digits(5);
  if (form == 7) text += choices.coin() ? u"e" + (choices.coin() ? s.minus : s.plus) + digits(3) : u"E2";
  if (s.sign == 4) text += choices.coin() ? s.minus : s.plus;
  text = choices.coin() ? pads + text : text + pads;
  for (std::size_t faults = choices.upTo(15) / 12; faults != 0; --faults)
    text.insert(choices.upTo(text.size()), 1, choices.oneOf(kUnits));
  return text;
}

inline Settings anySettings(Choices& choices) {
  Settings s{};
  s.isStrict = choices.coin();
  s.hasVirtualPoint = choices.upTo(3) == 0;
  s.isLoose = choices.upTo(3) == 0;
  s.padIsUnicode = choices.coin();
  s.precision = choices.between(-5, 10);
  s.sign = choices.oneOf(std::to_array({0, 3, 3, 3, 4, 4, 1, 2, 5, -1}));
  s.trim = choices.between(0, 5);
  s.justification = choices.between(0, 3);
  s.pad = std::u16string_view(u"0* \u0663")[choices.upTo(s.padIsUnicode ? 3 : 2)];
  s.point = choices.oneOf(kPoints);
  s.minus = choices.oneOf(kSigns);
  s.plus = choices.oneOf(kSigns);
  return s;
}

// A text that is hard to read as a double: of any bits, between two doubles, at the ends of the range, an integer near
// a power of two, digits and a point anywhere; now and then with a unit that doesn't belong there.
inline std::string hardText(Choices& choices) {
  const auto digits = [&](std::size_t most, std::size_t least) {
    std::string text;
    for (std::size_t count = least + choices.upTo(most - least); count != 0; --count)
      text += choices.oneOf(std::string_view("0123456789009900"));
    return text;
  };
  const auto printed = [](long double value, std::chars_format format, int places) {
    char text[1200];
    return std::string(text, std::to_chars(text, std::end(text), value, format, places).ptr);
  };
  auto value = std::bit_cast<double>(choices.any<std::uint64_t>() >> (choices.upTo(3) == 0 ? 12 : 0));
  if (!std::isfinite(value)) value = std::ldexp(1, choices.between(0, 1023));
  const auto some = std::ldexp(static_cast<double>(1 + (choices.any<std::uint64_t>() >> 12)), choices.between(-52, 27));
  const auto between = (static_cast<long double>(some) + std::nextafter(some, 0)) / 2;
  std::string text;
  switch (choices.upTo(7)) {
    case 0:
      text = printed(value, std::chars_format::scientific, choices.between(14, 18));
      break;
    case 1:
      text = printed(between, std::chars_format::fixed, choices.between(0, 39));
      break;
    case 2:
      text = std::to_string((std::uint64_t{1} << choices.upTo(63)) + choices.upTo(4) - 2);
      break;
    case 3:
      text = digits(17, 1) + "e" + std::to_string(choices.between(-350, 349));
      break;
    case 4:
      text = "-" + digits(19, 0) + "." + digits(19, 0);
      break;
    default:
      text = digits(12, 1) + "." + digits(7, 0);
  }
  constexpr std::string_view kUnits = "0123456789+-.,eE x/:";
  if (choices.upTo(7) == 0) text[choices.upTo(text.size() - 1)] = choices.oneOf(kUnits);
  if (choices.upTo(7) == 0) text.insert(choices.upTo(text.size()), 1, choices.oneOf(kUnits));
  return text;
}

// What ICU's formatter makes of a text, and strtod, and arithmetic step by step.
inline std::uint64_t modelCanonical(DataCnv& converter, const std::string& text) {
  icu::UnicodeString units = icu::UnicodeString::fromUTF8(text);
  units.findAndReplace(icu::UnicodeString(u"e"), icu::UnicodeString(u"E"));
  icu::Formattable number;
  UErrorCode status = U_ZERO_ERROR;
  static_cast<const icu::NumberFormat*>(converter.getDecimalFormatter())->parse(units, number, status);
  if (U_FAILURE(status)) return text.starts_with('.') ? bits(0) : throw Refused{kInvalid};
  return bits(number.getDouble(status));
}
inline std::uint64_t modelSystem(const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size() ? bits(value) : throw Refused{kInvalid};
}
inline std::int64_t modelPlainInteger(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  __extension__ __int128 value = 0;
  for (const char unit : text) {
    if (unit < '0' || unit > '9') throw Refused{kInvalid};
    value = value * 10 + (unit - '0');
    if (value > std::numeric_limits<std::int64_t>::max() + static_cast<decltype(value)>(negative))
      throw Refused{kOutOfBounds};
  }
  return static_cast<std::int64_t>(negative ? -value : value);
}

// The formatter set up for one of the notations of doubles.
class Formatter {
 public:
  Formatter(DataCnv& converter, bool exponential) : format_(converter.getDecimalFormatter()->clone()) {
    format_->setMinimumIntegerDigits(1);
    format_->setScientificNotation(exponential);
    format_->setMaximumIntegerDigits(exponential ? 1 : 9999);
    if (exponential) format_->setExponentSignAlwaysShown(true);
    format_->setMaximumFractionDigits(999);
  }
  std::string text(double value) const {
    icu::UnicodeString text;
    icu::FieldPosition position;
    format_->format(value, text, position);
    std::string utf8;
    return text.toUTF8String(utf8);
  }

 private:
  std::unique_ptr<icu::DecimalFormat> format_;
};

// Of any bits, at a power of two or of ten or beside it, a whole number, or one with places.
inline double anyDouble(Choices& choices) {
  const auto word = choices.any<std::uint64_t>();
  const auto whole = static_cast<double>(static_cast<std::int64_t>(word) >> (word & 63));
  double value = std::bit_cast<double>(word);
  switch (choices.upTo(5)) {
    case 0:
      value = std::ldexp(1.0, choices.between(-1074, 1023));
      break;
    case 1:
      value = std::strtod(("1e" + std::to_string(choices.between(-323, 308))).c_str(), nullptr);
      break;
    case 2:
      value = whole * std::pow(10.0, choices.between(-20, 19));
      break;
    case 3:
      value = whole / std::pow(10.0, choices.between(0, 9));
      break;
    case 4:
      value = choices.oneOf(std::to_array({0.0, HUGE_VAL, std::numeric_limits<double>::quiet_NaN()}));
      break;
    default:
      break;
  }
  const double to = choices.oneOf(std::to_array({0.0, HUGE_VAL, value}));
  return std::copysign(std::nextafter(value, to), choices.coin() ? -1.0 : 1.0);
}

inline std::string digitsAndPoints(Choices& choices, std::string_view units) {
  std::string text;
  for (std::size_t count = choices.upTo(24); count != 0; --count)
    text += choices.oneOf(units);
  return text;
}

}  // namespace numbertext

// Fields of numbers in any text and with any settings, as integers, decimals and doubles.
inline void checkNumberField(Choices& choices) {
  using namespace numbertext;
  const Settings s = anySettings(choices);
  const Text text = fieldText(choices, s);
  DataCnv& converter = numbertext::converterFor(s);
  const KelWstring field = host(text), point = host(s.point), minus = host(s.minus), plus = host(s.plus);
  const int length = static_cast<int>(text.size());
  const auto with = [&](auto member, auto... places) {
    return member(field.characters(), length, places..., static_cast<ESign>(s.sign), minus.characters(),
                  plus.characters(), static_cast<ETrimType>(s.trim), static_cast<EJustification>(s.justification),
                  s.pad, s.padIsUnicode);
  };
  const auto withPlaces = [&](auto member) { return with(member, s.hasVirtualPoint, s.precision, point.characters()); };
  const auto isPlain = [](char16_t unit) { return unit > u'0' && unit <= u'9'; };
  const bool isPlainInteger = !text.empty() && text.size() < 19 && s.padIsUnicode && (s.sign == 0 || s.sign >= 3) &&
                              s.sign <= 4 && std::all_of(text.begin(), text.end(), isPlain);
  const bool isPlainDouble =
      isPlainInteger && text.size() < 16 && !s.isStrict && !s.hasVirtualPoint && s.precision != -2 && s.point == u",";
  require(outcome([&] { return modelInteger(s, text); }) == outcome([&] {
            return readFast(isPlainInteger,
                            [&] { return with([&](auto... a) { return converter.StrToInt64(a...); }); });
          }),
          "StrToInt64");
  require(outcome([&] { return modelNumber(s, text, false); }) == outcome([&] {
            const KelWstring decimal = withPlaces([&](auto... a) { return converter.StrToDecimal(a...); });
            return Text(decimal.view().begin(), decimal.view().end());
          }),
          "StrToDecimal");
  require(outcome([&] { return modelValue(converter, modelNumber(s, text, true)); }) == outcome([&] {
            return readFast(isPlainDouble,
                            [&] { return bits(withPlaces([&](auto... a) { return converter.StrToDbl(a...); })); });
          }),
          "StrToDbl");
}

// Plain texts as numbers. ICU and strtod get every text; the library, only those that it does not read itself.
inline void checkNumberRead(Choices& choices) {
  using namespace numbertext;
  const std::string chars = hardText(choices);
  const KelWstring text = fromUtf8(chars);
  DataCnv& converter = numbertext::plainConverter();
  const auto digits = static_cast<std::size_t>(
      std::count_if(chars.begin(), chars.end(), [](char unit) { return unit >= '0' && unit <= '9'; }));
  const bool isShort = digits > 0 && digits < 16 && chars.find_first_not_of("0123456789.") == chars.npos &&
                       std::count(chars.begin(), chars.end(), '.') < 2;
  require(outcome([&] { return modelCanonical(converter, chars); }) ==
              outcome([&] { return readFast(isShort, [&] { return bits(converter.PWFStringTodouble(text)); }); }),
          "PWFStringTodouble of " + chars);
  require(outcome([&] { return modelSystem(chars); }) == outcome([&] {
            return readFast(
                isShort, [&] { return bits(converter.StrToDbl(text.characters(), static_cast<int>(text.length()))); });
          }),
          "StrToDbl of " + chars);
  require(outcome([&] { return modelPlainInteger(chars); }) ==
              outcome([&] { return static_cast<std::int64_t>(converter.UStringToInt64(text)); }),
          "UStringToInt64 of " + chars);
}

// Numbers as plain texts, and back.
inline void checkNumberWrite(Choices& choices) {
  using namespace numbertext;
  DataCnv& converter = numbertext::plainConverter();
  static const Formatter formatters[] = {Formatter(converter, false), Formatter(converter, true)};
  KelBufferedWstring<16u> text;
  const double value = anyDouble(choices);
  for (const bool exponential : {false, true}) {
    converter.doubleToUString(value, text, exponential);
    requireEqual(toUtf8(text), formatters[exponential].text(value), "doubleToUString");
  }
  requireEqual(toUtf8(converter.StrFromDbl(value).getPWFStringValue()), toUtf8(text), "StrFromDbl");
  if (std::isfinite(value)) requireEqual(converter.PWFStringTodouble(text), value, "read back");

  const std::int64_t integer = choices.any<std::int64_t>() >> choices.upTo(63);
  converter.Int64ToUString(integer, text);
  requireEqual(toUtf8(text), std::to_string(integer), "Int64ToUString");
  requireEqual(toUtf8(converter.StrFromInt64(integer).getPWFStringValue()), toUtf8(text), "StrFromInt64");
  requireEqual(converter.UStringToInt64(text), integer, "read back");
}

// Decimal texts: the point moved against the model, and the plain form against the field form that it stands for.
inline void checkDecimalText(Choices& choices) {
  using namespace numbertext;
  DataCnv& converter = numbertext::plainConverter();
  const std::string chars = digitsAndPoints(choices, choices.coin() ? "0123456789." : "0123456789");
  const int places = choices.between(-30, 30);
  Text model(chars.begin(), chars.end());
  if (!model.empty()) modelShift(places, model);
  KelWstring text = fromUtf8(chars);
  converter.adjustDecimalForString(text, places);
  require(text.view() == host(model).view(), "adjustDecimalForString of " + chars + " by " + std::to_string(places));

  const KelWstring decimal = fromUtf8(choices.oneOf(kSigns) == u"-" ? "-" + digitsAndPoints(choices, "0007.,5")
                                                                    : digitsAndPoints(choices, "00000070.5+-"));
  const auto field = outcome([&] {
    KelWstring out;
    int length = 100;
    converter.StrFromDec(decimal.characters(), out, length, false, -1, DataCnv::US_DECIMAL.characters(),
                         eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), false,
                         eJustifyLeft, '0', true, false);
    return toUtf8(out);
  });
  const auto plain = outcome([&] {
    return readFast(field.refused == 0,
                    [&] { return toUtf8(converter.StrFromDec(decimal.characters()).getPWFStringValue()); });
  });
  require(plain == field, "StrFromDec of " + toUtf8(decimal));
}

}  // namespace oxr::fuzz
