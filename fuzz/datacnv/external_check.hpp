#pragma once

#include <unicode/uchar.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/externalword.hpp"
#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/textmodel.hpp"
#include "kelexception.hpp"
#include "support/fastway.hpp"

// External decimals of any bytes, settings and code pages, read and written, against a naive model: steps on plain
// strings, one at a time. What is raised must be the failure that the model comes to, and what a fast way is there for
// must not be sent the general way.
namespace oxr::fuzz {

using FieldBytes = std::vector<unsigned char>;

struct ExternalPage {
  int ccsid;
  bool isEbcdic;
  bool isSingleByte;
};

// What the members are told, and a converter for the code page.
struct ExternalSettings {
  ExternalPage page;
  int sign, scale, justification;
  unsigned short pad;
  bool padIsUnicode, customSign;
  DataCnv converter;

  explicit ExternalSettings(Choices& choices) : ExternalSettings(choices, choices.upTo(3) != 0) {}

  // Calls a member with the arguments that all of them take at the end.
  template <class Call>
  auto with(Call call) {
    return call(static_cast<ESign>(sign), static_cast<EJustification>(justification), pad, padIsUnicode, customSign,
                nullptr, nullptr);
  }
  bool isIncluded() const { return sign == 1 || sign == 2; }
  bool isSeparate() const { return sign == 3 || sign == 4; }
  // Whether there is a fast way for these settings.
  bool allowFast() const {
    return page.isSingleByte && padIsUnicode && pad < 0x80 && sign >= 0 && sign <= 4 && scale >= 0;
  }

 private:
  ExternalSettings(Choices& choices, bool areUsual)
      : page(drawPage(choices, areUsual)),
        sign(areUsual ? choices.between(0, 4) : choices.between(-1, 6)),
        scale(areUsual ? choices.between(0, 5) : choices.between(-100, 100)),
        justification(choices.between(0, 3)),
        pad(static_cast<unsigned short>(areUsual ? " 0*2"[choices.upTo(3)] : choices.upTo(0x7FFF))),
        padIsUnicode(areUsual || choices.coin()),
        customSign(choices.coin()),
        converter(page.ccsid, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12,
                  false, eMessageStandardDefault, nullptr) {}

  static ExternalPage drawPage(Choices& choices, bool isUsual) {
    static constexpr ExternalPage kPages[] = {{37, true, true},     {819, false, true},  {500, true, true},
                                              {1208, false, false}, {939, true, false},  {1200, false, false},
                                              {943, false, false},  {1232, false, false}};
    return isUsual ? kPages[choices.upTo(1)] : choices.oneOf(kPages);
  }
};

// What `convert` gives, be it units or bytes, or "OXR" and the number of what it raises.
template <class Convert>
std::string externalOutcome(Convert convert) {
  try {
    std::string text;
    for (const unsigned unit : convert())
      text += unit < 0x80 ? std::string(1, static_cast<char>(unit)) : "{" + std::to_string(unit) + "}";
    return text;
  } catch (const Refused& failure) {
    return "OXR" + std::to_string(failure.number);
  } catch (const KelRecoverableException& e) {
    return "OXR" + std::to_string(e.messageNumber() & 0xFFFF);
  }
}
inline std::string bitsOf(double value) {
  return std::to_string(std::bit_cast<std::uint64_t>(value));
}
inline Text textOf(const KelWstring& text) {
  return Text(text.view().begin(), text.view().end());
}
inline KelWstring stringOf(const Text& text) {
  const std::basic_string<unsigned short> units(text.begin(), text.end());
  return KelWstring(units.data(), static_cast<unsigned>(units.size()));
}

// The steps of the members, each as plain as it can be. Code pages are the business of another check.
class ExternalModel {
 public:
  explicit ExternalModel(ExternalSettings& settings) : settings_(settings), converter_(settings.converter) {}

  // The text of a field with the scale or without.
  Text read(FieldBytes field, bool isScaled) {
    if (field.empty()) throw Refused{kInternal};
    bool negative = false;
    Text text;
    if (settings_.isIncluded()) {
      negative = readOverpunch(settings_.sign == 1 ? field.front() : field.back());
      text = decoded(field);
    } else {
      text = decoded(field);
      negative = takeSeparateSign(settings_.sign, text);
    }
    trim(text);
    digits_ = text.find_first_not_of(u"0123456789") == Text::npos ? text.size() : 0;
    if (isScaled) modelShift(settings_.scale, text);
    validate(text);
    return negative ? u"-" + text : text;
  }
  // How many digits the field read last has; 0 if it has anything else.
  std::size_t digits() const { return digits_; }

