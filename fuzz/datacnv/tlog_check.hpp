#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"

// Transaction-log fields of any bytes, and texts of any kind written into fields of any size, against a naive model
// that goes half byte by half byte.
namespace oxr::fuzz {

inline std::string halfBytesOf(std::vector<unsigned char> field, bool little) {
  if (little) std::reverse(field.begin(), field.end());
  std::string halfBytes;
  for (const unsigned char byte : field) {
    halfBytes += "0123456789ABCDEF"[byte >> 4];
    halfBytes += "0123456789ABCDEF"[byte & 15];
  }
  return halfBytes;
}

inline std::string tlogDecimalModel(const std::vector<unsigned char>& field, bool little) {
  std::string digits;
  bool negative = false;
  bool filler = false;
  const std::string halfBytes = halfBytesOf(field, little);
  for (std::size_t i = 0; i < halfBytes.size(); ++i) {
    if (halfBytes[i] <= '9')
      digits += halfBytes[i];
    else if (halfBytes[i] == 'D' && (i == 0 || (i == 1 && filler)))
      negative = true;
    else if (halfBytes[i] == 'F' && i == 0)
      filler = true;
    else
      return "OXR5505";
  }
  return std::string(negative ? "-" : "") + digits;
}

inline std::vector<unsigned char> tlogTrimmedModel(std::vector<unsigned char> field, EJustification justification,
                                                   unsigned pad) {
  const auto byte = static_cast<unsigned char>((pad << 4 | (pad & 15)) & 255);
  while (justification == eJustifyLeft && !field.empty() && field.back() == byte)
    field.pop_back();
  while (justification == eJustifyRight && !field.empty() && field.front() == byte)
    field.erase(field.begin());
  return field;
}

// The field as it reads with half bytes for characters, or the failure. Text of "digits" without any is one bad digit.
inline std::string tlogWrittenDecimalModel(const std::string& text, int size, bool fixed) {
  const int length = static_cast<int>(text.size());
  const bool negative = length > 0 && text[0] == '-';
  int start = negative || (length > 0 && text[0] == '+') ? 1 : 0;
  while (start < length && text[static_cast<std::size_t>(start)] == '0')
    ++start;
  if (start == length) --start;
  int position = 0;
  std::string out;
  if (fixed) {
    const int needed = length % 2 == 1 ? (length + 1 - start) / 2
                       : negative      ? (length - start) / 2 + 1
                                       : (length - start) / 2;
    position = size - needed;
    if (position < 0) return "OXR5506";
    out.assign(static_cast<std::size_t>(2 * position), '0');
  }
  std::string rest = start < 0 ? "?" : text.substr(static_cast<std::size_t>(start));
  if (rest.size() % 2 == 1) {
    if (position >= size) return "OXR5506";
    rest.insert(0, negative ? "D" : fixed ? "0" : "F");
    if (rest[1] < '0' || rest[1] > '9') return "OXR5505";
    out += rest.substr(0, 2);
    rest.erase(0, 2);
  } else if (negative && fixed) {
    if (position == 0) return "OXR5506";
    out.back() = 'D';
  } else if (negative) {
    if (size <= 0) return "OXR5506";
    out += "FD";
  }
  for (; static_cast<int>(out.size()) < 2 * size; rest.erase(0, 1)) {
    if (rest.empty() || rest[0] < '0' || rest[0] > '9') return "OXR5505";
    out += rest[0];
  }
  return out;
}

inline std::string tlogWrittenStringModel(std::string text, int size) {
  text.resize(static_cast<std::size_t>(2 * size));
  for (char& unit : text) {
    const bool isLetter = (unit >= 'A' && unit <= 'F') || (unit >= 'a' && unit <= 'f');
    unit = "0123456789ABCDEF"[isLetter ? (unit & 7) + 9 : unit & 15];
  }
  return text;
}

// What is left in a field of hexadecimal digits that is reversed in place.
inline std::string tlogMirrored(std::string field) {
  for (std::size_t i = 0; i < field.size() / 2; ++i) {
    const std::size_t byte = i / 2;
    const std::size_t mirror = field.size() / 2 - 1 - byte;
    if (mirror > byte) field[2 * mirror + i % 2] = field[i];
  }
  return field;
}

// What `convert` gives, or "OXR" and the number of what it raises.
template <class Convert>
std::string tlogOutcome(Convert convert) {
  try {
    return convert();
  } catch (const KelConversionException& e) {
    return "OXR" + std::to_string(e.messageNumber() & 0xFFFF);
  }
}
inline std::string tlogTextOf(const PWFData& value) {
  return toUtf8(UnitView(static_cast<const unsigned short*>(value.getDataValue()),
                         static_cast<std::size_t>(value.getDataLength()) / 2));
}
inline DataCnv tlogConverter() {
  return DataCnv(819, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
                 eMessageStandardDefault, nullptr);
}

struct TlogSettings {
  EEndian endian;
  ETrimType trimType;
  EJustification justification;
  unsigned short pad;
  bool padIsUnicode;

