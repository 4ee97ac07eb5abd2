// Transaction-log fields of any bytes, and texts of any kind written into fields of any size, against a naive model
// that goes half byte by half byte.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr const char* kInvalid = "invalid";
constexpr const char* kSmall = "small";

void require(bool holds) {
  if (!holds) std::abort();
}

std::string nibblesOf(Bytes field, bool little) {
  if (little) std::reverse(field.begin(), field.end());
  std::string nibbles;
  for (const unsigned char byte : field) {
    nibbles += "0123456789ABCDEF"[byte >> 4];
    nibbles += "0123456789ABCDEF"[byte & 15];
  }
  return nibbles;
}

std::string modelDecimal(const Bytes& field, bool little) {
  std::string digits;
  bool negative = false;
  bool filler = false;
  const std::string nibbles = nibblesOf(field, little);
  for (std::size_t i = 0; i < nibbles.size(); ++i) {
    if (nibbles[i] <= '9')
      digits += nibbles[i];
    else if (nibbles[i] == 'D' && (i == 0 || (i == 1 && filler)))
      negative = true;
    else if (nibbles[i] == 'F' && i == 0)
      filler = true;
    else
      return kInvalid;
  }
  return std::string(negative ? "-" : "") + digits;
}

Bytes modelTrimmed(Bytes field, EJustification justification, unsigned pad) {
  const auto byte = static_cast<unsigned char>((pad << 4 | (pad & 15)) & 255);
  while (justification == eJustifyLeft && !field.empty() && field.back() == byte)
    field.pop_back();
  while (justification == eJustifyRight && !field.empty() && field.front() == byte)
    field.erase(field.begin());
  return field;
}

// The field as it reads with half bytes for characters, or the failure. Text of "digits" without any is one bad digit.
std::string modelWrittenDecimal(const std::string& text, int size, bool fixed) {
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
    if (position < 0) return kSmall;
    out.assign(static_cast<std::size_t>(2 * position), '0');
  }
  std::string rest = start < 0 ? "?" : text.substr(static_cast<std::size_t>(start));
  if (rest.size() % 2 == 1) {
    if (position >= size) return kSmall;
    rest.insert(0, negative ? "D" : fixed ? "0" : "F");
    if (rest[1] < '0' || rest[1] > '9') return kInvalid;
    out += rest.substr(0, 2);
    rest.erase(0, 2);
  } else if (negative && fixed) {
    if (position == 0) return kSmall;
    out.back() = 'D';
  } else if (negative) {
    if (size <= 0) return kSmall;
    out += "FD";
  }
  for (; static_cast<int>(out.size()) < 2 * size; rest.erase(0, 1)) {
    if (rest.empty() || rest[0] < '0' || rest[0] > '9') return kInvalid;
    out += rest[0];
  }
  return out;
}

std::string modelWrittenString(std::string text, int size) {
  text.resize(static_cast<std::size_t>(2 * size));
  for (char& unit : text) {
    const bool isLetter = (unit >= 'A' && unit <= 'F') || (unit >= 'a' && unit <= 'f');
    unit = "0123456789ABCDEF"[isLetter ? (unit & 7) + 9 : unit & 15];
  }
  return text;
}

// What is left in a field of hexadecimal digits that is reversed in place.
std::string mirrored(std::string field) {
  for (std::size_t i = 0; i < field.size() / 2; ++i) {
    const std::size_t byte = i / 2;
    const std::size_t mirror = field.size() / 2 - 1 - byte;
    if (mirror > byte) field[2 * mirror + i % 2] = field[i];
  }
  return field;
}

template <class Call>
std::string outcomeOf(Call call) {
  try {
    return call();
  } catch (const KelConversionException& e) {
    const int message = e.messageNumber() & 0xFFFF;
    require(message == 5505 || message == 5506);
    return message == 5505 ? kInvalid : kSmall;
  }
}

std::string textOf(const PWFData& value) {
  return oxr::toUtf8(oxr::UnitView(static_cast<const unsigned short*>(value.getDataValue()),
                                   static_cast<std::size_t>(value.getDataLength()) / 2));
}

struct Settings {
  EEndian endian;
  ETrimType trimType;
  EJustification justification;
  unsigned short pad;
  bool padIsUnicode;

