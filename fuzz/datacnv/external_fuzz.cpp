// External decimals of any bytes, settings and code pages, read and written, against a naive model: steps on plain
// strings, one after the other. Whatever is raised is the failure that the model comes to.

#include <unicode/uchar.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dataconv.hpp"
#include "fuzz/harness/textmodel.hpp"
#include "kelexception.hpp"

using namespace oxr::fuzz;

namespace {

using Bytes = std::vector<unsigned char>;

struct Page {
  int ccsid;
  bool isEbcdic;
};
constexpr Page kPages[] = {{37, true},  {500, true},   {819, false}, {1208, false},
                           {939, true}, {1200, false}, {943, false}, {1232, false}};

constexpr int kInternal = 5502, kInvalid = 5505, kOutOfBounds = 5506, kTooLong = 5507, kPaddingSize = 5521;

struct Settings {
  Page page;
  int sign, scale, justification;
  unsigned short pad;
  bool padIsUnicode, customSign;
};

// The code page itself is the business of another fuzz binary.
Text decoded(DataCnv& converter, const Bytes& field) {
  const int size = static_cast<int>(field.size());
  if (size < converter.getConverter()->getMinBytesPerChar()) throw Refused{kInternal};
  KelWstring text;
  UErrorCode status = U_ZERO_ERROR;
  converter.getConverter()->toUnicodeString(text, reinterpret_cast<const char*>(field.data()), size, status);
  return Text(text.view().begin(), text.view().end());
}

Bytes encoded(DataCnv& converter, const Text& text) {
  Bytes bytes(4 * text.size() + 16);
  int size = static_cast<int>(bytes.size());
  const std::basic_string<unsigned short> units(text.begin(), text.end());
  converter.fromUnicodeString(KelWstring(units.data(), static_cast<unsigned>(units.size())), bytes.data(), size);
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

// Turns the byte that carries the sign into its digit.
bool modelOverpunch(const Settings& settings, unsigned char& byte) {
  constexpr std::string_view kPlus = "{ABCDEFGHI", kMinus = "}JKLMNOPQR";
  const char zone = "0123456789ABCDEF"[byte / 16];
  if (settings.page.isEbcdic) {
    if (zone != 'C' && zone != 'D' && zone != 'F') throw Refused{kInvalid};
    byte = static_cast<unsigned char>(0xF0 + byte % 16);
    return zone == 'D';
  }
  if (!settings.customSign) {
    if (zone == '7') byte = static_cast<unsigned char>(0x30 + byte % 16);
    return zone == '7';
  }
  const bool negative = kMinus.find(static_cast<char>(byte)) != kMinus.npos;
  const std::size_t digit = (negative ? kMinus : kPlus).find(static_cast<char>(byte));
  if (digit == kPlus.npos) throw Refused{kInvalid};
  byte = static_cast<unsigned char>('0' + digit);
  return negative;
}

bool modelSeparateSign(int sign, Text& text) {
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

void modelTrim(DataCnv& converter, const Settings& settings, Text& text) {
  if (settings.padIsUnicode) {
    while (settings.justification == 2 && text.starts_with(char16_t{settings.pad}))
      text.erase(0, 1);
    while (settings.justification == 1 && text.ends_with(char16_t{settings.pad}))
      text.pop_back();
  } else {
    Bytes bytes = encoded(converter, text);
    const auto pad = static_cast<unsigned char>(settings.pad);
    while (settings.justification != 1 && !bytes.empty() && bytes.front() == pad)
      bytes.erase(bytes.begin());
    while (settings.justification == 1 && !bytes.empty() && bytes.back() == pad)
      bytes.pop_back();
    text = bytes.empty() ? Text() : decoded(converter, bytes);
  }
  if (text.empty()) text = u"0";
}

void modelValidate(int sign, const Text& text) {
  int points = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isSign = text[i] == u'+' || text[i] == u'-';
    if (isSign ? i != 0 || sign == 4 : std::u16string_view(u"0123456789,.").find(text[i]) == Text::npos)
      throw Refused{kInvalid};
    if (text[i] == u'.' && ++points == 2) throw Refused{kInvalid};
  }
}

Text modelText(DataCnv& converter, const Settings& settings, Bytes field) {
  if (field.empty()) throw Refused{kInternal};
  bool negative = false;
  Text text;
  if (settings.sign == 1 || settings.sign == 2) {
    negative = modelOverpunch(settings, settings.sign == 1 ? field.front() : field.back());
    text = decoded(converter, field);
  } else {
    text = decoded(converter, field);
    negative = modelSeparateSign(settings.sign, text);
  }
  modelTrim(converter, settings, text);
  modelShift(settings.scale, text);
  modelValidate(settings.sign, text);
  return negative ? u"-" + text : text;
}

Text readText(DataCnv& converter, const Settings& settings, const Bytes& field) {
  const PWFData value =
      converter.ExtDecToDec(field.data(), static_cast<int>(field.size()), settings.scale,
                            static_cast<ESign>(settings.sign), static_cast<EJustification>(settings.justification),
                            settings.pad, settings.padIsUnicode, settings.customSign, nullptr, nullptr);
  require(value.getDataLogicalType() == DECIMAL && !value.isNull());
  return Text(value.getDecimalValue(), value.getDecimalValue() + value.getDecimalLength());
}

// Pads to `characters`, in code units or in bytes of the code page.
void modelPad(DataCnv& converter, const Settings& settings, int characters, int freeBytes, Text& text) {
  const int missing = characters - static_cast<int>(text.size());
  if (missing == 0) return;
  const Bytes pad = encoded(converter, Text(1, char16_t{settings.pad}));
  if (static_cast<int>(pad.size()) > converter.getConverter()->getMaxBytesPerChar()) throw Refused{kOutOfBounds};
  if (pad.empty() || freeBytes % static_cast<int>(pad.size()) != 0) throw Refused{kPaddingSize};
  const auto count = static_cast<std::size_t>(std::max(missing, 0));
  if (settings.padIsUnicode) {
    text.insert(settings.justification == 1 ? text.size() : 0, Text(count, char16_t{settings.pad}));
  } else if (settings.justification == 1 || settings.justification == 2) {
    Bytes bytes = encoded(converter, text);
    bytes.insert(settings.justification == 1 ? bytes.end() : bytes.begin(), count,
                 static_cast<unsigned char>(settings.pad));
    text = decoded(converter, bytes);
  }
}

Bytes modelFitting(DataCnv& converter, const Text& text, std::size_t room) {
  const Bytes bytes = encoded(converter, text);
  if (bytes.size() > room) throw Refused{kTooLong};
  return bytes;
}

void modelCarrySign(const Settings& settings, bool negative, unsigned char& byte) {
  const int plain = byte;
  if (settings.page.isEbcdic)
    byte = static_cast<unsigned char>(negative ? plain & ~0x20 : plain);
  else if (!settings.customSign)
    byte = static_cast<unsigned char>(negative ? plain | 0x70 : plain);
  else if (plain == '0')
    byte = negative ? '}' : '{';
  else
    byte = static_cast<unsigned char>(plain + (negative ? 'J' - '1' : 'A' - '1'));
}

// What a field of 0xEE becomes.
Bytes modelField(DataCnv& converter, const Settings& settings, Text text, bool isDecimal, std::size_t size) {
  bool negative = false;
  if (isDecimal) {
    text.erase(std::min(text.find(u'\0'), text.size()));
    negative = modelSeparateSign(eSignLeadingSeparate, text);
    while (!text.empty() && u_isWhitespace(text.front()))
      text.erase(0, 1);
    while (!text.empty() && u_isWhitespace(text.back()))
      text.pop_back();
    text.erase(0, text.find_first_not_of(u'0'));
    if (negative) text.insert(0, 1, u'-');
  }
  if (!text.empty()) modelShift(-settings.scale, text);
  text.erase(std::min(text.find(u'.'), text.size()));
  const std::size_t minus = text.find(u'-');
  negative = minus != Text::npos;
  if (negative) text.erase(minus, 1);
  text.erase(0, text.find_first_not_of(u'0'));
  if (text.empty()) text = u"0";

  Bytes field(size, 0xEE);
  const auto put = [&](const Bytes& bytes) { std::copy(bytes.begin(), bytes.end(), field.begin()); };
  const Bytes digits = modelFitting(converter, text, size);
  put(digits);
  const int freeBytes = static_cast<int>(size - digits.size());
  const int characters = freeBytes / converter.getConverter()->getMinBytesPerChar() + static_cast<int>(text.size());
  const bool isSeparate = settings.sign == 3 || settings.sign == 4;
  if (settings.sign == 0 && negative) throw Refused{kOutOfBounds};
  if (settings.sign >= 0 && settings.sign <= 4) modelPad(converter, settings, characters - isSeparate, freeBytes, text);
  if (isSeparate) text.insert(settings.sign == 3 ? 0 : text.size(), 1, negative ? u'-' : u'+');
  put(modelFitting(converter, text, size));
  if (settings.sign == 1) modelCarrySign(settings, negative, field[0]);
  if (settings.sign == 2) modelCarrySign(settings, negative, field[static_cast<std::size_t>(characters) - 1]);
  return field;
}

Bytes writtenField(DataCnv& converter, const Settings& settings, const Text& text, bool isDecimal, std::size_t size) {
  Bytes field(size, 0xEE);
  int room = static_cast<int>(size);
  const std::basic_string<unsigned short> units(text.begin(), text.end());
  const auto write = [&](auto... form) {
    if (isDecimal)
      converter.ExtDecFromDec(units.c_str(), field.data(), room, settings.scale, form...);
    else
      converter.UStringToExtDec(KelWstring(units.data(), static_cast<unsigned>(units.size())), field.data(), room,
                                -settings.scale, form...);
  };
  write(static_cast<ESign>(settings.sign), static_cast<EJustification>(settings.justification), settings.pad,
        settings.padIsUnicode, settings.customSign, nullptr, nullptr);
  return field;
}

// Mostly characters of numbers.
Text textFrom(const Bytes& bytes) {
  constexpr std::u16string_view kCharacters = u"0123456789.-0+ 0,";
  Text text;
  for (const unsigned char byte : bytes)
    text += byte < 0xF0 ? kCharacters[byte % kCharacters.size()] : static_cast<char16_t>(byte * 0x1357);
  return text;
}

// Both come to the same, be it a value or a refusal.
template <class Model, class Library>
void requireSame(Model model, Library library) {
  std::optional<decltype(model())> expected;
  int refused = 0;
  try {
    expected = model();
  } catch (const Refused& failure) {
    refused = failure.number;
  }
  try {
    require(library() == expected);
  } catch (const KelRecoverableException& e) {
    require(e.oxrMessageNumber() == refused);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 6) return 0;
  const Settings settings{.page = kPages[data[0] % 8],
                          .sign = data[1] % 8 - 1,
                          .scale = static_cast<std::int8_t>(data[2]),
                          .justification = data[1] / 8 % 4,
                          .pad = static_cast<unsigned short>(data[3] | (data[4] & 0x7F) << 8),
                          .padIsUnicode = (data[0] & 8) != 0,
                          .customSign = (data[0] & 16) != 0};
  const Bytes field(data + 5, data + size);
  DataCnv converter(settings.page.ccsid, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0,
                    true, 12, false, eMessageStandardDefault, nullptr);
  requireSame([&] { return modelText(converter, settings, field); },
              [&] { return readText(converter, settings, field); });
  const bool isDecimal = (data[0] & 32) != 0;
  const std::size_t room = 1 + data[5] % 24;
  const Text text = textFrom(field);
  requireSame([&] { return modelField(converter, settings, text, isDecimal, room); },
              [&] { return writtenField(converter, settings, text, isDecimal, room); });
  return 0;
}