  explicit TlogSettings(Choices& choices)
      : endian(static_cast<EEndian>(choices.upTo(2))),
        trimType(choices.coin() ? eTrimPadding : eTrimNone),
        justification(static_cast<EJustification>(choices.upTo(2))),
        pad(static_cast<unsigned short>(choices.upTo(choices.coin() ? 1 : 31))),
        padIsUnicode(choices.upTo(7) == 0) {}
  bool little() const { return endian == eEndianLittle; }
  bool trims() const { return trimType == eTrimPadding && !padIsUnicode; }
};

// Digits after a first byte of any kind, so that long fields are good ones too; or any bytes at all.
inline std::vector<unsigned char> drawTlogField(Choices& choices, const TlogSettings& set) {
  std::vector<unsigned char> field(choices.upTo(80));
  const bool isLikelyGood = choices.upTo(3) != 0;
  for (unsigned char& byte : field) {
    byte = choices.any<unsigned char>();
    if (isLikelyGood && &byte != &field.front()) byte = static_cast<unsigned char>(byte / 10 % 10 << 4 | byte % 10);
  }
  static constexpr unsigned char kFirst[] = {0xD1, 0xF2, 0xFD, 0x34, 0xFF, 0x1D};
  if (isLikelyGood && !field.empty()) field.front() = choices.oneOf(kFirst);
  const auto pads = static_cast<std::ptrdiff_t>(choices.upTo(3));
  if (std::ssize(field) > pads) std::fill_n(field.end() - pads, pads, static_cast<unsigned char>(set.pad * 0x11));
  if (set.little()) std::reverse(field.begin(), field.end());
  return field;
}

inline void checkTlogRead(Choices& choices) {
  const TlogSettings set(choices);
  const std::vector<unsigned char> field = drawTlogField(choices, set);
  DataCnv converter = tlogConverter();
  const unsigned char none = 0;  // a vector without bytes may be at null, which has a meaning of its own
  const unsigned char* const source = field.empty() ? &none : field.data();
  const int size = static_cast<int>(field.size());
  const std::string halfBytes = halfBytesOf(field, set.little());
  const std::unique_ptr<unsigned char[]> unpacked(converter.getUnpackedBuffer(source, size, set.endian));
  for (std::size_t i = 0; i < halfBytes.size(); ++i)
    requireEqual("0123456789ABCDEF"[unpacked[i]], halfBytes[i], "an unpacked half byte");
  const auto string = [&] { return tlogTextOf(converter.TLOGPckdStrToStr(source, size, set.endian)); };
  requireEqual(theFastWay(string), halfBytes, "the text of a string");
  requireEqual(theGeneralWay(string), halfBytes, "the text of a string the general way");
  const std::string number = tlogDecimalModel(field, set.little());
  const auto decimal = [&] {
    return tlogOutcome([&] { return tlogTextOf(converter.TLOGPckdDecToDec(source, size, set.endian)); });
  };
  requireEqual(number == "OXR5505" ? decimal() : theFastWay(decimal), number, "the text of a decimal");
  requireEqual(theGeneralWay(decimal), number, "the text of a decimal the general way");

  std::string trimmed = halfBytes;
  if (set.trims() && set.pad < 16) {
    const char pad = "0123456789ABCDEF"[set.pad];
    while (set.justification == eJustifyLeft && !trimmed.empty() && trimmed.back() == pad)
      trimmed.pop_back();
    while (set.justification == eJustifyRight && !trimmed.empty() && trimmed.front() == pad)
      trimmed.erase(0, 1);
  }
  KelWstring text;
  converter.TLOGFLPckdStrToStr(source, text, size, set.endian, set.trimType, set.justification, set.pad,
                               set.padIsUnicode);
  requireEqual(toUtf8(text), trimmed, "the text of a padded string");
  const auto left = set.trims() ? tlogTrimmedModel(field, set.justification, set.pad) : field;
  requireEqual(tlogOutcome([&] {
                 KelWstring digits;
                 converter.TLOGFLPckdDecToDec(source, digits, size, set.endian, set.trimType, set.justification,
                                              set.pad, set.padIsUnicode);
                 return toUtf8(digits);
               }),
               tlogDecimalModel(left, set.little()), "the text of a padded decimal");
}

inline void checkTlogWrite(Choices& choices) {
  const auto endian = static_cast<EEndian>(choices.upTo(2));
  const bool fixed = choices.coin();
  // Mostly digits, so that texts are good ones for long; the field is about as long as they need.
  std::string text = choices.upTo(2) == 0 ? "-" : "";
  const bool hasAnyCharacter = choices.upTo(3) == 0;
  const bool hasDigitsOnly = choices.coin();
  for (std::size_t count = choices.upTo(70); count > 0; --count)
    text += hasAnyCharacter ? static_cast<char>(1 + choices.upTo(126))
                            : "0123456789000123456789+-.a"[choices.upTo(hasDigitsOnly ? 21 : 25)];
  const int size = std::max(1, static_cast<int>(text.size() / 2) + choices.between(-1, 2));
  DataCnv converter = tlogConverter();
  std::vector<unsigned char> target(static_cast<std::size_t>(size));  // on the heap, where writing past its end shows
  const KelWstring units = fromUtf8(text);
  const auto inOrder = [endian](const std::string& field) {
    return endian == eEndianLittle && !field.starts_with("OXR") ? tlogMirrored(field) : field;
  };
  requireEqual(tlogOutcome([&] {
                 PWFData value(units.characters(), DECIMAL);
                 int written = -1;
                 converter.TLOGPWFDataToPckdDecimal(value, target.data(), size, endian, fixed, written);
                 requireEqual(written, size, "the bytes written");
                 return halfBytesOf(target, false);
               }),
               inOrder(tlogWrittenDecimalModel(text, size, fixed)), "the field of " + text);
  converter.TLOGPWFDataToPckdStr(PWFData(units), target.data(), size, endian);
  requireEqual(halfBytesOf(target, false), inOrder(tlogWrittenStringModel(text, size)), "the string of " + text);
}

}  // namespace oxr::fuzz