  // What a field of 0xEE becomes. A decimal is a text that ends with its first zero, and may have blanks around it.
  FieldBytes write(Text text, bool isDecimal, std::size_t size) {
    bool negative = false;
    if (isDecimal) {
      text.erase(std::min(text.find(u'\0'), text.size()));
      negative = takeSeparateSign(eSignLeadingSeparate, text);
      while (!text.empty() && u_isWhitespace(text.front()))
        text.erase(0, 1);
      while (!text.empty() && u_isWhitespace(text.back()))
        text.pop_back();
      text.erase(0, text.find_first_not_of(u'0'));
      if (negative) text.insert(0, 1, u'-');
    }
    if (!text.empty()) modelShift(-settings_.scale, text);
    text.erase(std::min(text.find(u'.'), text.size()));
    const std::size_t minus = text.find(u'-');
    negative = minus != Text::npos;
    if (negative) text.erase(minus, 1);
    text.erase(0, text.find_first_not_of(u'0'));
    if (text.empty()) text = u"0";

    FieldBytes field(size, 0xEE);
    const auto put = [&](const FieldBytes& bytes) { std::copy(bytes.begin(), bytes.end(), field.begin()); };
    const FieldBytes digits = fitting(text, size);
    put(digits);
    const int freeBytes = static_cast<int>(size - digits.size());
    const int characters = freeBytes / converter_.getConverter()->getMinBytesPerChar() + static_cast<int>(text.size());
    const bool isSeparate = settings_.isSeparate();
    if (settings_.sign == 0 && negative) throw Refused{kOutOfBounds};
    if (settings_.sign >= 0 && settings_.sign <= 4) pad(characters - isSeparate, freeBytes, text);
    if (isSeparate) text.insert(settings_.sign == 3 ? 0 : text.size(), 1, negative ? u'-' : u'+');
    put(fitting(text, size));
    if (settings_.sign == 1) writeOverpunch(negative, field[0]);
    if (settings_.sign == 2) writeOverpunch(negative, field[static_cast<std::size_t>(characters) - 1]);
    return field;
  }

  FieldBytes encoded(const Text& text) {
    FieldBytes bytes(4 * text.size() + 16);
    int size = static_cast<int>(bytes.size());
    converter_.fromUnicodeString(stringOf(text), bytes.data(), size);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
  }

  static constexpr int kInternal = 5502, kInvalid = 5505, kOutOfBounds = 5506, kTooLong = 5507, kPaddingSize = 5521;

 private:
  Text decoded(const FieldBytes& field) {
    const int size = static_cast<int>(field.size());
    if (size < converter_.getConverter()->getMinBytesPerChar()) throw Refused{kInternal};
    KelWstring text;
    UErrorCode status = U_ZERO_ERROR;
    converter_.getConverter()->toUnicodeString(text, reinterpret_cast<const char*>(field.data()), size, status);
    return textOf(text);
  }

  // Turns the byte that carries the sign into its digit.
  bool readOverpunch(unsigned char& byte) const {
    constexpr std::string_view kPlus = "{ABCDEFGHI", kMinus = "}JKLMNOPQR";
    const char zone = "0123456789ABCDEF"[byte / 16];
    if (settings_.page.isEbcdic) {
      if (zone != 'C' && zone != 'D' && zone != 'F') throw Refused{kInvalid};
      byte = static_cast<unsigned char>(0xF0 + byte % 16);
      return zone == 'D';
    }
    if (!settings_.customSign) {
      if (zone == '7') byte = static_cast<unsigned char>(0x30 + byte % 16);
      return zone == '7';
    }
    const bool negative = kMinus.find(static_cast<char>(byte)) != kMinus.npos;
    const std::size_t digit = (negative ? kMinus : kPlus).find(static_cast<char>(byte));
    if (digit == kPlus.npos) throw Refused{kInvalid};
    byte = static_cast<unsigned char>('0' + digit);
    return negative;
  }