  bool little() const { return endian == eEndianLittle; }
  bool trims() const { return trimType == eTrimPadding && !padIsUnicode; }
};

void checkReaders(DataCnv& converter, const Bytes& field, const Settings& set) {
  const int size = static_cast<int>(field.size());
  const std::string nibbles = nibblesOf(field, set.little());
  const std::unique_ptr<unsigned char[]> unpacked(converter.getUnpackedBuffer(field.data(), size, set.endian));
  for (std::size_t i = 0; i < nibbles.size(); ++i)
    require("0123456789ABCDEF"[unpacked[i]] == nibbles[i]);
  require(textOf(converter.TLOGPckdStrToStr(field.data(), size, set.endian)) == nibbles);
  require(outcomeOf([&] { return textOf(converter.TLOGPckdDecToDec(field.data(), size, set.endian)); }) ==
          modelDecimal(field, set.little()));

  std::string trimmed = nibbles;
  if (set.trims() && set.pad < 16) {
    const char pad = "0123456789ABCDEF"[set.pad];
    while (set.justification == eJustifyLeft && !trimmed.empty() && trimmed.back() == pad)
      trimmed.pop_back();
    while (set.justification == eJustifyRight && !trimmed.empty() && trimmed.front() == pad)
      trimmed.erase(0, 1);
  }
  KelWstring text;
  converter.TLOGFLPckdStrToStr(field.data(), text, size, set.endian, set.trimType, set.justification, set.pad,
                               set.padIsUnicode);
  require(oxr::toUtf8(text) == trimmed);
  const Bytes left = set.trims() ? modelTrimmed(field, set.justification, set.pad) : field;
  require(outcomeOf([&] {
            KelWstring number;
            converter.TLOGFLPckdDecToDec(field.data(), number, size, set.endian, set.trimType, set.justification,
                                         set.pad, set.padIsUnicode);
            return oxr::toUtf8(number);
          }) == modelDecimal(left, set.little()));
}

void checkWriters(DataCnv& converter, const std::string& text, int size, bool fixed, const Settings& set) {
  Bytes target(static_cast<std::size_t>(size));  // on the heap, where writing past its end shows
  const KelWstring units = oxr::fromUtf8(text);
  int written = -1;
  std::string expected = modelWrittenDecimal(text, size, fixed);
  if (expected != kInvalid && expected != kSmall && set.little()) expected = mirrored(expected);
  require(outcomeOf([&] {
            PWFData value(units.characters(), DECIMAL);
            converter.TLOGPWFDataToPckdDecimal(value, target.data(), size, set.endian, fixed, written);
            require(written == size);
            return nibblesOf(target, false);
          }) == expected);
  converter.TLOGPWFDataToPckdStr(PWFData(units), target.data(), size, set.endian);
  expected = modelWrittenString(text, size);
  require(nibblesOf(target, false) == (set.little() ? mirrored(expected) : expected));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  DataCnv converter(819, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
                    eMessageStandardDefault, nullptr);
  const Settings set{(data[0] & 1) != 0 ? eEndianLittle : eEndianBig, (data[0] & 2) != 0 ? eTrimPadding : eTrimNone,
                     static_cast<EJustification>(data[0] >> 2 & 3), static_cast<unsigned short>(data[1] & 31),
                     (data[0] & 16) != 0};
  // Any bytes, or digits behind a first byte of any kind, so that long fields are good ones, too.
  Bytes field(data + 3, data + size);
  for (std::size_t i = 1; (data[2] & 8) != 0 && i < field.size(); ++i)
    field[i] = static_cast<unsigned char>(field[i] / 10 % 10 << 4 | field[i] % 10);
  if (set.little() && (data[2] & 16) != 0) std::reverse(field.begin(), field.end());
  checkReaders(converter, field, set);

  // Mostly digits, so that texts are good ones for long; the field is about as long as they need.
  std::string text;
  for (std::size_t i = 3; i < size; ++i)
    text += (data[0] & 32) != 0 ? static_cast<char>(1 + data[i] % 127) : "0123456789000123456789+-.a"[data[i] % 26];
  if ((data[0] & 64) != 0) text.insert(0, "-");
  const int fieldSize = std::max(1, static_cast<int>(text.size() / 2) + data[2] % 5 - 2);
  checkWriters(converter, text, fieldSize, (data[0] & 128) != 0, set);
  return 0;
}
