// Fields of numbers in any text and with any settings, as integers, decimals and doubles, against a naive model that
// goes step by step on plain strings; and any text as a plain number.

#include <unicode/uchar.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "dataconv.hpp"
#include "fuzz/harness/textmodel.hpp"
#include "kelexception.hpp"

using namespace oxr::fuzz;

namespace {

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

bool isDigit(char16_t unit) {
  return u_isdigit(unit) != 0;
}

void modelTrim(Text& text, int trim, int justification, char16_t pad) {
  const bool front = trim == 1 || trim == 3 || (trim == 4 && justification == 2);
  const bool behind = trim == 2 || trim == 3 || (trim == 4 && justification == 1);
  const auto goes = [&](char16_t unit) { return trim == 4 ? unit == pad : u_isWhitespace(unit) != 0; };
  while (front && !text.empty() && goes(text.front()))
    text.erase(0, 1);
  while (behind && !text.empty() && goes(text.back()))
    text.pop_back();
}

bool modelSign(const Settings& s, Text& text) {
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

bool hasExponent(const Text& text) {
  return text.find_first_of(u"eE") != Text::npos;
}

// Under strict checking, with the point brought to ".", at `point` or the first one.
void modelForm(const Settings& s, const Text& text, std::size_t point, bool isDouble) {
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

void modelExponentSign(const Settings& s, Text& text) {
  const std::size_t at = text.find_first_of(u"eE");
  if (at == Text::npos) return;
  for (const bool negative : {true, false}) {
    const Text& sign = negative ? s.minus : s.plus;
    if (text.compare(at + 1, sign.size(), sign) != 0) continue;
    if (!sign.empty()) text.replace(at + 1, sign.size(), negative ? u"-" : u"+");
    return;
  }
}

void modelValid(const Text& text, bool pointRequired) {
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
Text modelNumber(const Settings& s, Text text, bool isDouble) {
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

std::int64_t modelInteger(const Settings& s, Text text) {
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

KelWstring host(const Text& text) {
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
std::uint64_t bits(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

// Of text that std::from_chars and ICU see alike; any other is ICU's business.
std::uint64_t modelValue(DataCnv& converter, const Text& text) {
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

void compare(DataCnv& converter, const Settings& s, const Text& text) {
  const KelWstring field = host(text), point = host(s.point), minus = host(s.minus), plus = host(s.plus);
  const int length = static_cast<int>(text.size());
  const auto sign = static_cast<ESign>(s.sign);
  const auto trim = static_cast<ETrimType>(s.trim);
  const auto justification = static_cast<EJustification>(s.justification);
  require(outcome([&] { return modelInteger(s, text); }) == outcome([&] {
            return converter.StrToInt64(field.characters(), length, sign, minus.characters(), plus.characters(), trim,
                                        justification, s.pad, s.padIsUnicode);
          }));
  require(outcome([&] { return modelNumber(s, text, false); }) == outcome([&] {
            const KelWstring decimal = converter.StrToDecimal(
                field.characters(), length, s.hasVirtualPoint, s.precision, point.characters(), sign,
                minus.characters(), plus.characters(), trim, justification, s.pad, s.padIsUnicode);
            return Text(decimal.view().begin(), decimal.view().end());
          }));
  require(outcome([&] { return modelValue(converter, modelNumber(s, text, true)); }) == outcome([&] {
            return bits(converter.StrToDbl(field.characters(), length, s.hasVirtualPoint, s.precision,
                                           point.characters(), sign, minus.characters(), plus.characters(), trim,
                                           justification, s.pad, s.padIsUnicode));
          }));
  for (const auto plain : {0, 1, 2})
    outcome([&] {
      return plain == 0   ? converter.PWFStringTodouble(field)
             : plain == 1 ? converter.StrToDbl(field.characters(), length)
                          : static_cast<double>(converter.UStringToInt64(field));
    });
}

// One for each kind, since a converter takes longer to make than to use. In Latin-1 a pad in the code page is its own
// unit.
DataCnv& converterFor(const Settings& s) {
  const auto make = [](bool isStrict, EMessageStandard standard) {
    return DataCnv(819, eEndianBig, eEndianBig, eFloatIeeeBig, 53, nullptr, false, nullptr, 0, true, 12, isStrict,
                   standard, nullptr);
  };
  static DataCnv converters[] = {make(false, eMessageStandardDefault), make(false, eMessageStandardLooseDecimal),
                                 make(true, eMessageStandardDefault), make(true, eMessageStandardLooseDecimal)};
  return converters[2 * s.isStrict + s.isLoose];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 6) return 0;
  const Settings s{.isStrict = (data[0] & 1) != 0,
                   .hasVirtualPoint = (data[0] & 6) == 6,
                   .isLoose = (data[0] & 24) == 24,
                   .padIsUnicode = (data[0] & 32) != 0,
                   .precision = data[1] % 16 - 5,
                   .sign = data[2] % 8 == 7 ? -1 : data[2] % 8,
                   .trim = data[2] / 8 % 6,
                   .justification = data[2] / 64 % 4,
                   .pad = std::u16string_view(u"0* \u0663")[data[0] / 64 % (data[0] & 32 ? 4 : 3)],
                   .point = Text(kPoints[data[3] % 8]),
                   .minus = Text(kSigns[data[3] / 8 % 8]),
                   .plus = Text(kSigns[data[4] % 8])};
  // Mostly what numbers are made of.
  constexpr std::u16string_view kUnits = u"0123456789.,+-eE *CR:(0123456789";
  Text text;
  for (const std::uint8_t byte : std::basic_string_view(data + 5, size - 5))
    text +=
        byte < 128 ? kUnits[byte % kUnits.size()] : static_cast<char16_t>(byte < 250 ? byte % 64 + 0x20 : byte + 0x569);
  compare(converterFor(s), s, text);
  return 0;
}