  void writeOverpunch(bool negative, unsigned char& byte) const {
    const int plain = byte;
    if (settings_.page.isEbcdic)
      byte = static_cast<unsigned char>(negative ? plain & ~0x20 : plain);
    else if (!settings_.customSign)
      byte = static_cast<unsigned char>(negative ? plain | 0x70 : plain);
    else if (plain == '0')
      byte = negative ? '}' : '{';
    else
      byte = static_cast<unsigned char>(plain + (negative ? 'J' - '1' : 'A' - '1'));
  }

  static bool takeSeparateSign(int sign, Text& text) {
    if (sign < 0 || sign > 4) throw Refused{kInternal};
    bool negative = false;
    if (sign == 3 && (text.starts_with(u'-') || text.starts_with(u'+'))) {
      negative = text.front() == u'-';
      text.erase(0, 1);
    }
    if (sign == 4 && text.ends_with(u'-')) {
      negative = true;
      text.pop_back();
    }
    if (sign == 4 && text.ends_with(u'+')) text.pop_back();
    return negative;
  }

  void trim(Text& text) {
    if (settings_.padIsUnicode) {
      while (settings_.justification == 2 && text.starts_with(char16_t{settings_.pad}))
        text.erase(0, 1);
      while (settings_.justification == 1 && text.ends_with(char16_t{settings_.pad}))
        text.pop_back();
    } else {
      FieldBytes bytes = encoded(text);
      const auto pad = static_cast<unsigned char>(settings_.pad);
      while (settings_.justification != 1 && !bytes.empty() && bytes.front() == pad)
        bytes.erase(bytes.begin());
      while (settings_.justification == 1 && !bytes.empty() && bytes.back() == pad)
        bytes.pop_back();
      text = bytes.empty() ? Text() : decoded(bytes);
    }
    if (text.empty()) text = u"0";
  }

  void validate(const Text& text) const {
    int points = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const bool isSign = text[i] == u'+' || text[i] == u'-';
      if (isSign ? i != 0 || settings_.sign == 4 : std::u16string_view(u"0123456789,.").find(text[i]) == Text::npos)
        throw Refused{kInvalid};
      if (text[i] == u'.' && ++points == 2) throw Refused{kInvalid};
    }
  }

  // Pads to `characters`, in code units or in bytes of the code page.
  void pad(int characters, int freeBytes, Text& text) {
    const int missing = characters - static_cast<int>(text.size());
    if (missing == 0) return;
    const FieldBytes pad = encoded(Text(1, char16_t{settings_.pad}));
    if (static_cast<int>(pad.size()) > converter_.getConverter()->getMaxBytesPerChar()) throw Refused{kOutOfBounds};
    if (pad.empty() || freeBytes % static_cast<int>(pad.size()) != 0) throw Refused{kPaddingSize};
    const auto count = static_cast<std::size_t>(std::max(missing, 0));
    if (settings_.padIsUnicode) {
      text.insert(settings_.justification == 1 ? text.size() : 0, Text(count, char16_t{settings_.pad}));
    } else if (settings_.justification == 1 || settings_.justification == 2) {
      FieldBytes bytes = encoded(text);
      bytes.insert(settings_.justification == 1 ? bytes.end() : bytes.begin(), count,
                   static_cast<unsigned char>(settings_.pad));
      text = decoded(bytes);
    }
  }

  FieldBytes fitting(const Text& text, std::size_t room) {
    const FieldBytes bytes = encoded(text);
    if (bytes.size() > room) throw Refused{kTooLong};
    return bytes;
  }

  ExternalSettings& settings_;
  DataCnv& converter_;
  std::size_t digits_ = 0;
};

// Digits, here and there something else: a sign, a pad where padding goes, a point, any unit.
inline Text drawExternalText(Choices& choices, const ExternalSettings& settings, std::size_t most) {
  Text text;
  for (std::size_t count = choices.upTo(most); count > 0; --count)
    text += static_cast<char16_t>(u'0' + (choices.upTo(3) == 0 ? 0 : choices.upTo(9)));
  if (choices.upTo(3) == 0)
    text.insert(settings.justification == 1 ? text.size() : 0, choices.upTo(4), char16_t{settings.pad});
  static constexpr char16_t kUnits[] = {u',', u'.', u'+', u'-', u' ', u'A', u'\0', u'\u00E9', u'\u3042'};
  if (choices.upTo(7) == 0) text.insert(choices.upTo(text.size()), 1, choices.oneOf(kUnits));
  return text;
}

