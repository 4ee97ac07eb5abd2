// External decimals of any bytes, settings and code pages against a naive model of the field's text: steps on plain
// strings, one after the other. Whatever is raised is one of the failures that a bad field has.

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dataconv.hpp"
#include "kelexception.hpp"

namespace {

using Bytes = std::vector<unsigned char>;
using Text = std::u16string;

struct Page {
  int ccsid;
  bool isEbcdic;
};
constexpr Page kPages[] = {{37, true},  {500, true},   {819, false}, {1208, false},
                           {939, true}, {1200, false}, {943, false}, {1232, false}};

constexpr int kInternal = 5502, kInvalid = 5505;

struct Refused {
  int number;
};

struct Settings {
  Page page;
  int sign, scale, justification;
  unsigned short pad;
  bool padIsUnicode, customSign;
};

void require(bool holds) {
  if (!holds) std::abort();
}

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

void modelShift(int places, Text& text) {
  if (places == 0) return;
  std::size_t point = text.find(u'.');
  const bool hadPoint = point != Text::npos;
  if (hadPoint)
    text.erase(point, 1);
  else
    point = text.size();
  const std::size_t digits = text.size();
  for (; places < 0; ++places)
    if (++point > text.size()) text += u'0';
  bool isBeyond = false;
  for (; places > 0; --places) {
    isBeyond |= point == 0;
    if (point == 0)
      text.insert(0, 1, u'0');
    else
      --point;
  }
  if (isBeyond) text.insert(point++, 1, u'0');
  if (point <= digits || isBeyond) text.insert(point, 1, u'.');
  const std::size_t first = text.find(u'.');
  if (first == 0)
    text.insert(0, 1, u'0');
  else if (first == text.size() - 1)
    text.pop_back();
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
  std::optional<Text> expected;
  int refused = 0;
  try {
    expected = modelText(converter, settings, field);
  } catch (const Refused& failure) {
    refused = failure.number;
  }
  try {
    require(readText(converter, settings, field) == expected);
  } catch (const KelConversionException& e) {
    require(e.oxrMessageNumber() == refused);
  }
  return 0;
}
