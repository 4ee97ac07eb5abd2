#pragma once

#include <unicode/uchar.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/hextext.hpp"
#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"

// Standard strings: what is written is read as the same value, and nothing but one failure comes of any other text.
// Hexadecimal text against a naive reader, and the comparison of values against what defines it.
namespace oxr::fuzz {

namespace standardstrings {

constexpr ELogicalType kTypes[] = {STRING, INTEGER, FLOAT, BINARY, BOOLEAN, INTERVAL, DATETIME, DECIMAL};

inline DataCnv converterOf(bool isStrict) {
  return DataCnv(1200, eEndianLittle, eEndianLittle, eFloatIeeeLittle, 53, nullptr, false, nullptr, 0, true, 12,
                 isStrict, eMessageStandardDefault, nullptr);
}

// A text that some of the types take.
inline KelWstring drawText(Choices& choices) {
  static constexpr std::string_view kTexts[] = {"",           "true",
                                                "FaLsE",      "1",
                                                "0",          "-1",
                                                "+0",         "-0",
                                                "1.5E+3",     ".5",
                                                "1.",         "-0.0",
                                                "INF",        "nan",
                                                "0x1p3",      "0a ff",
                                                "0a f",       "PT1.5S",
                                                "P1Y",        "-PT0S",
                                                "P",          "9223372036854775808",
                                                "yes",        "2001",
                                                "00:00",      "1,000",
                                                "--0229",     "1.2.3",
                                                "2001-02-03", "2001-02-03T04:05:06.789Z"};
  static constexpr char kUnits[] = "0123456789-+.,eEaAfFtTruePZS: x";
  std::string text(choices.oneOf(kTexts));
  for (std::size_t edits = choices.upTo(5); edits > 3; --edits)
    text.insert(choices.upTo(text.size()), 1, kUnits[choices.upTo(sizeof kUnits - 2)]);
  KelWstring units = fromUtf8(text);
  if (choices.upTo(7) == 0) {
    const auto any = choices.any<unsigned short>();
    units.insertInternal(static_cast<unsigned>(choices.upTo(units.length())), &any, 1, 0);
  }
  return units;
}

// A value, the widest of its kind among them.
inline PWFData drawValue(Choices& choices, ELogicalType type) {
  static constexpr double kDoubles[] = {0.0, -0.0, 1.5, 1e300, -5e-324, HUGE_VAL};
  static constexpr std::string_view kDecimals[] = {"0",
                                                   "-0",
                                                   "1.50",
                                                   "1.5",
                                                   "+1.5",
                                                   "007",
                                                   "-.5",
                                                   "-0.50",
                                                   ".",
                                                   "",
                                                   "-",
                                                   "1,0",
                                                   "12345678901234567890.12345678901234567890",
                                                   "1e5",
                                                   "1..2"};
  switch (type) {
    case STRING:
      return PWFData(drawText(choices));
    case INTEGER:
      return choices.coin() ? PWFData(choices.any<PWFInt64>() >> choices.upTo(63), false)
                            : PWFData(choices.any<PWFInt32>(), false);
    case FLOAT: {
      const auto any = choices.any<double>();
      return PWFData(choices.coin() || std::isnan(any) ? choices.oneOf(kDoubles) : any);
    }
    case BINARY: {
      const auto bytes = choices.bytes(choices.upTo(40));
      return PWFData(static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()), BINARY, COPY);
    }
    case BOOLEAN:
      return PWFData(choices.coin());
    case INTERVAL: {
      const bool isLong = choices.coin();
      const auto small = [&](int most) { return choices.coin() ? choices.upTo(1) : choices.between(0, most); };
      return PWFData(
          PWFInterval{isLong ? static_cast<PWFInt32>(small(9999)) : 0, isLong ? static_cast<PWFInt32>(small(30)) : 0,
                      isLong ? 0 : static_cast<PWFInt64>(small(2'000'000'000)) * 4'000, choices.between(0, 1)});
    }
    case DATETIME:
      return PWFData(PWFDateTime{choices.between(1600, 2400), choices.between(1, 12), choices.between(1, 28),
                                 choices.between(0, 23), choices.between(0, 59), choices.between(0, 59),
                                 1000 * choices.between(0, 999), 6, nullptr, 0, 0});
    default: {
      std::string text(choices.oneOf(kDecimals));
      if (choices.upTo(3) == 0) text.insert(choices.upTo(text.size()), 1, "05.-x"[choices.upTo(4)]);
      return PWFData(fromUtf8(text).characters(), DECIMAL);
    }
  }
}

// The text of what `call` gives, or the class, the number and the inserts of what it raises.
template <class Call>
std::string outcome(Call call) {
  try {
    return call();
  } catch (const KelRecoverableException& e) {
    std::string text = "OXR" + std::to_string(e.messageNumber() & 0xFFFF);
    for (const std::string& insert : e.inserts())
      text += " | " + insert;
    return text;
  }
}

}  // namespace standardstrings

// A value is written and read again; the text that comes of that is the first one.
inline void checkStandardValue(Choices& choices) {
  using namespace standardstrings;
  DataCnv converter = converterOf(false);
  const ELogicalType type = choices.oneOf(kTypes);
  const PWFData value = drawValue(choices, type);
  std::string text;
  try {
    const PWFData written = converter.StandardStrFromData(value);
    text = toUtf8(written.getPWFStringValue());
    const PWFData read = converter.StandardStrToData(type, written.getPWFStringValue());
    // StrFromDec leaves a text without a digit as it is, and StrToDec reads another number from it.
    if (type == DECIMAL && text.find_first_of("0123456789") == text.npos) return;
    // A date-time comes with the zone that the text names.
    if (type != DATETIME) require(read == value && !(read != value), "another value of " + text);
    requireEqual(toUtf8(converter.StandardStrFromData(read).getPWFStringValue()), text, "another text");
    requireEqual(toUtf8(value.getDebugString().getPWFStringValue()), text, "the debug text");
  } catch (const KelConversionException& e) {
    // Not every text in a DECIMAL is one, and grouping commas are written but not read.
    require(type == DECIMAL && (text.empty() || text.find_first_of(",") != text.npos), "refused: " + text);
  }
}

// A text of any kind is read, or refused with the one failure that holds another.
inline void checkStandardText(Choices& choices) {
  using namespace standardstrings;
  DataCnv converter = converterOf(choices.coin());
  const ELogicalType type = choices.oneOf(kTypes);
  const KelWstring text = drawText(choices);
  try {
    const PWFData value = converter.StandardStrToData(type, text);
    require(value.getDataLogicalType() == type && !value.isNull(), "another type");
  } catch (const KelConversionException& e) {
    requireEqual(e.messageNumber() & 0xFFFF, 5523, "the failure");
    requireEqual(e.nestedItemCount(), 1, "its causes");
    require(type != STRING && e.nestedItem(0)->messageNumber() != e.messageNumber(), "the cause");
  }
}

// Hexadecimal text of stretches of digits with white space, and sometimes anything else, among them.
inline void checkHexText(Choices& choices) {
  using namespace standardstrings;
  static constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
  static constexpr unsigned short kSpaces[] = {' ', '\n', '\t', 0x2003, 0x3000, 0x1F};
  static constexpr unsigned short kOthers[] = {'g',  '/',  ':',   '@',    'G',    '`',   0,
                                               0xA0, 0x7F, 0x130, 0x4130, 0xFF10, 0xD800};
  std::vector<unsigned short> text;
  std::string digits;
  bool isForeign = false;
  for (std::size_t stretches = choices.upTo(5); stretches > 0; --stretches) {
    for (std::size_t left = choices.upTo(choices.coin() ? 90 : 3); left > 0; --left) {
      digits += choices.oneOf(kDigits);
      text.push_back(static_cast<unsigned char>(digits.back()));
    }
    if (choices.coin()) text.push_back(choices.oneOf(kSpaces));
    if (choices.upTo(15) == 0) {
      text.push_back(choices.coin() ? choices.oneOf(kOthers) : choices.any<unsigned short>());
      const unsigned short unit = text.back();
      if (unit < 0x80 && kDigits.find(static_cast<char>(unit)) != kDigits.npos)
        digits += static_cast<char>(unit);
      else
        isForeign |= u_isWhitespace(unit) == 0;
    }
  }
  DataCnv converter = converterOf(false);
  const auto read = [&] { return converter.StrToBin(text.data(), static_cast<int>(text.size())); };
  if (text.empty()) text.reserve(1);  // a pointer that isn't null
  if (isForeign || digits.size() % 2 != 0) {
    const std::string refused = outcome([&] { return read(), std::string("read"); });
    require(refused.starts_with(isForeign ? "OXR5505 | CPI Converter Input Data Invalid | hex character string | "
                                          : "OXR5505 | Odd number of hexadecimal digits is not allowed"),
            "bad digits: " + refused);
    return;
  }
  const PWFData value = read();
  int size = 0;
  const auto* const bytes = static_cast<const unsigned char*>(value.getBinaryValue(size));
  requireEqual(static_cast<std::size_t>(size), digits.size() / 2, "bytes");
  for (std::size_t i = 0; i < digits.size() / 2; ++i)
    requireEqual(int{bytes[i]}, std::stoi(digits.substr(2 * i, 2), nullptr, 16), "a byte");
  for (char& digit : digits)
    digit = static_cast<char>(std::tolower(digit));
  requireEqual(toUtf8(converter.StrFromBin(value).getPWFStringValue()), digits, "written");
}

// Durations are equal when a naive reading of the rule says so.
inline void checkDurationComparison(Choices& choices) {
  static constexpr int kMonths[] = {0, 0, 1, 12, -12, 24};
  const auto drawn = [&] {
    return PWFInterval{choices.between(-1, 2), choices.oneOf(kMonths), choices.between(-1, 2), choices.between(0, 2)};
  };
  PWFInterval left = drawn(), right = drawn();
  if (choices.upTo(7) == 0) left._years = right._years + (1 << 30);  // twelve of them are none in 32 bits
  const auto isZero = [](const PWFInterval& value, bool wantsTime) {
    return value._years == 0 && value._months == 0 && (!wantsTime || value._microseconds == 0);
  };
  bool areEqual = static_cast<std::int32_t>(left._years * 12LL + left._months) ==
                  static_cast<std::int32_t>(right._years * 12LL + right._months);
  if (isZero(left, false) || isZero(right, false)) areEqual = false;
  if (left._microseconds != 0 && right._microseconds != 0) areEqual = left._microseconds == right._microseconds;
  if (left._sign != right._sign) areEqual = false;
  if (isZero(left, true) && isZero(right, true)) areEqual = true;
  requireEqual(PWFData(left) == PWFData(right), areEqual, "durations compared");
}

// Decimals are equal when a converter makes the same text of them; where it raises, so does the comparison.
inline void checkDecimalComparison(Choices& choices) {
  using namespace standardstrings;
  const PWFData left = drawValue(choices, DECIMAL), right = drawValue(choices, DECIMAL);
  const std::string defined = outcome([&]() -> std::string {
    DataCnv converter = converterOf(false);
    const PWFData first = converter.StrFromDec(left.getDecimalValue());
    const PWFData second = converter.StrFromDec(right.getDecimalValue());
    return first.getPWFStringValue() == second.getPWFStringValue() ? "equal" : "different";
  });
  const auto compared = [&] { return outcome([&]() -> std::string { return left == right ? "equal" : "different"; }); };
  requireEqual(compared(), defined, "compared");
  requireEqual(theGeneralWay(compared), defined, "compared the general way");
}

}  // namespace oxr::fuzz