// A field that is likely to be a good one.
inline FieldBytes drawExternalField(Choices& choices, const ExternalSettings& settings, ExternalModel& model) {
  Text text = drawExternalText(choices, settings, choices.upTo(15) == 0 ? 70 : 20);
  if (settings.isSeparate()) text.insert(settings.sign == 3 ? 0 : text.size(), 1, u"+-"[choices.upTo(1)]);
  FieldBytes field = model.encoded(text);
  if (!field.empty() && settings.isIncluded()) {
    unsigned char& carrier = settings.sign == 1 ? field.front() : field.back();
    static constexpr unsigned char kZones[] = {0xC0, 0xD0, 0xF0};
    carrier = settings.page.isEbcdic ? static_cast<unsigned char>(choices.oneOf(kZones) | (carrier & 15))
              : settings.customSign  ? static_cast<unsigned char>("{}ABCIJKR"[choices.upTo(8)])
                                     : static_cast<unsigned char>(carrier ^ (choices.coin() ? 0x40 : 0));
  }
  if (!field.empty() && choices.upTo(9) == 0) field[choices.upTo(field.size() - 1)] ^= choices.any<unsigned char>();
  return field;
}

// All members that read a field; the numbers are those of the text that the model reads. A decimal is read twice, as
// only a converter that knows the codes of its page has the way of short fields.
inline void compareExternalRead(ExternalSettings& settings, const FieldBytes& field) {
  ExternalModel model(settings);
  DataCnv& converter = settings.converter;
  const int size = static_cast<int>(field.size());
  const unsigned char* const bytes = field.data();
  const auto compare = [&](const char* what, std::size_t mostDigits, int mostScale, auto expected, auto read) {
    const std::string outcome = externalOutcome(expected);
    const bool isFast = settings.allowFast() && field.size() <= 64 && settings.scale <= mostScale &&
                        !outcome.starts_with("OXR") && model.digits() != 0 && model.digits() <= mostDigits;
    const std::uint64_t before = generalWaysTaken();
    requireEqual(externalOutcome([&] { return settings.with(read); }), outcome, what);
    require(!isFast || generalWaysTaken() == before, std::string(what) + " no longer goes the fast way");
  };
  const auto modelText = [&](bool isScaled) { return stringOf(model.read(field, isScaled)); };
  for (const char* const what : {"a decimal", "a decimal once more"})
    compare(
        what, 64, 100, [&] { return model.read(field, true); },
        [&](auto... form) {
          const PWFData value = converter.ExtDecToDec(bytes, size, settings.scale, form...);
          require(value.getDataLogicalType() == DECIMAL && !value.isNull(), "a decimal of another type");
          return Text(value.getDecimalValue(), value.getDecimalValue() + value.getDecimalLength());
        });
  compare(
      "a double", 15, 22,
      [&] {
        const KelWstring text = modelText(true);
        return bitsOf(converter.StrToDbl(text.characters(), static_cast<int>(text.length())));
      },
      [&](auto... form) { return bitsOf(converter.ExtDecToDbl(bytes, size, settings.scale, form...)); });
  compare(
      "a text", 64, 100, [&] { return model.read(field, false); },
      [&](auto... form) { return textOf(converter.ExtDecToStr(bytes, size, form...)); });
  compare(
      "an integer", 18, 100,
      [&] {
        const KelWstring text = modelText(false);
        return std::to_string(converter.StrToInt64(text.characters(), static_cast<int>(text.length()),
                                                   eSignLeadingSeparate, DataCnv::US_MINUS.characters(),
                                                   DataCnv::US_PLUS.characters(), eTrimNone, eJustifyLeft, '0', true));
      },
      [&](auto... form) { return std::to_string(converter.ExtDecToInt64(bytes, size, form...)); });
}

inline void checkExternalRead(Choices& choices) {
  ExternalSettings settings(choices);
  ExternalModel model(settings);
  compareExternalRead(settings, drawExternalField(choices, settings, model));
}

// Each of the 256 bytes as the one that carries the sign, or as any other one.
inline void checkExternalSigns(Choices& choices) {
  ExternalSettings settings(choices);
  settings.sign = 1 + static_cast<int>(choices.upTo(1));
  ExternalModel model(settings);
  FieldBytes field = model.encoded(Text(1 + choices.upTo(17), u'1'));
  unsigned char& place = choices.coin()       ? field[choices.upTo(field.size() - 1)]
                         : settings.sign == 1 ? field.front()
                                              : field.back();
  for (unsigned byte = 0; byte < 256; ++byte) {
    place = static_cast<unsigned char>(byte);
    compareExternalRead(settings, field);
  }
}

inline void checkExternalWrite(Choices& choices) {
  ExternalSettings settings(choices);
  ExternalModel model(settings);
  DataCnv& converter = settings.converter;
  const bool isDecimal = choices.coin();
  Text text = drawExternalText(choices, settings, choices.upTo(15) == 0 ? 70 : 20);
  if (choices.coin()) text.insert(choices.upTo(text.size()), 1, u'.');
  if (choices.coin()) text.insert(0, 1, u"+-"[choices.upTo(1)]);
  const std::size_t size = 1 + choices.upTo(choices.upTo(7) == 0 ? 70 : 23);

  const std::string outcome = externalOutcome([&] { return model.write(text, isDecimal, size); });
  const Text unsignedText = text.substr(text.starts_with(u'-') || (isDecimal && text.starts_with(u'+')) ? 1 : 0);
  const bool isCanonical = std::count(unsignedText.begin(), unsignedText.end(), u'.') <= 1 &&
                           unsignedText.find_first_not_of(u"0123456789.") == Text::npos;
  const bool isFast = settings.allowFast() && isCanonical && !outcome.starts_with("OXR") &&
                      unsignedText.size() + static_cast<std::size_t>(settings.scale) <= 64;
  // The way of short fields is open once the converter knows the codes of its page and of the pad.
  for (const char* const what : {"a field", "a field once more"}) {
    const std::uint64_t before = generalWaysTaken();
    const std::string written = externalOutcome([&] {
      FieldBytes field(size, 0xEE);
      int room = static_cast<int>(size);
      settings.with([&](auto... form) {
        if (isDecimal)
          converter.ExtDecFromDec(stringOf(text).characters(), field.data(), room, settings.scale, form...);
        else
          converter.UStringToExtDec(stringOf(text), field.data(), room, -settings.scale, form...);
      });
      require(room == static_cast<int>(size), "a size that was changed");
      return field;
    });
    requireEqual(written, outcome, what);
    require(!isFast || generalWaysTaken() == before, "a canonical text no longer goes the fast way");
  }
}

// The digits of a field in registers. A fault there would not show in a value: the field would take the longer part of
// the fast way.
inline void checkExternalWord(Choices& choices) {
  static constexpr unsigned char kZones[] = {0x30, 0xF0};
  const unsigned char zone = choices.oneOf(kZones);
  FieldBytes field(1 + choices.upTo(core::ExternalWord::kMaxSize - 1));
  for (unsigned char& byte : field)
    byte = static_cast<unsigned char>(zone + choices.upTo(9));
  if (choices.coin()) field[choices.upTo(field.size() - 1)] = choices.any<unsigned char>();
  const auto size = static_cast<std::uint32_t>(field.size());
  core::ExternalWord word(field.data(), size, zone);
  if (choices.coin()) {
    const std::size_t position = choices.upTo(field.size() - 1);
    const auto digit = static_cast<unsigned char>(zone + choices.upTo(9));
    word.replace(static_cast<std::uint32_t>(position), field[position], digit);
    field[position] = digit;
  }
  const bool areDigits =
      std::all_of(field.begin(), field.end(), [&](unsigned char byte) { return byte >= zone && byte <= zone + 9; });
  requireEqual(word.isAllDigits(), areDigits, "whether all bytes are digits");
  if (!areDigits) return;
  // Sixteen units are written: of as many digits the point can only follow the last.
  const std::size_t whole = field.size() == 16 ? 16 : 1 + choices.upTo(field.size() - 1);
  unsigned short units[core::ExternalWord::kMaxSize + 1];
  word.writePointed(static_cast<std::uint32_t>(whole), units);
  std::uint64_t digits = 0;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const unsigned digit = field[i] - zone;
    requireEqual(word.digit(static_cast<std::uint32_t>(i)), digit, "a digit");
    requireEqual(units[i + (i >= whole)], '0' + digit, "the unit of a digit");
    digits = digits << 4 | digit;
  }
  require(units[whole] == '.', "a point elsewhere");
  FieldBytes written(field.size() + 2, 0xEE), expected = written;
  std::copy(field.begin(), field.end(), expected.begin() + 1);
  core::writeDigitBytes(digits, zone, written.data() + 1, size);
  require(written == expected, "digits written otherwise than they were read");
}

}  // namespace oxr::fuzz
